// Lines and words over the colours: borders, mesh, axes, centres, arrows of shear, marks.
import {short} from "./numbers.js";

// As the command's pictures have them.
const LIGHT = {paper: "#ffffff", ink: "#1a1f26", faint: "#6b7380", accent: "#05599e", second: "#9e4505", mark: "#b8141a",
  fills: [[0.86, 0.89, 0.93], [0.93, 0.90, 0.83], [0.78, 0.80, 0.86], [0.84, 0.91, 0.85], [0.92, 0.86, 0.91]]};
const DARK = {paper: "#14171c", ink: "#e8ebf0", faint: "#99a3b0", accent: "#73bfff", second: "#ffb361", mark: "#ff8078",
  fills: [[0.22, 0.26, 0.32], [0.30, 0.28, 0.22], [0.34, 0.38, 0.46], [0.20, 0.29, 0.24], [0.29, 0.22, 0.29]]};
export const is_dark = () => getComputedStyle(document.documentElement).colorScheme === "dark";
export const theme_of = () => (is_dark() ? DARK : LIGHT);

const FONT = "12px system-ui, sans-serif";

export function draw_lines(canvas, p, theme) {
  const [w, h] = p.size;
  if (canvas.width !== Math.round(w * p.ratio)) canvas.width = Math.round(w * p.ratio);
  if (canvas.height !== Math.round(h * p.ratio)) canvas.height = Math.round(h * p.ratio);
  const pen = canvas.getContext("2d");
  pen.setTransform(p.ratio, 0, 0, p.ratio, 0, 0);
  pen.clearRect(0, 0, w, h);
  pen.font = FONT;
  pen.lineJoin = "round";
  const on_colours = Boolean(p.field);
  if (p.what === "mesh") mesh(pen, p, theme);
  borders(pen, p, theme);
  bars(pen, p, theme);
  if (p.what === "shear" && p.see.arrows && p.field) arrows(pen, p);
  const {to_screen, marks} = p, words = [];
  const label = (text, x, y, colour, align = "left") => words.push([text, x, y, colour, align]);
  if (p.see.plastic && marks.plastic) plastic(pen, p, theme, label);
  if (p.see.principal && marks.angle !== null) principal(pen, p, theme, label);
  if (p.see.centroid && marks.centroid) {
    const [x, y] = to_screen(...marks.centroid);
    cross(pen, x, y, 7, theme.ink, theme.paper);
    label("C", x + 9, y - 8, theme.ink);
  }
  if (p.see.shear_centre && marks.shear_centre) {
    const [x, y] = to_screen(...marks.shear_centre);
    ring(pen, x, y, theme.second, theme.paper);
    label("M", x + 9, y + 15, theme.second);
  }
  for (const corner of p.field?.corners ?? []) {
    const [x, y] = to_screen(...corner);
    sharp(pen, x, y, theme);
  }
  if (p.field && p.scale.reach > 0) {
    const spot = (i, text) => {
      const [x, y] = to_screen(p.view.points[2 * i], p.view.points[2 * i + 1]);
      target(pen, x, y, theme);
      label(text, x + (x > w - 90 ? -10 : 10), y + (y < 24 ? 18 : -9), theme.ink, x > w - 90 ? "right" : "left");
    };
    const {factor} = p.words;
    if (p.field.signs && Math.abs(p.field.least) > 1e-9 * Math.abs(p.field.most)) spot(p.field.least_at, short(p.field.least * factor));
    if (!p.field.signs || Math.abs(p.field.most) > 1e-9 * Math.abs(p.field.least)) spot(p.field.most_at, short(p.field.most * factor));
  }
  for (const [text, x, y, colour, align] of words) word(pen, text, x, y, colour, theme, align);
  if (p.cross) {
    const [x, y] = to_screen(...p.cross);
    line(pen, [[x, 0], [x, y - 6]], theme.mark, 1);
    line(pen, [[x, y + 6], [x, h]], theme.mark, 1);
    line(pen, [[0, y], [x - 6, y]], theme.mark, 1);
    line(pen, [[x + 6, y], [w, y]], theme.mark, 1);
  }
  frame(pen, p, theme, on_colours);
}

function line(pen, points, colour, width, dash = []) {
  pen.strokeStyle = colour;
  pen.lineWidth = width;
  pen.setLineDash(dash);
  pen.beginPath();
  for (const [x, y] of points) pen.lineTo(x, y);
  pen.stroke();
  pen.setLineDash([]);
}
function word(pen, text, x, y, colour, theme, align = "left") {
  pen.textAlign = align;
  pen.lineWidth = 3;
  pen.strokeStyle = theme.paper;
  pen.strokeText(text, x, y);
  pen.fillStyle = colour;
  pen.fillText(text, x, y);
}
function arrow_head(pen, x, y, dx, dy, size) {
  pen.beginPath();
  pen.moveTo(x, y);
  pen.lineTo(x - size * (dx - 0.36 * dy), y - size * (dy + 0.36 * dx));
  pen.lineTo(x - size * (dx + 0.36 * dy), y - size * (dy - 0.36 * dx));
  pen.closePath();
  pen.fill();
}

// Borders of the materials, with their arcs; those between two materials thinner.
function borders(pen, p, theme) {
  const {curves, sides} = p.view, {scale} = p.camera;
  for (const inner of [true, false]) {
    pen.beginPath();
    for (let k = 0; k < sides.length / 2; ++k) {
      if ((sides[2 * k] !== 255 && sides[2 * k + 1] !== 255) !== inner) continue;
      const [y0, z0, y1, z1, sweep, cy, cz] = curves.subarray(7 * k, 7 * k + 7);
      const [x, y] = p.to_screen(y0, z0);
      pen.moveTo(x, y);
      if (!sweep) {
        pen.lineTo(...p.to_screen(y1, z1));
        continue;
      }
      const angle = Math.atan2(z0 - cz, y0 - cy), [mx, my] = p.to_screen(cy, cz);
      pen.arc(mx, my, Math.hypot(y0 - cy, z0 - cz) * scale, -angle, -(angle + sweep), sweep > 0);
    }
    pen.strokeStyle = theme.ink;
    pen.lineWidth = inner ? 0.8 : 1.4;
    pen.stroke();
  }
}

function mesh(pen, p, theme) {
  const {points, coarse} = p.view;
  pen.beginPath();
  for (let e = 0; e < coarse.length; e += 4) {
    for (let k = 0; k < 4; ++k) {
      const i = coarse[e + k], [x, y] = p.to_screen(points[2 * i], points[2 * i + 1]);
      if (k) pen.lineTo(x, y);
      else pen.moveTo(x, y);
    }
    pen.closePath();
  }
  pen.strokeStyle = theme.accent;
  pen.globalAlpha = 0.65;
  pen.lineWidth = 0.7;
  pen.stroke();
  pen.globalAlpha = 1;
}

function bars(pen, p, theme) {
  for (const [y, z, r, m] of p.view.bars) {
    const [x, s] = p.to_screen(y, z);
    pen.beginPath();
    pen.arc(x, s, Math.max(1.5, r * p.camera.scale), 0, 7);
    pen.fillStyle = `rgb(${theme.fills[m % theme.fills.length].map((c) => 255 * c).join(" ")})`;
    pen.fill();
    pen.strokeStyle = theme.ink;
    pen.lineWidth = 1;
    pen.stroke();
  }
}

// Arrows of the shear stresses in the middle of coarse elements, as many as have room.
const ROOM = 17, LONGEST = 26;
function arrows(pen, p) {
  const {points, coarse} = p.view, {ty, tz} = p.field.stresses, taken = new Set();
  const most = p.field.most || 1;
  pen.strokeStyle = pen.fillStyle = "#000000";
  for (const pass of [0, 1]) {
    taken.clear();
    for (let e = 0; e < coarse.length; e += 4) {
      const corners = [...new Set(coarse.subarray(e, e + 4))], n = corners.length;
      const mean = (f) => corners.reduce((sum, i) => sum + f(i), 0) / n;
      const [x, y] = p.to_screen(mean((i) => points[2 * i]), mean((i) => points[2 * i + 1]));
      const key = `${Math.floor(x / ROOM)} ${Math.floor(y / ROOM)}`;
      if (taken.has(key) || x < 0 || y < 0 || x > p.size[0] || y > p.size[1]) continue;
      taken.add(key);
      const a = mean((i) => ty[i]), b = mean((i) => tz[i]), amount = Math.hypot(a, b), share = Math.min(1, amount / most);
      const length = 6 + LONGEST * share;
      if (!(share > 0.01)) continue;
      const dx = a / amount, dy = -b / amount, x1 = x + dx * length / 2, y1 = y + dy * length / 2;
      // White below and black above: legible on every colour.
      pen.strokeStyle = pen.fillStyle = pass ? "#10141a" : "rgb(255 255 255 / .75)";
      pen.lineWidth = pass ? 1.1 : 2.8;
      pen.beginPath();
      pen.moveTo(x - dx * length / 2, y - dy * length / 2);
      pen.lineTo(x1 - dx * 3, y1 - dy * 3);
      pen.stroke();
      arrow_head(pen, x1, y1, dx, dy, pass ? 5.5 : 7);
    }
  }
}

function principal(pen, p, theme, label) {
  const [y0, z0, y1, z1] = p.view.box, reach = 0.56 * Math.hypot(y1 - y0, z1 - z0), [cy, cz] = p.marks.centroid;
  for (const [name, turn] of [["u", 0], ["v", Math.PI / 2]]) {
    const c = Math.cos(p.marks.angle + turn), s = Math.sin(p.marks.angle + turn);
    const box = reach_in(p.view.box, [cy, cz], [c, s], reach) + 26 / p.camera.scale;
    const back = reach_in(p.view.box, [cy, cz], [-c, -s], reach) + 14 / p.camera.scale;
    const a = p.to_screen(cy - back * c, cz - back * s), b = p.to_screen(cy + box * c, cz + box * s);
    line(pen, [a, b], theme.accent, 1.2, [9, 4, 2, 4]);
    pen.fillStyle = theme.accent;
    arrow_head(pen, b[0], b[1], c, -s, 8);
    label(name, b[0] + (turn ? 8 : 2), b[1] + (turn ? 4 : -8), theme.accent);
  }
}
// From a place along a way to the edge of a box.
function reach_in([y0, z0, y1, z1], [y, z], [c, s], most) {
  const along = [c > 1e-9 ? (y1 - y) / c : c < -1e-9 ? (y0 - y) / c : Infinity, s > 1e-9 ? (z1 - z) / s : s < -1e-9 ? (z0 - z) / s : Infinity];
  return Math.min(most, ...along.map((a) => Math.max(a, 0)));
}

function plastic(pen, p, theme, label) {
  const [y0, z0, y1, z1] = p.view.box, out = 18 / p.camera.scale;
  const near = 1 / p.camera.scale, apart = (list) => list.filter((c, k) => k === 0 || Math.abs(c - list[0]) > near);
  // Of the opposite moment with shorter dashes and a prime.
  apart(p.marks.plastic.z).forEach((z, k) => {
    line(pen, [p.to_screen(y0 - out, z), p.to_screen(y1 + out, z)], theme.second, 1.2, k ? [2, 3] : [6, 4]);
    const [x, s] = p.to_screen(y0 - out, z);
    label(k ? "pl,y′" : "pl,y", x - 3, s + 4, theme.second, "right");
  });
  apart(p.marks.plastic.y).forEach((y, k) => {
    line(pen, [p.to_screen(y, z0 - out), p.to_screen(y, z1 + out)], theme.second, 1.2, k ? [2, 3] : [6, 4]);
    const [x, s] = p.to_screen(y, z0 - out);
    label(k ? "pl,z′" : "pl,z", x, s + 14, theme.second, "center");
  });
}

function cross(pen, x, y, r, colour, paper) {
  for (const [c, width] of [[paper, 4], [colour, 1.6]]) {
    line(pen, [[x - r, y], [x + r, y]], c, width);
    line(pen, [[x, y - r], [x, y + r]], c, width);
  }
}
function ring(pen, x, y, colour, paper) {
  for (const [c, width] of [[paper, 5], [colour, 2]]) {
    pen.beginPath();
    pen.arc(x, y, 5.5, 0, 7);
    pen.strokeStyle = c;
    pen.lineWidth = width;
    pen.stroke();
  }
  pen.beginPath();
  pen.arc(x, y, 1.5, 0, 7);
  pen.fillStyle = colour;
  pen.fill();
}
function sharp(pen, x, y, theme) {
  for (const [c, width] of [[theme.paper, 4], [theme.mark, 1.8]])
    for (const s of [-1, 1]) line(pen, [[x - 4.5, y - 4.5 * s], [x + 4.5, y + 4.5 * s]], c, width);
}
function target(pen, x, y, theme) {
  for (const [c, width] of [[theme.paper, 4], [theme.ink, 1.5]]) {
    pen.beginPath();
    pen.arc(x, y, 4.5, 0, 7);
    pen.strokeStyle = c;
    pen.lineWidth = width;
    pen.stroke();
  }
}

// The axes' directions and a length, below on the left.
function frame(pen, p, theme) {
  const [, h] = p.size, x = 22, y = h - 24;
  pen.fillStyle = theme.faint;
  for (const [dx, dy, name] of [[1, 0, "y"], [0, -1, "z"]]) {
    line(pen, [[x, y], [x + 24 * dx, y + 24 * dy]], theme.faint, 1.2);
    pen.fillStyle = theme.faint;
    arrow_head(pen, x + 28 * dx, y + 28 * dy, dx, dy, 7);
    word(pen, name, x + 34 * dx - (dx ? 0 : 3), y + 36 * dy + (dx ? 4 : 0), theme.faint, theme);
  }
  const {length, unit} = p.words.scale, room = 110 / p.camera.scale * length;  // in the unit of length that is shown
  const ten = 10 ** Math.floor(Math.log10(room)), step = [5, 2, 1].find((s) => s * ten <= room) * ten, wide = step / length * p.camera.scale;
  line(pen, [[x + 60, y - 4], [x + 60, y + 2], [x + 60 + wide, y + 2], [x + 60 + wide, y - 4]], theme.faint, 1.2);
  word(pen, `${short(step)} ${unit}`, x + 60 + wide / 2, y - 5, theme.faint, theme, "center");
}
