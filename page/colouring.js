// Triangles in colours, by WebGL 2, or plainly by a canvas where that is missing. painter(canvas) gives
// {load(points, triangles), values(list), paint(how)} with how: {size, ratio, centre, scale, map, from, reach, plain}.
import {STEPS, colour_at, css_of} from "./colours.js";

const VERTEX = `#version 300 es
in vec2 at; in float value; uniform vec2 centre, zoom, place; out float share;
void main() { gl_Position = vec4((at - centre) * zoom, 0, 1); share = place.x + place.y * value; }`;
const FRAGMENT = `#version 300 es
precision highp float; in float share; uniform sampler2D map; uniform float steps; out vec4 colour;
void main() { colour = texture(map, vec2((clamp(share, 0., 1.) * steps + .5) / (steps + 1.), .5)); }`;

export function painter(canvas) {
  const gl = canvas.getContext("webgl2", {antialias: true, premultipliedAlpha: false});
  return gl ? by_webgl(canvas, gl) : by_canvas(canvas, canvas.getContext("2d"));
}

function fit(canvas, size, ratio) {
  const [w, h] = size.map((s) => Math.round(s * ratio));
  if (canvas.width !== w) canvas.width = w;
  if (canvas.height !== h) canvas.height = h;
}

function by_webgl(canvas, gl) {
  let program, count = 0, buffers, uniforms, kept = {};
  const stage = (kind, text) => {
    const shader = gl.createShader(kind);
    gl.shaderSource(shader, text);
    gl.compileShader(shader);
    return shader;
  };
  function prepare() {
    program = gl.createProgram();
    gl.attachShader(program, stage(gl.VERTEX_SHADER, VERTEX));
    gl.attachShader(program, stage(gl.FRAGMENT_SHADER, FRAGMENT));
    gl.linkProgram(program);
    gl.useProgram(program);
    buffers = {at: gl.createBuffer(), value: gl.createBuffer(), triangles: gl.createBuffer()};
    uniforms = Object.fromEntries(["centre", "zoom", "place", "steps"].map((name) => [name, gl.getUniformLocation(program, name)]));
    gl.bindTexture(gl.TEXTURE_2D, gl.createTexture());
    for (const [key, value] of [[gl.TEXTURE_MIN_FILTER, gl.LINEAR], [gl.TEXTURE_MAG_FILTER, gl.LINEAR], [gl.TEXTURE_WRAP_S, gl.CLAMP_TO_EDGE], [gl.TEXTURE_WRAP_T, gl.CLAMP_TO_EDGE]])
      gl.texParameteri(gl.TEXTURE_2D, key, value);
  }
  function attribute(name, list, size) {
    const at = gl.getAttribLocation(program, name);
    gl.bindBuffer(gl.ARRAY_BUFFER, buffers[name]);
    gl.bufferData(gl.ARRAY_BUFFER, list, gl.DYNAMIC_DRAW);
    gl.enableVertexAttribArray(at);
    gl.vertexAttribPointer(at, size, gl.FLOAT, false, 0, 0);
  }
  const self = {
    load(points, triangles) {
      kept = {points, triangles};
      attribute("at", points, 2);
      gl.bindBuffer(gl.ELEMENT_ARRAY_BUFFER, buffers.triangles);
      gl.bufferData(gl.ELEMENT_ARRAY_BUFFER, triangles, gl.DYNAMIC_DRAW);
      count = triangles.length;
    },
    values(list) {
      kept.list = list;
      attribute("value", list, 1);
    },
    paint({size, ratio, centre, scale, map, from, by}) {
      if (gl.isContextLost()) return;
      fit(canvas, size, ratio);
      gl.viewport(0, 0, canvas.width, canvas.height);
      gl.clearColor(0, 0, 0, 0);
      gl.clear(gl.COLOR_BUFFER_BIT);
      if (!count) return;
      const texels = new Uint8Array(map.flatMap((c) => [...c.map((x) => Math.round(255 * x)), 255]));
      gl.texImage2D(gl.TEXTURE_2D, 0, gl.RGBA, map.length, 1, 0, gl.RGBA, gl.UNSIGNED_BYTE, texels);
      gl.uniform2f(uniforms.centre, ...centre);
      gl.uniform2f(uniforms.zoom, 2 * scale / size[0], 2 * scale / size[1]);
      gl.uniform2f(uniforms.place, from, by);
      gl.uniform1f(uniforms.steps, map.length - 1);
      gl.drawElements(gl.TRIANGLES, count, gl.UNSIGNED_INT, 0);
    },
  };
  canvas.addEventListener("webglcontextlost", (event) => event.preventDefault());
  canvas.addEventListener("webglcontextrestored", () => {
    prepare();
    if (kept.points) self.load(kept.points, kept.triangles);
    if (kept.list) self.values(kept.list);
    canvas.dispatchEvent(new Event("restored"));
  });
  prepare();
  return self;
}

function by_canvas(canvas, pen) {
  let points, triangles = [], list;
  return {
    load(p, t) { points = p; triangles = t; },
    values(v) { list = v; },
    paint({size, ratio, centre, scale, map, from, by}) {
      fit(canvas, size, ratio);
      pen.setTransform(ratio, 0, 0, ratio, 0, 0);
      pen.clearRect(0, 0, ...size);
      for (let t = 0; t < triangles.length; t += 3) {
        const corners = [triangles[t], triangles[t + 1], triangles[t + 2]];
        const value = corners.reduce((sum, i) => sum + list[i], 0) / 3, share = Math.min(1, Math.max(0, from + by * value));
        pen.fillStyle = pen.strokeStyle = css_of(map.length === STEPS + 1 ? colour_at(map, share) : map[Math.round(share * (map.length - 1))]);
        pen.beginPath();
        for (const i of corners) pen.lineTo(size[0] / 2 + (points[2 * i] - centre[0]) * scale, size[1] / 2 - (points[2 * i + 1] - centre[1]) * scale);
        pen.closePath();
        pen.fill();
        pen.stroke();
      }
    },
  };
}
