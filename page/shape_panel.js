// Which shape or profile, with a search, and its dimensions: sketch, fields, sliders.
import {make, panel, number_field, symbol} from "./dom.js";
import {catalogue, shapes} from "./catalogue.js";
import {change, state} from "./state.js";
import {edited, picked_profile, picked_shape, with_parameter, describe} from "./section.js";
import {length_of} from "./units.js";
import {sketch} from "./sketch.js";
import {parameter_symbol, typed} from "./numbers.js";

const MOST = 60;  // options at a time
const plain = (text) => text.toLowerCase().replace(/[\s_]+/g, "");
const ENTRIES = [
  ...catalogue.shapes.map((s) => ({kind: "shape", name: s.name, words: s.name.replaceAll("_", " "), more: s.meaning.split(";")[0]})),
  ...catalogue.profiles.map((p) => ({kind: "profile", name: p.name, words: p.name, more: p.standard})),
].map((entry) => ({...entry, key: plain(entry.words), about: plain(entry.more)}));

// First those that begin with what was typed, then those that have it, then those whose meaning has it.
function found(text) {
  const key = plain(text);
  if (!key) return ENTRIES;
  const rank = (e) => (e.key === key ? 0 : e.key.startsWith(key) ? 1 : e.key.includes(key) ? 2 : e.about.includes(key) && e.kind === "shape" ? 3 : 9);
  return ENTRIES.map((e) => [rank(e), e]).filter(([r]) => r < 9).sort((a, b) => a[0] - b[0]).map(([, e]) => e);
}

export function search_box(host) {
  const list = make("ul", {role: "listbox", id: "kinds", "aria-label": "profiles and shapes", hidden: true});
  const input = make("input", {type: "text", id: "kind", role: "combobox", "aria-expanded": "false", "aria-controls": "kinds", "aria-autocomplete": "list",
    autocomplete: "off", spellcheck: "false", placeholder: "IPE 300, HEB, ring, rc …"});
  let options = [], active = -1;
  function show(text) {
    options = found(text).slice(0, MOST);
    active = text && options.length ? 0 : -1;
    list.replaceChildren(...options.map((e, k) => make("li", {role: "option", id: `kind-${k}`, "aria-selected": "false",
      onpointerdown: (event) => { event.preventDefault(); pick(e); }}, make("span", {}, e.words), make("small", {}, e.more))));
    if (!options.length) list.replaceChildren(make("li", {class: "none", role: "option", "aria-disabled": "true", "aria-selected": "false"}, "nothing of this name"));
    list.hidden = false;
    input.setAttribute("aria-expanded", "true");
    mark();
  }
  function mark() {
    [...list.children].forEach((li, k) => li.setAttribute("aria-selected", String(k === active)));
    if (active >= 0) list.children[active].scrollIntoView({block: "nearest"});
    if (active >= 0) input.setAttribute("aria-activedescendant", `kind-${active}`);
    else input.removeAttribute("aria-activedescendant");
  }
  function close() {
    list.hidden = true;
    input.setAttribute("aria-expanded", "false");
    input.removeAttribute("aria-activedescendant");
  }
  function pick(entry) {
    close();
    change(entry.kind === "profile" ? picked_profile(state, entry.name) : picked_shape(state, entry.name));
    refresh(true);
  }
  input.addEventListener("input", () => show(input.value));
  input.addEventListener("focus", () => input.select());
  input.addEventListener("click", () => { if (list.hidden) show(""); });
  input.addEventListener("blur", () => { close(); refresh(true); });
  input.addEventListener("keydown", (event) => {
    if (event.key === "ArrowDown" || event.key === "ArrowUp") {
      event.preventDefault();
      if (list.hidden) return show("");
      active = (active + (event.key === "ArrowDown" ? 1 : -1) + options.length) % Math.max(1, options.length);
      mark();
    } else if (event.key === "Enter" && !list.hidden && options[active]) {
      event.preventDefault();
      pick(options[active]);
    } else if (event.key === "Escape") {
      close();
      refresh(true);
    }
  });
  function refresh(force = false) {
    if (!force && !list.hidden) return;
    const now = edited(state), part = state.section?.parts?.[state.part];
    input.value = now ? now.profile ?? now.shape.replaceAll("_", " ") : part ? describe(part) : "";
  }
  host.append(make("label", {for: "kind"}, "Profile or shape"), make("div", {class: "combo"}, input, list));
  return {refresh};
}

// Ends of a slider: a round number about twice of what stands there when it is made.
function round_up(x) {
  const ten = 10 ** Math.floor(Math.log10(x));
  return [1, 1.5, 2, 3, 4, 5, 6, 8, 10].find((k) => k * ten >= x * 0.9999) * ten;
}
function reach_of(parameter, value, all) {
  if (parameter.kind === "sides") return {low: 3, high: Math.max(24, value), step: 1};
  if (parameter.kind === "bars") return {low: 0, high: Math.max(20, 2 * value), step: 1};
  if (parameter.kind === "ratio") return {low: 0, high: 0.3, step: 0.005};
  const largest = Math.max(...Object.values(all).filter((v) => Number.isFinite(v)), 1e-9);
  const high = round_up(2 * (value > 0 ? value : largest / 10)), step = 10 ** Math.floor(Math.log10(high / 100));
  if (parameter.kind === "offset") return {low: -round_up(largest), high: round_up(largest), step};
  return {low: parameter.kind === "optional length" ? 0 : step, high, step};
}

export function dimensions(host) {
  const box = make("div", {}), rows = make("div", {class: "dimensions"}), told = make("p", {class: "hint"});
  host.append(box, rows, told);
  const form = panel(rows), parameters_of = () => { const e = edited(state); return e && {...e, bars: state.template ? state.section.bars : []}; };
  const set = (name, value) => change(with_parameter(state, name, value), `dimension ${name}`);
  let origin = "";  // the profile that the fields were made for: they stay when it becomes its shape, under a slider that is pulled
  const drawn = sketch(box, {get: parameters_of, set, most: () => 1e6});
  return {
    show() {
      const now = edited(state), unit = length_of(state.section);
      drawn.draw();
      told.textContent = now?.profile
        ? `${now.profile}: the fields hold its table's values. When one is changed, the part becomes the shape “${now.shape.replaceAll("_", " ")}” with these.`
        : now ? "" : state.dxf ? "The section is that of the drawing." : state.section.parts?.[state.part]?.outline ? "This part is drawn by points: edit them in the section file, below."
          : "This part is of no shape or profile that is known: pick one, or see the section file, below.";
      if (!now) return form.show("none", () => []);
      origin = now.profile ?? origin;
      const key = `${now.shape} ${origin} ${unit} ${state.part} ${Boolean(state.template)}`;
      form.show(key, (on) => shapes.get(now.shape).parameters.map((p) => row(on, p, unit)));
    },
  };

  function row(on, parameter, unit) {
    const {name, meaning, kind} = parameter, get = () => edited(state)?.parameters[name];
    const in_unit = /length|offset/.test(kind) ? unit : "";
    let reach = reach_of(parameter, get() ?? parameter.standard, edited(state).parameters);
    const field = number_field(on, {name: `dimension-${name}`, label: `${name}, ${meaning}`, unit: in_unit, get, set: (v) => set(name, v),
      step: () => reach.step, empty: parameter.required ? null : typed(parameter.standard)});
    const slider = make("input", {type: "range", "data-name": `slider-${name}`, "aria-label": `${name}, ${meaning}, slider`, oninput: () => set(name, Number(slider.value))});
    on(() => {
      const value = get() ?? parameter.standard;
      // Also where a number was typed that left it too long to be of use; not under a hand that pulls it.
      const useless = value > 0 && (reach.low < 0 || value < reach.high / 100) && document.activeElement !== slider && /length$/.test(kind);
      if (value > reach.high || value < reach.low || useless) {
        reach = reach_of(parameter, value, edited(state).parameters);
        reach.low = Math.min(reach.low, value);
      }
      slider.min = reach.low;
      slider.max = reach.high;
      slider.step = /sides|bars/.test(kind) ? 1 : reach.step / 2;
      if (Number(slider.value) !== value) slider.value = value;
      slider.setAttribute("aria-valuetext", `${typed(value)} ${in_unit}`);
    });
    return make("div", {class: "row"}, make("span", {class: "name", title: meaning}, symbol(name, parameter_symbol(name))), slider,
      make("span", {class: "with-unit"}, field.input, make("span", {class: "unit"}, in_unit)), make("small", {class: "meaning"}, meaning), field.note);
  }
}
