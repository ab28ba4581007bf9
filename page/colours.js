// Colour maps, and scales that turn values into places on them and into round numbers beside a bar: those of the
// command's pictures. Seventeen colours each, linear in between.
export const STEPS = 16;

// Every sixteenth colour of viridis, by S. van der Walt and N. Smith, dedicated to the public (CC0).
const VIRIDIS = [[0.267, 0.0049, 0.329], [0.282, 0.095, 0.417], [0.279, 0.176, 0.483], [0.259, 0.252, 0.525], [0.230, 0.322, 0.546],
  [0.199, 0.388, 0.555], [0.173, 0.449, 0.558], [0.149, 0.508, 0.557], [0.128, 0.567, 0.551], [0.121, 0.626, 0.534], [0.158, 0.684, 0.502],
  [0.246, 0.739, 0.452], [0.369, 0.789, 0.383], [0.516, 0.831, 0.294], [0.679, 0.864, 0.190], [0.846, 0.887, 0.100], [0.993, 0.906, 0.144]];
// Blue through near white to red in Oklab, the colour space of B. Ottosson (2020): lightness falls evenly to both sides.
const BLUE_RED = [[0.000, 0.336, 0.642], [0.000, 0.413, 0.725], [0.125, 0.492, 0.808], [0.251, 0.572, 0.877], [0.379, 0.653, 0.926],
  [0.515, 0.733, 0.957], [0.659, 0.811, 0.971], [0.808, 0.887, 0.971], [0.961, 0.961, 0.961], [0.969, 0.844, 0.822], [0.962, 0.729, 0.688],
  [0.938, 0.617, 0.563], [0.897, 0.509, 0.448], [0.838, 0.408, 0.346], [0.764, 0.318, 0.257], [0.678, 0.236, 0.182], [0.592, 0.152, 0.106]];
export const map_of = (scale) => (scale.signs ? BLUE_RED : VIRIDIS);

// `signs`: of a field that has both; else of an amount, which begins at 0.
export function scale_of(least, most, signs) {
  let low = signs ? Math.min(least, 0) : 0, high = Math.max(most, 0);
  const reach = Math.max(Math.abs(low), Math.abs(high));
  if (high < 1e-9 * reach) high = 0;
  if (-low < 1e-9 * reach) low = 0;
  const exponent = reach > 0 ? Math.floor(Math.log10(reach)) : 0;
  return {low, high, reach, signs, ticks: round_numbers(low, high), power: exponent < -2 || exponent > 4 ? 3 * Math.floor(exponent / 3) : 0};
}

// From 0 to 1 on the map.
export function share_of(scale, value) {
  if (scale.reach === 0) return scale.signs ? 0.5 : 0;
  const share = value / scale.reach;
  return Math.min(1, Math.max(0, scale.signs ? 0.5 + 0.5 * share : share));
}
export function colour_at(map, share) {
  const place = share * STEPS, k = Math.min(STEPS - 1, Math.floor(place)), t = place - k;
  return map[k].map((c, i) => c + t * (map[k + 1][i] - c));
}
export const css_of = (colour) => `rgb(${colour.map((c) => Math.round(255 * c)).join(" ")})`;

// Five to seven round numbers where that can be.
function round_numbers(low, high) {
  if (!(high > low)) return [high];
  const size = 10 ** (Math.floor(Math.log10(high - low)) - 1), slack = 1e-9 * (high - low);
  let best = [], missed = 100;
  for (const step of [1, 2, 2.5, 5, 10, 20, 25, 50]) {
    const first = Math.ceil((low - slack) / (step * size)), last = Math.floor((high + slack) / (step * size));
    if (last - first > 20 || Math.abs(last - first - 5) >= missed) continue;
    missed = Math.abs(last - first - 5);
    best = Array.from({length: last - first + 1}, (_, k) => (first + k) * step * size);
  }
  return best;
}
