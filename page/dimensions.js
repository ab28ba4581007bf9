// The shapes as the sketch draws them: parameters to begin with in mm, outlines, and where each parameter is measured.
// y to the right, z upwards. An outline is a list of corners [y, z, radius] or {circle: [y, z, r]} or
// {ellipse: [y, z, a, b]}; the first is the border, the others are holes or other parts. Lines of dimensions:
//   outside   from, to; beside the section at `side`, in the `row` counted from it
//   across    from, to; in place, with its arrows from outside, as of a wall
//   radius    at a corner, with the way from it to the word
//   count     words without a line
const outside = (side, name, from, to, row = 1) => ({kind: "outside", side, name, from, to, row});
const below = (name, y1, y2, z, row) => outside("below", name, [y1, z], [y2, z], row);
const above = (name, y1, y2, z, row) => outside("above", name, [y1, z], [y2, z], row);
const left = (name, z1, z2, y, row) => outside("left", name, [y, z1], [y, z2], row);
const right = (name, z1, z2, y, row) => outside("right", name, [y, z1], [y, z2], row);
const across = (name, from, to, word = "to") => ({kind: "across", name, from, to, word});
const radius = (name, at, way) => ({kind: "radius", name, at, way});

const mirrored = (half) => [...half, ...half.toReversed().map(([y, z, r]) => [-y, z, r])];
const both_ways = (half) => [...half, ...half.map(([y, z, r]) => [-y, -z, r])];
const box = (y, z, b, h, r = 0) => [[y - b / 2, z - h / 2, r], [y + b / 2, z - h / 2, r], [y + b / 2, z + h / 2, r], [y - b / 2, z + h / 2, r]];
const i_shape = (h, b, tw, tip, root, r1 = 0, r2 = 0) => [mirrored([
  [b / 2, -h / 2], [b / 2, tip - h / 2, r2], [tw / 2, root - h / 2, r1], [tw / 2, h / 2 - root, r1], [b / 2, h / 2 - tip, r2], [b / 2, h / 2]])];
const channel_shape = (h, b, tw, tip, root, r1 = 0, r2 = 0) => [[
  [0, -h / 2], [b, -h / 2], [b, tip - h / 2, r2], [tw, root - h / 2, r1], [tw, h / 2 - root, r1], [b, h / 2 - tip, r2], [b, h / 2], [0, h / 2]]];
const slopes = (p, outstand, e) => [p.tf - p.slope * e, p.tf + p.slope * (outstand - e)];
const polygon = (n, r) => Array.from({length: Math.min(n, 1000)}, (_, i) => {
  const angle = -Math.PI / 2 + (2 * i + 1) * Math.PI / n;
  return [r * Math.cos(angle), r * Math.sin(angle)];
});
const tee = (h, b, bw, hf, bv = 0, hv = 0) => [mirrored([
  [bw / 2, -h], ...(bv > 0 && hv > 0 ? [[bw / 2, -hf - hv], [bw / 2 + bv, -hf]] : [[bw / 2, -hf]]), [b / 2, -hf], [b / 2, 0]])];

// A sheet of thickness t along a line of corners, bent with the inner radius r.
function sheet(line, t, r) {
  const turn = (a, b) => a[0] * b[1] - a[1] * b[0];
  const ways = line.slice(1).map((p, i) => {
    const d = [p[0] - line[i][0], p[1] - line[i][1]], l = Math.hypot(...d) || 1;
    return [d[0] / l, d[1] / l];
  });
  const edge = (sign) => line.map((p, i) => {
    const a = ways[Math.max(0, i - 1)], b = ways[Math.min(i, ways.length - 1)];
    const n = [-(a[1] + b[1]), a[0] + b[0]], k = sign * t / (1 + a[0] * b[0] + a[1] * b[1]) / 2, bend = turn(a, b) * sign;
    return [p[0] + n[0] * k, p[1] + n[1] * k, i === 0 || i === line.length - 1 ? 0 : bend > 0 ? r : r + t];
  });
  return [[...edge(1), ...edge(-1).reverse()]];
}

const girder = (p) => (p.r > 0 ? i_shape(p.h, p.b, p.tw, p.tf, p.tf, p.r)[0] : welded(p)[0]).map(([y, z, r]) => [y, z - p.hc - p.h / 2, r]);
function welded({h, b, tw, tf, b2 = 0, tf2 = 0, a = 0}) {
  const lower = b2 > 0 ? b2 : b, t2 = tf2 > 0 ? tf2 : tf, leg = a * Math.SQRT2, w = tw / 2;
  return [mirrored([[lower / 2, -h / 2], [lower / 2, t2 - h / 2], ...(leg > 0 ? [[w + leg, t2 - h / 2]] : []), [w, t2 - h / 2 + leg],
    [w, h / 2 - tf - leg], ...(leg > 0 ? [[w + leg, h / 2 - tf]] : []), [b / 2, h / 2 - tf], [b / 2, h / 2]])];
}

// name: [parameters, outlines of p, lines of p]
const SHAPES = {
  rectangle: [{h: 300, b: 200, r: 0}, (p) => [box(0, 0, p.b, p.h, p.r)],
    (p) => [left("h", -p.h / 2, p.h / 2, -p.b / 2), below("b", -p.b / 2, p.b / 2, -p.h / 2), radius("r", [p.b / 2, p.h / 2, p.r], [1, 1])]],
  circle: [{d: 200}, (p) => [{circle: [0, 0, p.d / 2]}], (p) => [below("d", -p.d / 2, p.d / 2, -p.d / 2)]],
  ring: [{d: 219.1, t: 8}, (p) => [{circle: [0, 0, p.d / 2]}, {circle: [0, 0, p.d / 2 - p.t]}],
    (p) => [below("d", -p.d / 2, p.d / 2, -p.d / 2), across("t", [p.d / 2, 0], [p.d / 2 - p.t, 0])]],
  hollow_rectangle: [{h: 200, b: 120, t: 8, ro: 16, ri: 8},
    (p) => [box(0, 0, p.b, p.h, p.ro), box(0, 0, p.b - 2 * p.t, p.h - 2 * p.t, p.ri)],
    (p) => [left("h", -p.h / 2, p.h / 2, -p.b / 2), below("b", -p.b / 2, p.b / 2, -p.h / 2), across("t", [p.b / 2, 0], [p.b / 2 - p.t, 0]),
      radius("ro", [p.b / 2, p.h / 2, p.ro], [1, 1]), radius("ri", [-p.b / 2 + p.t, p.h / 2 - p.t, p.ri, -1, 1], [1, -1])]],
  ellipse: [{h: 160, b: 280}, (p) => [{ellipse: [0, 0, p.b / 2, p.h / 2]}],
    (p) => [left("h", -p.h / 2, p.h / 2, -p.b / 2), below("b", -p.b / 2, p.b / 2, -p.h / 2)]],
  triangle: [{h: 200, b: 240, a: 0}, (p) => [[[-p.b / 2, 0], [p.b / 2, 0], [p.a ?? 0, p.h]]],
    (p) => [left("h", 0, p.h, -p.b / 2), below("b", -p.b / 2, p.b / 2, 0), above("a", 0, p.a, p.h)]],
  trapezoid: [{h: 200, b: 300, bt: 160, a: 0},
    (p) => [[[-p.b / 2, 0], [p.b / 2, 0], [p.a + p.bt / 2, p.h], [p.a - p.bt / 2, p.h]]],
    (p) => [left("h", 0, p.h, -p.b / 2), below("b", -p.b / 2, p.b / 2, 0, 1), above("bt", p.a - p.bt / 2, p.a + p.bt / 2, p.h), above("a", 0, p.a, p.h, 2)]],
  polygon: [{n: 6, d: 200, t: 0},
    (p) => [polygon(p.n, p.d / 2), ...(p.t > 0 ? [polygon(p.n, p.d / 2 - p.t / Math.cos(Math.PI / p.n))] : [])],
    (p) => [below("d", -p.d / 2, p.d / 2, -p.d / 2 * Math.cos(Math.PI / p.n)),
      across("t", [0, -p.d / 2 * Math.cos(Math.PI / p.n)], [0, p.t - p.d / 2 * Math.cos(Math.PI / p.n)])]],
  concrete_t: [{h: 600, b: 1200, bw: 300, hf: 150, bv: 0, hv: 0}, (p) => tee(p.h, p.b, p.bw, p.hf, p.bv, p.hv),
    (p) => [left("h", -p.h, 0, -p.b / 2, 1), above("b", -p.b / 2, p.b / 2, 0), below("bw", -p.bw / 2, p.bw / 2, -p.h), right("hf", -p.hf, 0, p.b / 2),
      right("hv", -p.hf - p.hv, -p.hf, p.bw / 2 + p.bv, 2), below("bv", p.bw / 2, p.bw / 2 + p.bv, -p.hf - p.hv)]],
  box_girder: [{h: 2500, b: 12000, bt: 6500, bb: 5500, tt: 280, tb: 250, tw: 450, tc: 220, tr: 450}, box_girder,
    (p) => {
      const bb = p.bb > 0 ? p.bb : p.bt, tr = p.tr > 0 ? p.tr : p.tt, tc = p.tc > 0 ? p.tc : p.tt;
      const web = p.bt / 2 + (bb - p.bt) / 2 * (p.h / 2 - tr) / (p.h - tr);
      return [left("h", -p.h, 0, -p.b / 2), above("b", -p.b / 2, p.b / 2, 0), below("bb", -bb / 2, bb / 2, -p.h), below("bt", -p.bt / 2, p.bt / 2, -tr, 2.6),
        across("tt", [-0.38 * p.bt, 0], [-0.38 * p.bt, -p.tt]), across("tb", [0, -p.h], [0, p.tb - p.h]),
        across("tw", [web - p.tw, -p.h / 2], [web, -p.h / 2]),
        right("tc", -tc, 0, p.b / 2), across("tr", [0.56 * p.bt, 0], [0.56 * p.bt, -tr], "from")];
    }],
  i: [{h: 300, b: 150, tw: 7.1, tf: 10.7, r: 15}, (p) => i_shape(p.h, p.b, p.tw, p.tf, p.tf, p.r),
    (p) => [left("h", -p.h / 2, p.h / 2, -p.b / 2), below("b", -p.b / 2, p.b / 2, -p.h / 2), right("tf", p.h / 2 - p.tf, p.h / 2, p.b / 2),
      across("tw", [-p.tw / 2, 0], [p.tw / 2, 0]), radius("r", [p.tw / 2, p.tf - p.h / 2, p.r, -1, -1], [1, 1])]],
  i_sloped: [{h: 300, b: 125, tw: 10.8, tf: 16.2, slope: 0.14, r1: 10.8, r2: 6.5, e: 31.25}, (p) => {
    const e = p.e > 0 ? p.e : p.b / 4, [tip, root] = slopes(p, (p.b - p.tw) / 2, e);
    return i_shape(p.h, p.b, p.tw, tip, root, p.r1, p.r2);
  }, (p) => {
    const e = p.e > 0 ? p.e : p.b / 4;
    return [left("h", -p.h / 2, p.h / 2, -p.b / 2), below("b", -p.b / 2, p.b / 2, -p.h / 2, 2), across("tw", [-p.tw / 2, 0], [p.tw / 2, 0]),
      right("tf", p.h / 2 - p.tf, p.h / 2, p.b / 2 - e, 2), below("e", p.b / 2 - e, p.b / 2, -p.h / 2),
      radius("r1", [-p.tw / 2, p.tf - p.h / 2, p.r1, 1, -1], [-1, 1]), radius("r2", [-p.b / 2, p.h / 2 - p.tf * 0.7, p.r2, -1, -1], [0.3, -1])];
  }],
  i_welded: [{h: 800, b: 250, tw: 10, tf: 20, b2: 350, tf2: 25, a: 6}, welded,
    (p) => [left("h", -p.h / 2, p.h / 2, -Math.max(p.b, p.b2) / 2), above("b", -p.b / 2, p.b / 2, p.h / 2), right("tf", p.h / 2 - p.tf, p.h / 2, p.b / 2),
      across("tw", [-p.tw / 2, 0], [p.tw / 2, 0]), below("b2", -(p.b2 || p.b) / 2, (p.b2 || p.b) / 2, -p.h / 2),
      right("tf2", -p.h / 2, (p.tf2 || p.tf) - p.h / 2, (p.b2 || p.b) / 2), radius("a", [p.tw / 2 + p.a * 0.7, p.h / 2 - p.tf - p.a * 0.7, 0], [1, -1])]],
  channel: [{h: 200, b: 80, tw: 6, tf: 11, r: 13}, (p) => channel_shape(p.h, p.b, p.tw, p.tf, p.tf, p.r),
    (p) => [left("h", -p.h / 2, p.h / 2, 0), below("b", 0, p.b, -p.h / 2), right("tf", p.h / 2 - p.tf, p.h / 2, p.b), across("tw", [0, 0], [p.tw, 0]),
      radius("r", [p.tw, p.tf - p.h / 2, p.r, -1, -1], [1, 1])]],
  channel_sloped: [{h: 200, b: 75, tw: 8.5, tf: 11.5, slope: 0.08, r1: 11.5, r2: 6, e: 37.5}, (p) => {
    const e = p.e > 0 ? p.e : p.b / 2, [tip, root] = slopes(p, p.b - p.tw, e);
    return channel_shape(p.h, p.b, p.tw, tip, root, p.r1, p.r2);
  }, (p) => {
    const e = p.e > 0 ? p.e : p.b / 2;
    return [left("h", -p.h / 2, p.h / 2, 0), below("b", 0, p.b, -p.h / 2, 2), across("tw", [0, 0], [p.tw, 0]), right("tf", p.h / 2 - p.tf, p.h / 2, p.b - e, 1.6),
      below("e", p.b - e, p.b, -p.h / 2), radius("r1", [p.tw, p.tf * 1.3 - p.h / 2, p.r1, -1, -1], [1, 1]),
      radius("r2", [p.b, p.tf * 0.75 - p.h / 2, p.r2], [0.6, 1])];
  }],
  angle: [{h: 120, b: 80, t: 10, r1: 11, r2: 5.5},
    (p) => [[[0, 0], [p.b, 0], [p.b, p.t, p.r2], [p.t, p.t, p.r1], [p.t, p.h, p.r2], [0, p.h]]],
    (p) => [left("h", 0, p.h, 0), below("b", 0, p.b, 0), right("t", 0, p.t, p.b), radius("r1", [p.t, p.t, p.r1, -1, -1], [1, 1]), radius("r2", [p.t, p.h, p.r2], [1, 0.5])]],
  tee: [{h: 150, b: 150, tw: 7.1, tf: 10.7, r: 15},
    (p) => [mirrored([[p.tw / 2, -p.h], [p.tw / 2, -p.tf, p.r], [p.b / 2, -p.tf], [p.b / 2, 0]])],
    (p) => [left("h", -p.h, 0, -p.b / 2), above("b", -p.b / 2, p.b / 2, 0), right("tf", -p.tf, 0, p.b / 2), across("tw", [-p.tw / 2, -0.7 * p.h], [p.tw / 2, -0.7 * p.h]),
      radius("r", [p.tw / 2, -p.tf, p.r, -1, 1], [1, -1])]],
  z: [{h: 160, b: 70, tw: 8.5, tf: 11, r: 11},
    (p) => [both_ways([[-p.tw / 2, -p.h / 2], [p.b - p.tw / 2, -p.h / 2], [p.b - p.tw / 2, p.tf - p.h / 2], [p.tw / 2, p.tf - p.h / 2, p.r]])],
    (p) => [left("h", -p.h / 2, p.h / 2, p.tw / 2 - p.b), below("b", -p.tw / 2, p.b - p.tw / 2, -p.h / 2), right("tf", -p.h / 2, p.tf - p.h / 2, p.b - p.tw / 2),
      across("tw", [-p.tw / 2, 0], [p.tw / 2, 0]), radius("r", [p.tw / 2, p.tf - p.h / 2, p.r, -1, -1], [1, 1])]],
  cold_c: [{h: 200, b: 70, c: 20, t: 2, r: 3}, (p) => {
    const h = p.h / 2 - p.t / 2, b = p.b - p.t / 2, lip = p.h / 2 - p.c, w = p.t / 2;
    return sheet(p.c > 0 ? [[b, lip], [b, h], [w, h], [w, -h], [b, -h], [b, -lip]] : [[p.b, h], [w, h], [w, -h], [p.b, -h]], p.t, p.r);
  }, (p) => [left("h", -p.h / 2, p.h / 2, 0), below("b", 0, p.b, -p.h / 2), right("c", p.h / 2 - p.c, p.h / 2, p.b), across("t", [0, 0], [p.t, 0]),
    radius("r", [p.t, p.t - p.h / 2, p.r, -1, -1], [1, 1])]],
  cold_z: [{h: 200, b: 70, b2: 60, c: 20, t: 2, r: 3}, (p) => {
    const h = p.h / 2 - p.t / 2, top = p.b - p.t, bottom = (p.b2 > 0 ? p.b2 : p.b) - p.t, lip = p.h / 2 - p.c;
    return sheet(p.c > 0 ? [[-top, lip], [-top, h], [0, h], [0, -h], [bottom, -h], [bottom, -lip]]
      : [[-top - p.t / 2, h], [0, h], [0, -h], [bottom + p.t / 2, -h]], p.t, p.r);
  }, (p) => [left("h", -p.h / 2, p.h / 2, p.t / 2 - p.b), above("b", p.t / 2 - p.b, p.t / 2, p.h / 2), below("b2", -p.t / 2, (p.b2 || p.b) - p.t / 2, -p.h / 2),
    right("c", -p.h / 2, p.c - p.h / 2, (p.b2 || p.b) - p.t / 2), across("t", [-p.t / 2, 0], [p.t / 2, 0]), radius("r", [p.t / 2, p.t - p.h / 2, p.r, -1, -1], [1, 1])]],
  sigma: [{h: 200, b: 70, c: 20, t: 2, d: 16, hs: 50, hi: 60, r: 4}, (p) => {
    const h = p.h / 2 - p.t / 2, b = p.b - p.t / 2, w = p.t / 2;
    const half = [...(p.c > 0 ? [[b, p.h / 2 - p.c], [b, h]] : [[p.b, h]]), [w, h], [w, p.h / 2 - p.hs], [w + p.d, p.hi / 2]];
    return sheet([...half, ...half.toReversed().map(([y, z]) => [y, -z])], p.t, p.r);
  }, (p) => [left("h", -p.h / 2, p.h / 2, 0, 2), below("b", 0, p.b, -p.h / 2), right("c", p.h / 2 - p.c, p.h / 2, p.b), left("hs", p.h / 2 - p.hs, p.h / 2, 0),
    right("hi", -p.hi / 2, p.hi / 2, p.d + p.t, 1), across("t", [0, p.h / 2 - p.hs * 0.7], [p.t, p.h / 2 - p.hs * 0.7]), above("d", 0, p.d, p.hi / 2 + 0 * p.h),
    radius("r", [p.t, p.t - p.h / 2, p.r, -1, -1], [1, 1])]],
  hat: [{h: 100, b: 80, bf: 40, c: 12, t: 2, r: 3}, (p) => {
    const y = p.b / 2 - p.t / 2, tip = p.b / 2 + p.bf - p.t;
    const half = [...(p.c > 0 ? [[p.t / 2 - tip, p.c], [p.t / 2 - tip, p.t / 2]] : [[-tip, p.t / 2]]), [-y, p.t / 2], [-y, p.h - p.t / 2]];
    return sheet(mirrored(half), p.t, p.r);
  }, (p) => {
    const tip = p.b / 2 + p.bf - p.t;
    return [left("h", 0, p.h, -tip), above("b", -p.b / 2, p.b / 2, p.h), below("bf", -tip, p.t - p.b / 2, 0), right("c", 0, p.c, tip),
      across("t", [p.b / 2, p.h * 0.6], [p.b / 2 - p.t, p.h * 0.6], "from"), radius("r", [p.b / 2 - p.t, p.h - p.t, p.r], [-1, -1])];
  }],
  rc_rectangle: [{h: 500, b: 300, cover: 40, n_top: 2, d_top: 16, n_bottom: 4, d_bottom: 20, n_side: 0, d_side: 0}, (p) => [box(0, 0, p.b, p.h)],
    (p) => [left("h", -p.h / 2, p.h / 2, -p.b / 2), below("b", -p.b / 2, p.b / 2, -p.h / 2), right("cover", -p.h / 2, p.cover - p.h / 2, p.b / 2),
      row_of("n_top", "d_top", [0, p.h / 2 - p.cover - p.d_top / 2], -1), row_of("n_bottom", "d_bottom", [0, p.cover + p.d_bottom / 2 - p.h / 2], 1),
      ...(p.n_side > 0 ? [row_of("n_side", "d_side", [0, 0], 0)] : [])]],
  rc_t: [{h: 600, b: 1200, bw: 300, hf: 150, cover: 40, n_top: 6, d_top: 12, n_bottom: 4, d_bottom: 25}, (p) => tee(p.h, p.b, p.bw, p.hf),
    (p) => [left("h", -p.h, 0, -p.b / 2), above("b", -p.b / 2, p.b / 2, 0), below("bw", -p.bw / 2, p.bw / 2, -p.h), right("hf", -p.hf, 0, p.b / 2),
      right("cover", -p.h, p.cover - p.h, p.bw / 2), row_of("n_top", "d_top", [0, -p.cover - p.d_top / 2], -1), row_of("n_bottom", "d_bottom", [0, p.cover + p.d_bottom / 2 - p.h], 1)]],
  rc_circle: [{d: 500, cover: 40, n: 8, d_bar: 20}, (p) => [{circle: [0, 0, p.d / 2]}],
    (p) => [below("d", -p.d / 2, p.d / 2, -p.d / 2), across("cover", [p.d / 2, 0], [p.d / 2 - p.cover, 0], "from"), row_of("n", "d_bar", [0, 0.12 * p.d], 0)]],
  composite: [{hc: 150, bc: 1500, h: 400, b: 180, tw: 8.6, tf: 13.5, b2: 0, tf2: 0, r: 21, cover: 40, n_top: 8, d_top: 12, n_bottom: 0, d_bottom: 0},
    (p) => [box(0, -p.hc / 2, p.bc, p.hc), girder(p)],
    (p) => [right("hc", -p.hc, 0, p.bc / 2), above("bc", -p.bc / 2, p.bc / 2, 0), left("h", -p.hc - p.h, -p.hc, -p.bc / 2), across("tw", [-p.tw / 2, -p.hc - 0.75 * p.h], [p.tw / 2, -p.hc - 0.75 * p.h]),
      below("b", -p.b / 2, p.b / 2, -p.hc - p.h, p.b2 > 0 ? 2 : 1), ...(p.b2 > 0 ? [below("b2", -p.b2 / 2, p.b2 / 2, -p.hc - p.h)] : []),
      across("tf", [0.35 * p.b, -p.hc], [0.35 * p.b, -p.hc - p.tf]),
      ...(p.tf2 > 0 ? [across("tf2", [-0.35 * (p.b2 || p.b), -p.hc - p.h], [-0.35 * (p.b2 || p.b), p.tf2 - p.hc - p.h])] : []),
      ...(p.r > 0 ? [radius("r", [-p.tw / 2, -p.hc - p.h + p.tf, p.r, 1, -1], [-1, 1])] : []), row_of("n_top", "d_top", [-0.25 * p.bc, -p.hc], -1),
      ...(p.n_bottom > 0 ? [row_of("n_bottom", "d_bottom", [0, p.cover + p.d_bottom / 2 - p.hc], 1)] : [])]],
};

// "4 ⌀ 20" beside a row of bars: on its side of it.
function row_of(name, second, at, side) { return {kind: "count", name, second, at, side}; }

function box_girder(p) {
  const bb = p.bb > 0 ? p.bb : p.bt, tip = p.tc > 0 ? p.tc : p.tt, root = p.tr > 0 ? p.tr : p.tt;
  const side = (z) => p.bt / 2 + (bb - p.bt) / 2 * (-root - z) / (p.h - root);
  const it = side(-p.tt) - p.tw, ib = side(p.tb - p.h) - p.tw;
  return [mirrored([[bb / 2, -p.h], [p.bt / 2, -root], [p.b / 2, -tip], [p.b / 2, 0]]), [[ib, p.tb - p.h], [it, -p.tt], [-it, -p.tt], [-ib, p.tb - p.h]]];
}

export const START = Object.fromEntries(Object.entries(SHAPES).map(([name, [start]]) => [name, start]));
const zeros = Object.fromEntries(Object.entries(START).map(([name, start]) => [name, Object.fromEntries(Object.keys(start).map((key) => [key, 0]))]));
export const outlines_of = (shape, parameters) => SHAPES[shape][1]({...zeros[shape], ...parameters});
export const lines_of = (shape, parameters) => SHAPES[shape][2]({...zeros[shape], ...parameters});
