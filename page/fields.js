// From the arrays of an answer to what is drawn of them. Coordinates are counted from the view's origin.
const bytes_of = Uint8Array.fromBase64 ?? ((text) => {
  const letters = atob(text), bytes = new Uint8Array(letters.length);
  for (let i = 0; i < letters.length; ++i) bytes[i] = letters.charCodeAt(i);
  return bytes;
});
const floats = (text) => new Float32Array(bytes_of(text).buffer);
const wholes = (text) => new Uint32Array(bytes_of(text).buffer);

// Elements of four corners as triangles.
function triangles_of(elements) {
  const list = new Uint32Array(elements.length / 4 * 6);
  let n = 0;
  for (let e = 0; e < elements.length; e += 4) {
    const a = elements[e], b = elements[e + 1], c = elements[e + 2], d = elements[e + 3];
    list[n++] = a; list[n++] = b; list[n++] = c;
    if (d !== c) { list[n++] = a; list[n++] = c; list[n++] = d; }
  }
  return list.subarray(0, n);
}

export function decode(view) {
  const [low_y, low_z, high_y, high_z] = view.box, [oy, oz] = view.origin;
  const v = {
    origin: view.origin, box: [low_y - oy, low_z - oz, high_y - oy, high_z - oz], points: floats(view.points),
    elements: wholes(view.elements), coarse_points: view.coarse_points, coarse: wholes(view.coarse_elements),
    material: bytes_of(view.material), sharp: bytes_of(view.sharp), unit: floats(view.unit), warping: floats(view.warping),
    curves: floats(view.curves), sides: bytes_of(view.sides), materials: view.materials,
    bars: view.bars.map(([y, z, r, m]) => [y - oy, z - oz, r, m]),
  };
  v.triangles = triangles_of(v.elements);
  return v;
}

// Loads in the order of the unit stresses: first those with shear stresses of two components, then those with axial ones.
const SHEAR = ["T", "Vy", "Vz", "Tw"], AXIAL = ["N", "My", "Mz", "B"];
export const LOADS_OF = {axial: AXIAL, shear: SHEAR, mises: [...AXIAL, ...SHEAR]};

// Stresses of loads in the section's own units, at each point: {sigma, ty, tz}.
function stresses_of(v, forces) {
  const n = v.material.length, sigma = new Float32Array(n), ty = new Float32Array(n), tz = new Float32Array(n), {unit} = v;
  SHEAR.forEach((key, k) => {
    const f = forces[key] ?? 0;
    if (f) for (let i = 0; i < n; ++i) { ty[i] += f * unit[12 * i + 2 * k]; tz[i] += f * unit[12 * i + 2 * k + 1]; }
  });
  AXIAL.forEach((key, k) => {
    const f = forces[key] ?? 0;
    if (f) for (let i = 0; i < n; ++i) sigma[i] += f * unit[12 * i + 8 + k];
  });
  return {sigma, ty, tz};
}

// Warping at the finest points: a bimoment's stresses are E times it, by a factor that the coarse points tell.
function warping_of(v) {
  const n = v.material.length, values = new Float32Array(n), above = [], below = [];
  for (let i = 0; i < v.coarse_points; ++i) {
    const u = v.unit[12 * i + 11], m = v.material[i];
    above[m] = (above[m] ?? 0) + v.warping[i] * u;
    below[m] = (below[m] ?? 0) + u * u;
  }
  for (let i = 0; i < n; ++i) values[i] = i < v.coarse_points ? v.warping[i] : v.unit[12 * i + 11] * above[v.material[i]] / below[v.material[i]];
  return values.every(Number.isFinite) ? values : null;
}

// What a field shows: {values at the points, triangles, least, most, least_at, most_at, signs, corners where shear has no
// limit, stresses}; null where there is none. `forces`: in the section's own units.
export function field_of(v, what, forces) {
  if (what === "warping") {
    if (!v.warping.length) return null;
    const size = Math.max(v.box[2] - v.box[0], v.box[3] - v.box[1]);
    const nothing = v.warping.every((w) => Math.abs(w) <= 1e-6 * size * size);
    const fine = nothing ? null : warping_of(v);
    const values = fine ?? Float32Array.from(v.material, (_, i) => (nothing ? 0 : v.warping[i] ?? 0));
    return {...range(values, (i) => values[i], fine || nothing ? values.length : v.coarse_points), values, signs: true, power: 2, corners: [],
      triangles: fine ? v.triangles : triangles_of(v.coarse)};
  }
  const sheared = SHEAR.some((key) => forces[key]);
  if (sheared && what !== "axial" && !v.warping.length) return null;  // which piece takes how much is not known
  const s = stresses_of(v, forces), n = s.sigma.length, values = new Float32Array(n);
  for (let i = 0; i < n; ++i) {
    const tau2 = s.ty[i] * s.ty[i] + s.tz[i] * s.tz[i];
    values[i] = what === "axial" ? s.sigma[i] : what === "shear" ? Math.sqrt(tau2) : Math.sqrt(s.sigma[i] * s.sigma[i] + 3 * tau2);
  }
  // Around sharp corners the axial stress alone counts, where there is shear.
  const limited = what === "axial" || !sheared, alone = (i) => (what === "shear" ? NaN : Math.abs(s.sigma[i]));
  const found = range(values, (i) => (limited || !v.sharp[i] ? values[i] : alone(i)), n), corners = [];
  if (!limited) for (let i = 0; i < v.coarse_points; ++i) if (v.sharp[i] === 1) corners.push([v.points[2 * i], v.points[2 * i + 1]]);
  for (let i = 0; i < n; ++i) if (!Number.isFinite(values[i])) values[i] = found.most;
  return {...found, values, signs: what === "axial", stresses: s, corners, triangles: v.triangles, power: 0};
}

function range(values, value_at, n) {
  let least = Infinity, most = -Infinity, least_at = 0, most_at = 0;
  for (let i = 0; i < n; ++i) {
    const value = value_at(i);
    if (value < least) { least = value; least_at = i; }
    if (value > most) { most = value; most_at = i; }
  }
  return Number.isFinite(most) ? {least, most, least_at, most_at} : {least: 0, most: 0, least_at: 0, most_at: 0};
}

// Finds the triangle at a place: triangles in the squares of a grid. locate(y, z) gives {corners, shares} or null.
export function locator(v) {
  const {points, triangles} = v, [y0, z0, y1, z1] = v.box, count = triangles.length / 3;
  const step = Math.sqrt(Math.max((y1 - y0) * (z1 - z0), 1e-30) / Math.max(count / 4, 1)) || 1;
  const ny = Math.min(1000, Math.max(1, Math.ceil((y1 - y0) / step))), nz = Math.min(1000, Math.max(1, Math.ceil((z1 - z0) / step)));
  const squares = new Map(), place = (x, low, high, n) => Math.min(n - 1, Math.max(0, Math.floor((x - low) / (high - low) * n)));
  for (let t = 0; t < triangles.length; t += 3) {
    const ys = [0, 1, 2].map((k) => points[2 * triangles[t + k]]), zs = [0, 1, 2].map((k) => points[2 * triangles[t + k] + 1]);
    for (let a = place(Math.min(...ys), y0, y1, ny); a <= place(Math.max(...ys), y0, y1, ny); ++a)
      for (let b = place(Math.min(...zs), z0, z1, nz); b <= place(Math.max(...zs), z0, z1, nz); ++b) {
        const key = a * nz + b, list = squares.get(key);
        if (list) list.push(t);
        else squares.set(key, [t]);
      }
  }
  return (y, z) => {
    for (const t of squares.get(place(y, y0, y1, ny) * nz + place(z, z0, z1, nz)) ?? []) {
      const [a, b, c] = [triangles[t], triangles[t + 1], triangles[t + 2]];
      const ay = points[2 * a], az = points[2 * a + 1], by = points[2 * b] - ay, bz = points[2 * b + 1] - az;
      const cy = points[2 * c] - ay, cz = points[2 * c + 1] - az, det = by * cz - bz * cy;
      const s = ((y - ay) * cz - (z - az) * cy) / det, u = (by * (z - az) - bz * (y - ay)) / det;
      if (s >= -1e-4 && u >= -1e-4 && s + u <= 1.0001) return {corners: [a, b, c], shares: [1 - s - u, s, u]};
    }
    return null;
  };
}
