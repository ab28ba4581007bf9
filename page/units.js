// Units of values, of loads, and of a whole section.
import {catalogue, lengths, forces, shapes} from "./catalogue.js";
import {raised} from "./numbers.js";

export const length_of = (section) => section?.units?.length ?? "mm";
export const force_of = (section) => section?.units?.force ?? "N";
const sizes = (length, force) => [lengths.get(length)?.metres, forces.get(force)?.newtons];

export const SYSTEMS = [["mm", "N"], ["mm", "kN"], ["cm", "kN"], ["m", "kN"], ["m", "MN"], ["in", "lbf"], ["in", "kip"], ["ft", "kip"]];

// What a number in (length^a force^b) of one pair of units is in another.
export function factor(from, to, a, b) {
  const [l0, f0] = sizes(from.length, from.force), [l1, f1] = sizes(to.length, to.force);
  return (l0 / l1) ** a * (f0 / f1) ** b;
}
export const own = (section) => ({length: length_of(section), force: force_of(section)});

// The power of the length in each load: forces 0, moments 1, the bimoment 2.
export const power_of_load = (key) => ({My: 1, Mz: 1, T: 1, Tw: 1, B: 2})[key] ?? 0;

// Loads are typed and told in the units that are usual for members.
const usual = (units) => (["in", "ft"].includes(units.length) ? {length: "ft", force: "kip"} : {length: "m", force: "kN"});
export function load_unit(units, key) {
  const {length, force} = usual(units), power = power_of_load(key);
  return {length, force, text: force + (power ? ` ${length}` : "") + (power === 2 ? "2" : "")};
}

// A load in a section file, a number or "35 kNm", in its own units; null where it is neither.
export function load_value(given, key, section) {
  if (given === undefined) return 0;
  if (typeof given === "number") return given;
  const match = /^[\s+]*(-?[\d.]+(?:e[-+]?\d+)?)[\s*]*(.*)$/i.exec(String(given).trim());
  if (!match || !Number.isFinite(Number(match[1]))) return null;
  const plain = match[2].replace("²", "2").replace(/[\s*·]/g, ""), power = power_of_load(key);
  if (!plain) return Number(match[1]);
  for (const {name: force} of catalogue.forces)
    for (const {name: length} of catalogue.lengths)
      if (plain === force + (power ? length : "") + (power === 2 ? "2" : ""))
        return Number(match[1]) * factor({length, force}, own(section), power, 1);
  return null;
}

export const stress_unit = (units) => raised(`${units.force}/${units.length}2`);

// The parameters of a shape in another unit of length: those that are lengths.
export function scaled_parameters(shape, parameters, scale) {
  const kinds = new Map((shapes.get(shape)?.parameters ?? []).map((p) => [p.name, p.kind]));
  const is_length = (name) => /length|offset/.test(kinds.get(name) ?? "");
  return Object.fromEntries(Object.entries(parameters ?? {}).map(([name, value]) =>
    [name, is_length(name) ? tidy(value * scale) : value]));
}

// Twelve digits: without the dust of a conversion.
export const tidy = (value) => Number(value.toPrecision(12));

export function material_in(material, from, to) {
  const stress = factor(from, to, -2, 1), copy = {...material};
  const scaled = (value, by) => (typeof value === "number" ? tidy(value * by) : value);
  for (const key of ["E", "G"]) if (key in copy) copy[key] = scaled(copy[key], stress);
  if ("density" in copy) copy.density = scaled(copy.density, factor(from, to, -3, 0));
  if (typeof copy.strength === "number") copy.strength = scaled(copy.strength, stress);
  else if (copy.strength) copy.strength = {tension: scaled(copy.strength.tension, stress), compression: scaled(copy.strength.compression, stress)};
  return copy;
}

// The same section with every number in other units.
export function section_in(section, to) {
  const from = own(section), scale = factor(from, to, 1, 0), s = structuredClone(section);
  const length = (value) => (typeof value === "number" ? tidy(value * scale) : value);
  const point = (p) => (Array.isArray(p) ? p.map(length) : p);
  const scale_keys = (entry, keys, how) => { for (const key of keys) if (key in entry) entry[key] = how(entry[key]); };
  const line = (outline) => !Array.isArray(outline) ? outline : outline.map((edge) => {
    if (typeof edge !== "object" || edge === null || Array.isArray(edge)) return point(edge);
    scale_keys(edge, ["arc", "through"], point);
    scale_keys(edge, ["radius"], length);
    return edge;
  });
  s.units = {...to};
  s.materials = s.materials.map((m) => material_in(m, from, to));
  for (const part of s.parts ?? []) {
    if (part.shape) part.parameters = scaled_parameters(part.shape, part.parameters, scale);
    if (part.outline) part.outline = line(part.outline);
    if (part.holes) part.holes = part.holes.map(line);
    scale_keys(part, ["at"], point);
  }
  for (const bar of s.bars ?? []) {
    scale_keys(bar, ["at", "from", "to", "centre"], point);
    scale_keys(bar, ["radius", "diameter"], length);
    scale_keys(bar, ["area"], (a) => tidy(a * scale ** 2));
  }
  for (const load of s.loads ?? [])
    for (const key of Object.keys(load))
      if (typeof load[key] === "number") load[key] = tidy(load[key] * factor(from, to, power_of_load(key), 1));
  if (s.wishes?.size) s.wishes.size = length(s.wishes.size);
  return s;
}
