// The page: the state goes to the forms and as a request to the server, its answer to the picture and the values.
import {$, make, panel, text_field, choice, symbol} from "./dom.js";
import {catalogue, shapes} from "./catalogue.js";
import {state, change, listen, see, open, undo, redo, can_undo, can_redo, follow_address, FIRST} from "./state.js";
import {read_link} from "./link.js";
import {first_section, is_sound} from "./section.js";
import {follow} from "./answers.js";
import {picture} from "./picture.js";
import {LOADS_OF} from "./fields.js";
import {search_box, dimensions} from "./shape_panel.js";
import {materials, parts, bars, layers} from "./parts_panel.js";
import {json_panel} from "./json_panel.js";
import {values_panel, missing_of} from "./values_panel.js";
import {loads_panel} from "./loads_panel.js";
import {take_drops, export_as, copy_link} from "./files.js";
import {legend} from "./legend.js";
import {factor, own, load_unit, load_value, power_of_load, section_in, stress_unit, SYSTEMS} from "./units.js";
import {bound_text, figures, minus, raised, short} from "./numbers.js";

let answer = null, fault = null, quiet = 0, hide = 0;

// What has happened, for the eye for some seconds and for screen readers.
function say(words, wrong = false) {
  $("told").textContent = words;
  $("told").className = wrong ? "told wrong" : "told";
  clearTimeout(hide);
  hide = setTimeout(() => { $("told").textContent = ""; }, wrong ? 12000 : 5000);
}

const view = picture({hover: tell_place});
const kinds = search_box($("search")), forms = [dimensions($("dimensions")), materials($("materials")), parts($("parts")), bars($("bars")), layers($("layers"))];
const json = json_panel($("json-host")), values = values_panel(say), loads = loads_panel();

// ---- the bar of the picture

const FIELDS = [["outline", "Outline"], ["mesh", "Mesh"], ["warping", "Warping"], ["axial", "Axial σ"], ["shear", "Shear τ"], ["mises", "von Mises"]];
const SWITCHES = [["centroid", "Centroid"], ["shear_centre", "Shear centre"], ["principal", "Principal axes"], ["plastic", "Plastic axes"]];
const refreshers = [];
const on = (refresh) => refreshers.push(refresh);

$("fields").append(...FIELDS.map(([value, words]) => {
  const input = make("input", {type: "radio", name: "field", value, onchange: () => see({field: value, load: load_for(value)})});
  on(() => { input.checked = state.see.field === value; });
  return make("label", {}, input, make("span", {}, words));
}));
$("switches").append(...[...SWITCHES, ["arrows", "Arrows"]].map(([key, words]) => {
  const input = make("input", {type: "checkbox", onchange: () => see({[key]: input.checked})}), label = make("label", {}, input, make("span", {}, words));
  on(() => {
    input.checked = state.see[key];
    label.hidden = key === "arrows" && state.see.field !== "shear";
  });
  return label;
}));

// A load that this field can show: the chosen one, else the first load set, else the usual unit load.
function load_for(field) {
  const {load} = state.see, list = state.section.loads ?? [];
  if (!(field in LOADS_OF)) return load;
  if (load.startsWith("#") ? list[Number(load.slice(1))] : LOADS_OF[field].includes(load)) return load;
  return list.length ? "#0" : {axial: "My", shear: "Vz", mises: "My"}[field];
}
const load_choice = panel($("load"));
function show_loads() {
  const {field} = state.see, stresses = field in LOADS_OF, list = state.section.loads ?? [];
  $("load").hidden = !stresses;
  if (!stresses) return;
  const options = [...list.map((l, k) => [`#${k}`, l.name ?? `load ${k + 1}`]),
    ...LOADS_OF[field].map((key) => [key, `${key} = 1 ${raised(load_unit(state.units, key).text)}`])];
  load_choice.show(JSON.stringify(options), (refresh) => make("label", {}, make("span", {class: "away"}, "Loads of the stresses"),
    choice(refresh, {name: "load-choice", label: "loads of the stresses", options, get: () => load_for(state.see.field), set: (load) => see({load})})));
}

// The loads of the picture in the section's own units.
function forces() {
  const load = load_for(state.see.field), section = state.section;
  if (!load.startsWith("#")) return {[load]: factor(load_unit(state.units, load), own(section), power_of_load(load), 1)};
  const set = section.loads[Number(load.slice(1))];
  return Object.fromEntries(catalogue.loads.map(({key}) => [key, load_value(set[key], key, section) ?? 0]));
}

// ---- picture

const value_of = (key) => answer?.values[key]?.value ?? null;
function marks() {
  const from = {length: answer.units.length, force: answer.units.force}, back = factor(from, drawn_own, 1, 0), [oy, oz] = answer.view.origin;
  const at = (y, z) => (value_of(y) === null || value_of(z) === null ? null : [value_of(y) * back - oy, value_of(z) * back - oz]);
  // Of both senses of the moment, where they differ.
  const both = (key, o) => [key, `${key}_neg`].filter((k) => value_of(k) !== null).map((k) => value_of(k) * back - o);
  const plastic = {z: both("z_pl", oz), y: both("y_pl", oy)};
  return {centroid: at("y_C", "z_C"), shear_centre: at("y_M", "z_M"), angle: value_of("alpha") === null ? null : value_of("alpha") * Math.PI / 180,
    plastic};
}
let drawn_own = {length: "mm", force: "N"}, unit_words = {};
function draw() {
  if (!answer) return;
  const {field} = state.see, to = state.units, length = factor(drawn_own, to, 1, 0);
  const of_field = field === "warping" ? {unit: raised(`${to.length}2`), factor: length ** 2} : {unit: stress_unit(to), factor: factor(drawn_own, to, -2, 1)};
  unit_words = {...of_field, scale: {length, unit: to.length}};
  const shown = view.show(field, field in LOADS_OF ? forces() : {}, state.see, unit_words);
  legend($("legend"), shown, FIELDS.find(([key]) => key === field)?.[1], of_field.unit);
  $("lines").setAttribute("aria-label", `picture of the section, ${field === "mises" ? "von Mises stress" : field}${shown?.field ? `, from ${short(shown.field.least * of_field.factor)} to ${short(shown.field.most * of_field.factor)} ${of_field.unit}` : ""}. Arrows move it, plus and minus zoom, 0 fits, C puts a crosshair that tells the values.`);
}

function tell_place(seen, by_key) {
  const host = $("place");
  host.setAttribute("aria-live", by_key ? "polite" : "off");
  if (!seen || !answer) return host.replaceChildren();
  const [oy, oz] = answer.view.origin, {length, unit} = unit_words.scale, {place, at} = seen;
  const size = Math.max(...answer.view.box.map(Math.abs)), told = (x) => short(Math.abs(x) < 1e-9 * size ? 0 : x * length);
  const words = [`y ${told(place[0] + oy)}  z ${told(place[1] + oz)} ${unit}`];
  if (at) {
    words.push(answer.view.materials[at.material] ?? "");
    if (at.value !== null) words.push(at.near_sharp ? "near a sharp corner: no limit" : `${state.see.field === "mises" ? "von Mises" : {axial: "σ", shear: "τ", warping: "ω"}[state.see.field] ?? ""} ${short(at.value)} ${unit_words.unit}`);
    if (at.tau) words.push(`τy ${short(at.tau[0] * unit_words.factor)}  τz ${short(at.tau[1] * unit_words.factor)}`);
  } else words.push("outside");
  host.replaceChildren(...words.map((w) => make("span", {}, w)));
}

// ---- answers

const request = (view) => ({section: state.section, ...(state.dxf && {dxf: state.dxf}), units: state.units, ...(view && {view, loads: "peaks"})});
const changed = follow({
  request: (view) => { asked_own = own(state.section); return request(view); },
  working: (busy) => document.documentElement.toggleAttribute("data-busy", busy),
  shown(next, kind, since, more_to_come) {
    answer = next;
    fault = null;
    drawn_own = asked_own;
    view.take(answer.view, marks(), kind === "full");
    draw();
    performance.mark("picture");
    const root = document.documentElement.dataset;
    if (kind === "draft") root.milliseconds = (performance.now() - since).toFixed(1);
    root.view = kind;
    root.pictures = String(Number(root.pictures ?? 0) + 1);
    values.show(answer);
    if (!more_to_come) show_answer(kind);
  },
  wrong(error) {
    fault = {at: "", remedy: "", ...error};
    document.documentElement.dataset.view = "wrong";
    show_fault();
    loads.show(null, fault);
    json.mark(fault);
  },
});
let asked_own = drawn_own;

function show_answer(kind) {
  show_fault();
  loads.show(answer, null);
  json.mark(null);
  show_notes(kind);
  clearTimeout(quiet);
  quiet = setTimeout(announce, 900);
}
function show_fault() {
  $("fault").hidden = !fault;
  for (const old of ["picture", "values-box", "notes"]) $(old).classList.toggle("dimmed", Boolean(fault));
  if (!fault) return;
  const words = fault.remedy ? `${fault.message}; ${fault.remedy}` : fault.message;
  $("fault").replaceChildren(make("strong", {}, fault.kind === "lost" ? "No answer" : fault.at || "Not calculated"), ` ${words}`);
  // The field that the message speaks of.
  const named = /^(\w+)\b/.exec(fault.message)?.[1];
  $("dimensions").querySelectorAll("[data-fault]").forEach((e) => e.removeAttribute("data-fault"));
  if (/parameters$/.test(fault.at)) $("dimensions").querySelector(`[data-name="dimension-${CSS.escape(named ?? "")}"]`)?.setAttribute("data-fault", "");
}
function show_notes(kind) {
  $("dimensions").querySelectorAll("[data-fault]").forEach((e) => e.removeAttribute("data-fault"));
  const a = answer.accuracy, notes = [...(answer.notes ?? [])];
  if (kind === "full" && !a.met) notes.push(`the accuracy of ${short(a.wished)} was not reached: bounds are up to ${a.reached === null ? "unknown" : bound_text(1, a.reached)}`);
  for (const load of answer.loads ?? []) if (load.warning) notes.push(`${load.name}: ${load.warning}`);
  if (kind === "full") for (const [reason, symbols] of missing_of(answer.values)) notes.push([`${reason}: `, symbols.map((s, k) => [k ? " " : "", symbol(s)])].flat(3));
  if (kind === "full" || notes.length) $("notes").replaceChildren(...notes.map((n) => make("li", {}, n)));
  $("notes").hidden = !$("notes").children.length;
  $("accuracy").textContent = `${a.nodes} nodes, ${a.levels} levels${a.reached === null ? "" : `; bounds up to ${bound_text(1, a.reached)}`}${answer.materials.length > 1 ? `; moduli of ${answer.reference}` : ""}`;
}
function announce() {
  if (!answer || fault) {
    $("spoken").textContent = fault ? `Not calculated. ${fault.at} ${fault.message}. ${fault.remedy}` : "";
    return;
  }
  const told = ["A", "Iy", "Iz", "It", "Wel_y"].filter((key) => value_of(key) !== null).map((key) => {
    const v = answer.values[key];
    return `${key.replace("_", " ")} ${figures(v.value, v.bound)} ${raised(v.unit)}`;
  });
  const used = Math.max(...(answer.loads ?? []).flatMap((l) => l.materials.map((m) => m.utilisation?.value ?? 0)), 0);
  $("spoken").textContent = `${answer.name || "Section"}: ${told.join(", ")}${used ? `. ${short(100 * used, 3)} % of the strength used` : ""}`;
}

// ---- the bar on top

$("name").append(text_field(on, {name: "name", label: "name of the section", get: () => state.section.name ?? "", placeholder: "name of the section",
  set: (name) => change({section: {...state.section, name: name || undefined}}, "name")}));
const systems = SYSTEMS.map(([l, f]) => [`${l} ${f}`, `${l}, ${f}`]);
const pair = (text) => { const [length, force] = text.split(" "); return {length, force}; };
$("units").append(make("label", {}, make("span", {}, "Units"), choice(on, {name: "units", label: "units of the values", options: systems, get: () => `${state.units.length} ${state.units.force}`, set: (v) => change({units: pair(v)})})));
$("own-units").append(make("label", {class: "labelled side"}, make("span", {}, "Typed in"), choice(on, {name: "own-units", label: "units of the section's own numbers", options: [...systems, ["cm N", "cm, N"], ["m N", "m, N"]],
  get: () => `${own(state.section).length} ${own(state.section).force}`, set: (v) => {
    const to = pair(v), scale = factor(own(state.section), to, 1, 0), t = state.template;
    change({section: section_in(state.section, to), template: t && {name: t.name, parameters: Object.fromEntries(shapes.get(t.name).parameters.filter((p) => p.name in t.parameters)
      .map((p) => [p.name, /length|offset/.test(p.kind) ? Number((t.parameters[p.name] * scale).toPrecision(12)) : t.parameters[p.name]]))}});
  }})));
$("theme").append(choice(on, {name: "theme", label: "light or dark", options: [["auto", "Auto"], ["light", "Light"], ["dark", "Dark"]], get: () => state.theme, set: (theme) => change({theme})}));
for (const key of ["project", "by"])
  $(`report-${key}`).append(text_field(on, {name: `report-${key}`, label: key === "by" ? "by, on the report" : "project, on the report", get: () => state.report[key], set: (text) => change({report: {...state.report, [key]: text}})}));
for (const b of document.querySelectorAll("[data-form]")) b.addEventListener("click", () => { $("export").open = false; export_as(b.dataset.form, request(), say); });
$("link").addEventListener("click", () => copy_link(say));
$("undo").addEventListener("click", undo);
$("redo").addEventListener("click", redo);
$("fit").addEventListener("click", () => view.fit());
$("zoom-in").addEventListener("click", () => view.zoom(1.25));
$("zoom-out").addEventListener("click", () => view.zoom(0.8));
addEventListener("keydown", (event) => {
  if (event.key === "Escape" && $("export").open) { $("export").open = false; $("export").querySelector("summary").focus(); }
  if (!(event.ctrlKey || event.metaKey) || event.altKey || event.target.id === "json") return;
  const key = event.key.toLowerCase();
  if (key === "z" || key === "y") {
    event.preventDefault();
    if (key === "y" || event.shiftKey) redo();
    else undo();
  }
});
addEventListener("pointerdown", (event) => { if (!$("export").contains(event.target)) $("export").open = false; });
$("json-host").closest("details").addEventListener("toggle", () => { json.show(); json.mark(fault); });
matchMedia("(prefers-color-scheme: dark)").addEventListener("change", () => draw());

// ---- the state shown

function show(how) {
  document.documentElement.dataset.theme = state.theme;
  kinds.refresh();
  for (const form of forms) form.show();
  for (const refresh of refreshers) refresh();
  show_loads();
  json.show();
  loads.show(null, fault);
  if (answer) values.show(answer);
  $("undo").disabled = !can_undo();
  $("redo").disabled = !can_redo();
  document.title = `${state.section.name || "Section"} – Velquor`;
  if (how === "drawn") performance.mark("change");
  if (how === "drawn" || answer?.units.length !== state.units.length || answer?.units.force !== state.units.force) changed();
  if (answer && how === "seen") draw();
}

// A state that can be shown: what a link holds may be anything.
function checked(next) {
  if (!is_sound(next.section)) throw new Error("it holds no section");
  if (next.template && !(shapes.get(next.template.name)?.whole && typeof next.template.parameters === "object" && next.template.parameters)) next.template = null;
  if (!FIELDS.some(([key]) => key === next.see.field)) next.see.field = "outline";
  next.see.load = String(next.see.load);
  if (!SYSTEMS.some(([l, f]) => l === next.units.length && f === next.units.force)) next.units = FIRST.units;
  if (!["auto", "light", "dark"].includes(next.theme)) next.theme = "auto";
  next.part = Math.max(0, Math.min(Math.floor(next.part), (next.section.parts ?? []).length - 1)) || 0;
  return next;
}
const start = () => ({...FIRST, section: first_section()});
const no_link = (error) => say(`this link holds no section: ${error.message || "it is damaged"}. IPE 300 is shown instead.`, true);
async function first_state() {
  if (!location.hash) return start();
  try {
    return checked(await read_link(location.hash, FIRST));
  } catch (error) {
    no_link(error);
    return start();
  }
}
listen((_, how) => show(how));
take_drops(say);
open(await first_state());
follow_address((error) => { no_link(error); open(start()); }, checked);
