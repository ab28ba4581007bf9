// Whole sections of a few parameters: concrete with bars, and a girder with its slab. Lengths in the section's unit;
// `scale` is a millimetre in it. Made of {materials: names, parts, bars}.
export const TEMPLATES = new Set(["rc_rectangle", "rc_t", "rc_circle", "composite"]);
const CONCRETE = "C30/37", STEEL = "S235", BARS = "B500";

function row(n, d, reach, z) {
  if (!(n >= 1)) return [];
  if (n === 1) return [{at: [0, z], diameter: d, material: BARS}];
  return [{from: [-reach, z], to: [reach, z], count: n, diameter: d, material: BARS}];
}
// Rows below the top and above the bottom, by the cover and half of a bar; each as wide as its concrete.
function rows(p, wide_top, wide_bottom, top, bottom) {
  const reach = (wide, d) => wide / 2 - p.cover - d / 2;
  return [...row(p.n_top, p.d_top, reach(wide_top, p.d_top), top - p.cover - p.d_top / 2),
    ...row(p.n_bottom, p.d_bottom, reach(wide_bottom, p.d_bottom), bottom + p.cover + p.d_bottom / 2)];
}
const concrete = (shape, parameters) => ({name: "concrete", material: CONCRETE, shape, parameters});

const BUILD = {
  rc_rectangle(p) {
    const bars = rows(p, p.b, p.b, p.h / 2, -p.h / 2), n = p.n_side;
    const low = -p.h / 2 + p.cover + p.d_bottom / 2, high = p.h / 2 - p.cover - p.d_top / 2, step = (high - low) / (n + 1);
    if (n >= 1)
      for (const sign of [-1, 1]) {
        const y = sign * (p.b / 2 - p.cover - p.d_side / 2);
        bars.push(n === 1 ? {at: [y, low + step], diameter: p.d_side, material: BARS}
          : {from: [y, low + step], to: [y, high - step], count: n, diameter: p.d_side, material: BARS});
      }
    return {materials: [CONCRETE, BARS], parts: [concrete("rectangle", {h: p.h, b: p.b})], bars};
  },
  rc_t: (p) => ({
    materials: [CONCRETE, BARS], parts: [concrete("concrete_t", {h: p.h, b: p.b, bw: p.bw, hf: p.hf})],
    bars: rows(p, p.b, p.bw, 0, -p.h),
  }),
  rc_circle(p) {
    const ring = {centre: [0, 0], radius: p.d / 2 - p.cover - p.d_bar / 2, count: p.n, start: 90, diameter: p.d_bar, material: BARS};
    const one = {at: [0, ring.radius], diameter: p.d_bar, material: BARS};
    return {materials: [CONCRETE, BARS], parts: [concrete("circle", {d: p.d})], bars: p.n > 1 ? [ring] : p.n === 1 ? [one] : []};
  },
  composite(p) {
    const {h, b, tw, tf, r, b2, tf2} = p, plates = {h, b, tw, tf, ...(b2 > 0 && {b2}), ...(tf2 > 0 && {tf2})};
    const girder = r > 0 ? {shape: "i", parameters: {h, b, tw, tf, r}} : {shape: "i_welded", parameters: plates};
    return {
      materials: [STEEL, CONCRETE, BARS],
      parts: [{name: "girder", material: STEEL, ...girder, at: [0, -p.hc - h / 2]},
        {name: "slab", material: CONCRETE, shape: "rectangle", parameters: {h: p.hc, b: p.bc}, at: [0, -p.hc / 2]}],
      bars: rows(p, p.bc, p.bc, 0, -p.hc),
    };
  },
};

const NONE = {n_top: 0, d_top: 0, n_bottom: 0, d_bottom: 0, n_side: 0, d_side: 0, n: 0, d_bar: 0, b2: 0, tf2: 0, r: 0};
export const build_template = ({name, parameters}, scale) => BUILD[name]({...NONE, cover: 40 * scale, ...parameters});

// Where the bars of a section stand: [y, z, radius] each.
export function places_of_bars(bars) {
  return bars.flatMap((bar) => {
    const radius = bar.diameter ? bar.diameter / 2 : Math.sqrt((bar.area ?? 0) / Math.PI), n = Math.min(bar.count ?? 1, 1000);
    return Array.from({length: n}, (_, k) => {
      if (bar.at) return [...bar.at, radius];
      if (bar.from && bar.to) return [0, 1].map((i) => bar.from[i] + (bar.to[i] - bar.from[i]) * k / (n - 1)).concat(radius);
      if (!bar.centre) return [0, 0, 0];
      const angle = ((bar.start ?? 0) + 360 * k / n) * Math.PI / 180;
      return [bar.centre[0] + bar.radius * Math.cos(angle), bar.centre[1] + bar.radius * Math.sin(angle), radius];
    });
  });
}
