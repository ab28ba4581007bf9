// Sections: what is picked, and whether the forms can show one.
import {catalogue, profiles, shapes, lengths} from "./catalogue.js";
import {START} from "./dimensions.js";
import {build_template, TEMPLATES} from "./templates.js";
import {factor, own, length_of, material_in, scaled_parameters, section_in, tidy} from "./units.js";

const SI = {length: "mm", force: "N"};
const is_object = (x) => typeof x === "object" && x !== null && !Array.isArray(x);
const objects = (list) => Array.isArray(list) && list.every(is_object);

// Whether the forms can show it: of what else may be wrong the answer tells.
export function is_sound(s) {
  return is_object(s) && objects(s.materials) && s.materials.length > 0 && objects(s.parts ?? []) && objects(s.bars ?? []) &&
    objects(s.loads ?? []) && is_object(s.units ?? {}) && lengths.has(length_of(s)) && is_object(s.wishes ?? {}) &&
    catalogue.forces.some((f) => f.name === own(s).force) &&
    is_object(s.drawing ?? {}) && is_object(s.drawing?.layers ?? {}) && (s.parts ?? []).every((p) => is_object(p.parameters ?? {})) &&
    [...(s.parts ?? []), ...(s.bars ?? [])].every((p) => ["at", "from", "to", "centre"].every((k) => !(k in p) || (Array.isArray(p[k]) && p[k].length === 2))) &&
    (s.parts ?? []).every((p) => [p.outline ?? [], p.holes ?? []].every(Array.isArray));
}

// A material of the catalogue in the units of a section.
export function standard_material(name, units) {
  const m = catalogue.materials.find((entry) => entry.name === name), {tension, compression} = m.strength;
  return material_in({name, E: m.E, nu: tidy(m.nu), density: m.density, strength: tension === compression ? tension : {tension, compression}}, SI, units);
}

const steel = (name, E, strength, density) => ({name, E, nu: 0.3, density, strength});
// American steels in inches and kips; 490 lb/ft3.
const US = {length: "in", force: "kip"};
const american = (family, units) => material_in(
  family === "W" ? steel("A992", 29000, 50, 490 * 0.45359237 / 1728) : steel("A36", 29000, 36, 490 * 0.45359237 / 1728), US, units);
const STANDARD = ["S235", "A992", "A36"];

export const first_section = () => ({
  name: "IPE 300", units: {...SI}, materials: [standard_material("S235", SI)], parts: [{profile: "IPE 300"}],
});

// Parameters that a new shape begins with, in the section's unit.
export const first_parameters = (shape, section) =>
  scaled_parameters(shape, START[shape], factor(SI, own(section), 1, 0));

// Whether one shape or profile is all there is, so that the next one takes its place with everything that belongs to it.
const stands_alone = (state) => state.template || ((state.section.parts ?? []).length <= 1 && !(state.section.bars ?? []).length) || state.dxf;

const loads_kept = (section, state) => {
  if (!state.section.loads?.length) return section;
  const before = {...state.section, parts: [], bars: [], wishes: {}};
  return {...section, loads: section_in(before, own(section)).loads};
};

// What the state becomes when a profile or a shape is picked: for the part that is edited, or for the whole section.
export function picked_profile(state, name) {
  const profile = profiles.get(name);
  if (!stands_alone(state)) return picked_part(state, {profile: name});
  const inches = profile.unit === "in", were_inches = ["in", "ft"].includes(length_of(state.section));
  const units = inches === were_inches ? own(state.section) : inches ? US : SI;
  const old = state.section.materials.length === 1 && !state.template ? state.section.materials[0] : null;
  const material = old && !STANDARD.includes(old.name) ? material_in(old, own(state.section), units)
    : inches ? american(profile.family, units) : standard_material("S235", units);
  const part = {...placed(state, state.section.parts?.[0]), profile: name};
  return {section: kept(state, {name, units, materials: [material], parts: [part]}), template: null, dxf: "", part: 0};
}

export function picked_shape(state, name) {
  if (TEMPLATES.has(name)) {
    const parameters = first_parameters(name, state.section);
    return {...of_template({...state, section: {...state.section, name: name.replaceAll("_", " ")}}, {name, parameters}, true), dxf: "", part: 0};
  }
  if (!stands_alone(state)) return picked_part(state, {shape: name, parameters: first_parameters(name, state.section)});
  const units = own(state.section), one = state.section.materials.length === 1 && !state.template;
  const concrete = ["concrete_t", "box_girder"].includes(name);
  const material = concrete ? standard_material("C30/37", units) : one && state.section.materials[0].name !== "C30/37"
    ? state.section.materials[0] : standard_material("S235", units);
  const part = {...placed(state, state.section.parts?.[0]), shape: name, parameters: first_parameters(name, state.section)};
  return {section: kept(state, {name: name.replaceAll("_", " "), units, materials: [material], parts: [part]}), template: null, dxf: "", part: 0};
}

// Where the part before it stood, unless that was of something else.
const placed = (state, part) => {
  if (!part || state.template) return {};
  return Object.fromEntries(Object.entries(part).filter(([key]) => ["turn", "mirror"].includes(key)));
};
function kept(state, section) {
  const whole = loads_kept(section, state);
  if (state.section.wishes && !state.section.wishes.size) whole.wishes = state.section.wishes;
  return whole;
}

function picked_part(state, what) {
  const section = structuredClone(state.section), part = {...section.parts[state.part]};
  for (const key of ["profile", "shape", "parameters", "outline", "holes"]) delete part[key];
  section.parts[state.part] = {...part, ...what};
  return {section, template: null};
}

// A whole section of a template's parameters. Materials that were changed stay so, unless it is `anew`.
function of_template(state, template, anew = false) {
  const units = own(state.section), made = build_template(template, factor(SI, units, 1, 0));
  const known = new Map(anew ? [] : state.section.materials.map((m) => [m.name, m]));
  const materials = made.materials.map((name, i) => known.get(name) ?? (anew ? null : state.section.materials[i]) ?? standard_material(name, units));
  const names = new Map(made.materials.map((name, i) => [name, materials[i].name]));
  const named = (list) => list.map((entry) => ({...entry, material: names.get(entry.material)}));
  const section = {...state.section, units, materials, parts: named(made.parts), bars: named(made.bars)};
  if (!made.bars.length) delete section.bars;
  return {section, template, part: 0};
}

// The shape and the parameters that are edited: of the template, or of the part; null where it has an outline.
export function edited(state) {
  if (state.template) return {shape: state.template.name, parameters: state.template.parameters};
  const part = state.section.parts?.[state.part];
  if (!part) return null;
  if (part.shape && shapes.has(part.shape)) return {shape: part.shape, parameters: part.parameters ?? {}};
  const profile = profiles.get(part.profile) ?? by_plain_name(part.profile);
  if (!profile) return null;
  const scale = lengths.get(profile.unit).metres / lengths.get(length_of(state.section)).metres;
  return {shape: profile.shape, parameters: scaled_parameters(profile.shape, profile.parameters, scale), profile: profile.name};
}

// Capitals and blanks do not matter.
const plain = (name) => String(name ?? "").toLowerCase().replace(/\s/g, "");
const by_plain_name = (name) => name ? catalogue.profiles.find((p) => plain(p.name) === plain(name)) : undefined;

// With one parameter changed. A profile becomes the shape that it was of, with its parameters.
export function with_parameter(state, name, value) {
  const now = edited(state), parameters = {...now.parameters};
  if (value === undefined) delete parameters[name];
  else parameters[name] = value;
  if (state.template) return of_template(state, {name: now.shape, parameters});
  const section = structuredClone(state.section), part = section.parts[state.part];
  if (part.profile) {
    delete part.profile;
    if (section.name === now.profile) section.name = `${now.profile}, changed`;
  }
  part.shape = now.shape;
  part.parameters = parameters;
  return {section};
}

export function describe(part) {
  if (part.name) return part.name;
  if (part.profile) return part.profile;
  if (part.shape) return String(part.shape).replaceAll("_", " ");
  return part.outline ? `outline of ${part.outline.length} edges` : "part";
}
