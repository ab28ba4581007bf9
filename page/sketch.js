// The dimensioned sketch: the shape in proportion, a line for each parameter that has a place. Pulling a line's arrow
// changes its parameter; a click on the number lets one type it.
import {make, svg} from "./dom.js";
import {outlines_of, lines_of} from "./dimensions.js";
import {places_of_bars} from "./templates.js";
import {number_of, parameter_symbol, short, typed} from "./numbers.js";

const WIDTH = 316, ROW = 24, EDGE = 10, TALLEST = 250;

// A closed line through corners as the data of a path; `to` brings to the screen.
function path_of(outline, to, scale) {
  if (outline.circle || outline.ellipse) {
    const [y, z, a, b = a] = outline.circle ?? outline.ellipse, [x, s] = to([y, z]), ra = Math.abs(a) * scale, rb = Math.abs(b) * scale;
    return `M${x - ra} ${s}a${ra} ${rb} 0 1 0 ${2 * ra} 0a${ra} ${rb} 0 1 0 ${-2 * ra} 0Z`;
  }
  const points = outline.map((c) => to(c)), n = points.length;
  let path = "";
  points.forEach((p, k) => {
    const r = (outline[k][2] ?? 0) * scale, a = points[(k + n - 1) % n], b = points[(k + 1) % n];
    const way = (q) => { const l = Math.hypot(q[0] - p[0], q[1] - p[1]) || 1; return [(q[0] - p[0]) / l, (q[1] - p[1]) / l, l]; };
    const u = way(a), v = way(b), turn = u[1] * v[0] - u[0] * v[1], bend = Math.acos(Math.max(-1, Math.min(1, u[0] * v[0] + u[1] * v[1])));
    const reach = r > 0.2 && Math.abs(turn) > 1e-6 ? Math.min(r / Math.tan(bend / 2), 0.999 * u[2], 0.999 * v[2]) : 0;
    path += `${k ? "L" : "M"}${p[0] + u[0] * reach} ${p[1] + u[1] * reach}`;
    if (reach) path += `A${r} ${r} 0 0 ${turn > 0 ? 1 : 0} ${p[0] + v[0] * reach} ${p[1] + v[1] * reach}`;
  });
  return path + "Z";
}

function box_of(outlines, lines) {
  const points = outlines.flatMap((o) => {
    if (!o.circle && !o.ellipse) return o;
    const [y, z, a, b = a] = o.circle ?? o.ellipse;
    return [[y - a, z - b], [y + a, z + b]];
  }).filter((p) => Number.isFinite(p[0]) && Number.isFinite(p[1]));
  const ys = points.map((p) => p[0]), zs = points.map((p) => p[1]), rows = {below: 0, above: 0, left: 0, right: 0};
  for (const l of lines) if (l.kind === "outside") rows[l.side] = Math.max(rows[l.side], l.row);
  if (!points.length) return null;
  return {low: [Math.min(...ys), Math.min(...zs)], high: [Math.max(...ys), Math.max(...zs)], rows};
}

const head = (x, y, dx, dy, s = 6) => `M${x} ${y}L${x - s * (dx - 0.3 * dy)} ${y - s * (dy + 0.3 * dx)}L${x - s * (dx + 0.3 * dy)} ${y - s * (dy - 0.3 * dx)}Z`;

// sketch(host, {get, set, pulled}): get() gives {shape, parameters, bars} of what is drawn, set(name, value) changes one.
// The view of a pull stays that of its beginning.
export function sketch(host, {get, set, most}) {
  const drawing = svg("svg", {class: "sketch", role: "img"}), box = make("div", {class: "sketch-box"}, drawing);
  host.append(box);
  let pulling = null, view = null;

  function place(outlines, lines) {
    const b = box_of(outlines, lines);
    if (!b) return null;
    const side = (name) => EDGE + ROW * b.rows[name] + (name === "right" && b.rows.right ? 40 : b.rows[name] ? 0 : 14);
    const [l, r, t, d] = ["left", "right", "above", "below"].map(side), wide = b.high[0] - b.low[0] || 1, high = b.high[1] - b.low[1] || 1;
    const scale = Math.min((WIDTH - l - r) / wide, (TALLEST - t - d) / high), height = Math.max(90, high * scale + t + d);
    const free = WIDTH - l - r - wide * scale;
    return {...b, scale, height, to: ([y, z]) => [l + free / 2 + (y - b.low[0]) * scale, (height - high * scale - t - d) / 2 + t + (b.high[1] - z) * scale]};
  }

  function draw() {
    const now = get();
    if (!now) return box.toggleAttribute("hidden", true);
    box.hidden = false;
    const outlines = outlines_of(now.shape, now.parameters), lines = lines_of(now.shape, now.parameters);
    view = pulling?.view ?? place(outlines, lines);
    if (!view || outlines.flat().length > 600) return drawing.replaceChildren();
    const {to, scale} = view;
    drawing.setAttribute("viewBox", `0 0 ${WIDTH} ${view.height}`);
    drawing.setAttribute("aria-label", `sketch of the shape ${now.shape.replaceAll("_", " ")} with its dimensions, which stand as fields beneath`);
    const shapes = outlines.map((o) => path_of(o, to, scale));
    const apart = now.shape === "composite";
    const parts = apart ? shapes.map((d) => svg("path", {class: "solid", d})) : [svg("path", {class: "solid", "fill-rule": "evenodd", d: shapes.join("")})];
    const bars = places_of_bars(now.bars ?? []).slice(0, 400).map(([y, z, r]) => {
      const [x, s] = to([y, z]);
      return svg("circle", {class: "bar", cx: x, cy: s, r: Math.max(1.5, r * scale)});
    });
    drawing.replaceChildren(...parts, ...bars, ...lines.filter((l) => l.kind === "count" || (l.kind === "radius" ? l.name in now.parameters : now.parameters[l.name])).map((l) => dimension(l, now)));
  }

  function words(name, value) {
    const [letter, index] = parameter_symbol(name);
    return [svg("tspan", {class: "letter"}, letter), index && svg("tspan", {class: "index", dy: 3}, index), svg("tspan", {dy: index ? -3 : 0, dx: 3}, short(value, 5))];
  }

  function dimension(l, now) {
    const group = svg("g", {class: "dimension", "data-dimension": l.name}), {to} = view, value = now.parameters[l.name] ?? 0;
    const text = (x, y, anchor, upright = true) => {
      const t = svg("text", {x, y, "text-anchor": anchor, ...(upright ? {} : {transform: `rotate(-90 ${x} ${y})`})}, ...words(l.name, value).filter(Boolean));
      t.addEventListener("click", () => type_in(l.name, x, y, value));
      return t;
    };
    const stroke = (d, cls = "") => svg("path", {class: `line ${cls}`, d});
    if (l.kind === "count") {
      const [x, y] = to(l.at), t = svg("text", {x, y: y + (l.side > 0 ? -9 : l.side < 0 ? 18 : 4), "text-anchor": "middle", class: "of-bars"}, `${value} ⌀ ${short(now.parameters[l.second] ?? 0)}`);
      if (value > 0) group.append(t);
      return group;
    }
    if (l.kind === "radius") {
      const r = l.at[2] ?? 0, [cx, cz] = l.at, k = r * (1 - Math.SQRT1_2), side = l.at.length > 3 ? [-l.at[3], -l.at[4]] : [-Math.sign(l.way[0]), -Math.sign(l.way[1])];
      const [x, y] = to([cx + side[0] * k, cz + side[1] * k]), [wx, wy] = l.way, long = Math.hypot(wx, wy), dx = wx / long, dy = -wy / long;
      const x1 = Math.min(WIDTH - 34, Math.max(34, x + 24 * dx)), y1 = Math.min(view.height - 4, Math.max(12, y + 24 * dy)), right = wx > 0;
      group.append(stroke(`M${x1} ${y1}L${x} ${y}`), svg("path", {class: "head", d: head(x, y, -dx, -dy)}), text(x1 + (right ? 2 : -2), y1 + (dy > 0 ? 8 : 0), right ? "start" : "end"));
      pull(group, l, [x, y], [x1, y1], [dx, dy]);
      return group;
    }
    let a = to(l.from), b = to(l.to);
    if (l.kind === "outside") {
      const level = l.side === "below" || l.side === "above", sign = l.side === "below" || l.side === "right" ? 1 : -1;
      const corner = to([l.side === "right" ? view.high[0] : view.low[0], l.side === "above" ? view.high[1] : view.low[1]]);
      const off = corner[level ? 1 : 0] + sign * ROW * (l.row - 0.25);
      const end = (p) => (level ? [p[0], off] : [off, p[1]]), ea = end(a), eb = end(b);
      const lead = (p, e) => (level ? `M${p[0]} ${p[1] + 3 * sign}L${e[0]} ${e[1] + 4 * sign}` : `M${p[0] + 3 * sign} ${p[1]}L${e[0] + 4 * sign} ${e[1]}`);
      group.append(stroke(lead(a, ea) + lead(b, eb), "thin"));
      a = ea;
      b = eb;
    }
    const long = Math.hypot(b[0] - a[0], b[1] - a[1]), way = long > 1e-6 ? [(b[0] - a[0]) / long, (b[1] - a[1]) / long] : l.from[0] === l.to[0] ? [0, -1] : [1, 0];
    const level = Math.abs(way[0]) > Math.abs(way[1]), size = `${short(value, 5)} ${l.name}`.length * 6 + 6;
    if (long > 26 && l.kind === "outside") {
      group.append(stroke(`M${a}L${b}`), svg("path", {class: "head", d: head(...a, -way[0], -way[1]) + head(...b, ...way)}));
      const mx = (a[0] + b[0]) / 2, my = (a[1] + b[1]) / 2;
      if (long < size + 8) group.append(level ? text(Math.min(WIDTH - size - 2, Math.max(a[0], b[0]) + 6), my + 4, "start") : text(mx + 4, my + 4, "start"));
      else group.append(level ? text(mx, my - 4, "middle") : text(mx - 4, my, "middle", false));
    } else {
      // Short: arrows from outside, the word behind one of them.
      const tail = 14, a0 = [a[0] - way[0] * tail, a[1] - way[1] * tail], b0 = [b[0] + way[0] * tail, b[1] + way[1] * tail];
      group.append(stroke(`M${a0}L${a}M${b0}L${b}`), svg("path", {class: "head", d: head(...a, ...way, 5) + head(...b, -way[0], -way[1], 5)}));
      const end = l.word === "from" ? a0 : b0, sign = (l.word === "from" ? -1 : 1) * (level ? Math.sign(way[0]) || 1 : 1);
      if (level) {
        const right = end[0] + sign * (4 + size) < WIDTH && end[0] + sign * (4 + size) > 0 ? sign : -sign, other = end === a0 ? b0 : a0;
        const from = right === sign ? end : other;
        group.append(text(from[0] + 4 * right, from[1] + 4, right > 0 ? "start" : "end"));
      } else if (l.kind === "outside") group.append(text(Math.min(end[0] + 5, WIDTH - size), (a[1] + b[1]) / 2 + 4, "start"));
      else group.append(text(end[0] + 5, end[1] + (end[1] < (a[1] + b[1]) / 2 ? -1 : 9), "start"));
    }
    pull(group, l, a, b, way);
    return group;
  }

  // By how much the dimension grows for a pixel along its line: its arrow stays under the pointer.
  function pull(group, l, a, b, way) {
    const hit = svg("path", {class: "hit", d: `M${a[0] - 8 * way[0]} ${a[1] - 8 * way[1]}L${b[0] + 8 * way[0]} ${b[1] + 8 * way[1]}`});
    hit.addEventListener("pointerdown", (event) => {
      const now = get(), value = now.parameters[l.name] ?? 0, box = drawing.getBoundingClientRect(), ratio = WIDTH / box.width;
      const at = (e) => [(e.clientX - box.left) * ratio, (e.clientY - box.top) * ratio], from = at(event);
      const near_b = Math.hypot(from[0] - b[0], from[1] - b[1]) < Math.hypot(from[0] - a[0], from[1] - a[1]);
      const sign = l.kind === "radius" ? 1 : near_b ? 1 : -1, long = Math.abs(a[0] - b[0]) + Math.abs(a[1] - b[1]);
      const centred = l.kind !== "radius" && long > 0 && Math.abs(l.from[0] + l.to[0]) + Math.abs(l.from[1] + l.to[1]) < 1e-6 * Math.abs(value);
      pulling = {view, id: event.pointerId};
      drawing.setPointerCapture(event.pointerId);
      drawing.classList.add("pulling");
      const step = 10 ** Math.max(-4, Math.floor(Math.log10(1 / view.scale)));
      const move = (e) => {
        const to = at(e), along = (to[0] - from[0]) * way[0] + (to[1] - from[1]) * way[1];
        const next = value + sign * along / view.scale * (centred ? 2 : 1);
        set(l.name, Number(Math.max(step, Math.min(most(l.name), Math.round(next / step) * step)).toPrecision(8)));
      };
      const end = () => {
        pulling = null;
        drawing.classList.remove("pulling");
        drawing.removeEventListener("pointermove", move);
        drawing.removeEventListener("pointerup", end);
        drawing.removeEventListener("pointercancel", end);
        draw();
      };
      drawing.addEventListener("pointermove", move);
      drawing.addEventListener("pointerup", end);
      drawing.addEventListener("pointercancel", end);
      event.preventDefault();
    });
    group.append(hit);
  }

  // A field where the number stands.
  function type_in(name, x, y, value) {
    const done = (take) => {
      if (!input.isConnected) return;
      const typed_in = number_of(input.value);
      input.remove();
      if (take && typed_in !== null) set(name, typed_in);
    };
    const input = make("input", {type: "text", inputmode: "decimal", class: "in-place", value: typed(value), "aria-label": name,
      onblur: () => done(true), onkeydown: (e) => { if (e.key === "Enter") done(true); if (e.key === "Escape") done(false); },
      style: {left: `${100 * x / WIDTH}%`, top: `${100 * y / view.height}%`}});
    box.append(input);
    input.select();
  }
  return {draw};
}
