// The section, true to scale: colours below, lines and words above. Pan and zoom by pointer, wheel, pinch and keys.
import {$} from "./dom.js";
import {painter} from "./colouring.js";
import {scale_of, map_of} from "./colours.js";
import {decode, field_of, locator} from "./fields.js";
import {draw_lines, theme_of} from "./drawing.js";

const KEEP = 0.55;  // of the room that the section may take less, before a picture that follows it is fitted anew

// What is drawn: view of the answer, field, and where from. hover(place or null, by_key) tells what is under the pointer.
export function picture({hover}) {
  const host = $("picture"), colours = $("colours"), lines = $("lines"), paint = painter(colours);
  const p = {view: null, field: null, scale: null, camera: {centre: [0, 0], scale: 1}, fitted: true, size: [1, 1], ratio: 1, cross: null, what: "outline", marks: {}};
  let locate = null, due = 0;

  const margin = () => Math.min(64, 0.12 * Math.min(...p.size)) + 8;
  // With room for the bar of colours on the right, where there is one.
  const beside = () => (p.what === "outline" || p.what === "mesh" ? 0 : 84);
  function fit() {
    const [y0, z0, y1, z1] = p.view.box, m = margin(), right = beside();
    const scale = Math.min(Math.max(1, p.size[0] - 2 * m - right) / (y1 - y0), Math.max(1, p.size[1] - 2 * m) / (z1 - z0));
    p.camera = {centre: [(y0 + y1) / 2 + right / 2 / scale, (z0 + z1) / 2], scale};
    p.fitted = true;
  }
  // A section that is being pulled keeps its scale, so that one sees it grow, while it has room.
  function follow(resting) {
    if (!p.fitted) return;
    const before = p.camera.scale;
    fit();
    const best = p.camera.scale;
    if (resting || before > best * 1.02 || before < KEEP * best) return;
    p.camera.centre[0] += beside() / 2 * (1 / before - 1 / best);
    p.camera.scale = before;
  }
  const to_screen = (y, z) => [p.size[0] / 2 + (y - p.camera.centre[0]) * p.camera.scale, p.size[1] / 2 - (z - p.camera.centre[1]) * p.camera.scale];
  const to_section = (x, y) => [p.camera.centre[0] + (x - p.size[0] / 2) / p.camera.scale, p.camera.centre[1] - (y - p.size[1] / 2) / p.camera.scale];
  p.to_screen = to_screen;

  function draw() {
    due = 0;
    if (!p.view) return;
    const theme = theme_of(), how = {size: p.size, ratio: p.ratio, ...p.camera};
    if (p.scale) {
      const reach = p.scale.reach || 1;
      paint.paint({...how, map: map_of(p.scale), from: p.scale.signs ? 0.5 : 0, by: (p.scale.signs ? 0.5 : 1) / reach});
    } else {
      const map = p.view.materials.length > 1 ? p.view.materials.map((_, i) => theme.fills[i % theme.fills.length]) : [theme.fills[0], theme.fills[0]];
      paint.paint({...how, map, from: 0, by: 1 / (map.length - 1)});
    }
    draw_lines(lines, p, theme);
  }
  const redraw = () => { due ||= requestAnimationFrame(draw); };

  function resize() {
    const box = host.getBoundingClientRect();
    p.size = [Math.max(1, box.width), Math.max(1, box.height)];
    p.ratio = Math.min(devicePixelRatio || 1, 2);
    if (p.view && p.fitted) fit();
    redraw();
  }
  new ResizeObserver(resize).observe(host);
  colours.addEventListener("restored", redraw);

  function zoom(by, x = p.size[0] / 2, y = p.size[1] / 2) {
    const [sy, sz] = to_section(x, y), before = p.camera.scale, size = Math.max(p.view.box[2] - p.view.box[0], p.view.box[3] - p.view.box[1]);
    const scale = Math.min(Math.max(before * by, 10 / size), 1e5 / size * 20);
    p.camera = {scale, centre: [sy + (p.camera.centre[0] - sy) * before / scale, sz + (p.camera.centre[1] - sz) * before / scale]};
    p.fitted = false;
    redraw();
  }
  function pan(dx, dy) {
    p.camera = {...p.camera, centre: [p.camera.centre[0] - dx / p.camera.scale, p.camera.centre[1] + dy / p.camera.scale]};
    p.fitted = false;
    redraw();
  }
  function look(place, by_key = false) {
    if (!p.view) return;
    locate ||= locator(p.view);
    const found = place && locate(...place);
    hover(place ? {place, found, at: at_place(found)} : null, by_key);
  }
  function at_place(found) {
    if (!found) return null;
    const mean = (list) => found.corners.reduce((sum, corner, k) => sum + list[corner] * found.shares[k], 0);
    const s = p.field?.stresses;
    return {
      material: p.view.material[found.corners[0]], value: p.field ? mean(p.field.values) : null,
      tau: s && p.what === "shear" ? [mean(s.ty), mean(s.tz)] : null,
      near_sharp: p.field?.corners.length > 0 && found.corners.some((corner) => p.view.sharp[corner]),
    };
  }

  const down = new Map();
  const at = (event) => {
    const box = host.getBoundingClientRect();
    return [event.clientX - box.left, event.clientY - box.top];
  };
  host.addEventListener("pointerdown", (event) => {
    if (event.target !== lines) return;
    lines.setPointerCapture(event.pointerId);
    down.set(event.pointerId, at(event));
  });
  host.addEventListener("pointermove", (event) => {
    const now = at(event), before = down.get(event.pointerId);
    if (!p.view || event.target !== lines) return;
    if (!before) return look(to_section(...now));
    if (down.size === 2) {
      const other = [...down].find(([id]) => id !== event.pointerId)[1];
      const apart = (a) => Math.hypot(a[0] - other[0], a[1] - other[1]);
      zoom(apart(now) / Math.max(apart(before), 1), (now[0] + other[0]) / 2, (now[1] + other[1]) / 2);
    }
    pan((now[0] - before[0]) / down.size, (now[1] - before[1]) / down.size);
    down.set(event.pointerId, now);
  });
  for (const name of ["pointerup", "pointercancel"])
    host.addEventListener(name, (event) => {
      down.delete(event.pointerId);
      if (p.view && event.target === lines) look(to_section(...at(event)));
    });
  host.addEventListener("pointerleave", () => { if (!p.cross) look(null); });
  host.addEventListener("wheel", (event) => {
    if (!p.view) return;
    event.preventDefault();
    zoom(1.0015 ** -Math.max(-300, Math.min(300, event.deltaY * (event.deltaMode ? 20 : 1))), ...at(event));
  }, {passive: false});
  lines.addEventListener("dblclick", () => { fit(); redraw(); });

  const ARROWS = {ArrowLeft: [-1, 0], ArrowRight: [1, 0], ArrowUp: [0, 1], ArrowDown: [0, -1]};
  lines.addEventListener("keydown", (event) => {
    if (!p.view || event.ctrlKey || event.metaKey || event.altKey) return;
    const way = ARROWS[event.key];
    if (way && p.cross) {
      const step = (event.shiftKey ? 40 : 4) / p.camera.scale;
      p.cross = p.cross.map((c, i) => c + way[i] * step);
      look(p.cross, true);
    } else if (way) pan(-way[0] * 40, way[1] * 40);
    else if (event.key === "+" || event.key === "=") zoom(1.25);
    else if (event.key === "-") zoom(0.8);
    else if (event.key === "0") fit();
    else if (event.key === "c" || event.key === "C" || (event.key === "Escape" && p.cross)) {
      p.cross = p.cross ? null : first_place();
      look(p.cross, true);
    } else return;
    event.preventDefault();
    redraw();
  });
  // Where the value is largest, else in the first element.
  function first_place() {
    const i = p.field?.most_at ?? p.view.triangles[0];
    return [p.view.points[2 * i], p.view.points[2 * i + 1]];
  }

  return {
    zoom, redraw,
    fit() { if (p.view) { fit(); redraw(); } },
    // A new answer's view. At once, for the time until it is seen is what counts.
    take(view, marks, resting) {
      const first = !p.view;
      p.view = decode(view);
      p.marks = marks;
      locate = null;
      if (first) fit();
      else follow(resting);
    },
    // What of it is seen: `forces` in the section's own units; `words`: {unit: text, factor}.
    show(what, forces, see, words) {
      if (!p.view) return null;
      const room = beside();
      p.what = what;
      if (p.fitted && room !== beside()) fit();
      p.see = see;
      p.words = words;
      p.field = what === "outline" || what === "mesh" ? null : field_of(p.view, what, forces);
      p.scale = p.field ? scale_of(p.field.least * words.factor, p.field.most * words.factor, p.field.signs) : null;
      paint.load(p.view.points, p.field?.triangles ?? p.view.triangles);
      if (p.field) {
        if (words.factor !== 1) p.field.values = p.field.values.map((x) => x * words.factor);
        paint.values(p.field.values);
      } else paint.values(Float32Array.from(p.view.material, (m) => m % (p.view.materials.length > 1 ? p.view.materials.length : 2)));
      cancelAnimationFrame(due);
      draw();
      return {field: p.field, scale: p.scale};
    },
  };
}
