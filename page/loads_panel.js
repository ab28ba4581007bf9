// Load sets, and what they do: the largest stresses in each material and how much of its strength they use.
import {$, make, panel, number_field, text_field, button, symbol} from "./dom.js";
import {catalogue} from "./catalogue.js";
import {edit_section, see, state} from "./state.js";
import {factor, own, load_unit, load_value, power_of_load, stress_unit, tidy} from "./units.js";
import {raised, short, typed} from "./numbers.js";

const ROWS = [["axial_largest", "σ, largest"], ["axial_smallest", "σ, smallest"], ["shear", "τ"], ["von_mises", "von Mises"], ["utilisation", "of the strength"]];
const free_name = (loads) => {
  for (let k = loads.length + 1; ; ++k) if (!loads.some((l) => l.name === `load ${k}`)) return `load ${k}`;
};

export function loads_panel() {
  const form = panel($("loads"));
  let results = [], failed = false;
  return {
    show(answer, error) {
      if (answer) results = answer.loads ?? [];
      failed = Boolean(error);
      const list = state.section.loads ?? [], units = state.units;
      form.show(`${list.length} ${units.length} ${units.force}`, (on) => [
        ...list.map((_, k) => one(on, k, units)),
        make("div", {class: "buttons"}, button("Add a load set", "Add a load set", () => {
          const name = free_name(state.section.loads ?? []);
          edit_section((s) => { s.loads = [...(s.loads ?? []), {name, My: `10 ${load_unit(units, "My").text.replace(" ", "")}`}]; }, "", {});
          if (state.see.field === "outline" || state.see.field === "mesh") see({field: "mises", load: `#${(state.section.loads.length - 1)}`});
          else see({load: `#${state.section.loads.length - 1}`});
        })),
      ]);
    },
  };

  function one(on, k, units) {
    const of = () => state.section.loads?.[k] ?? {}, table = make("table", {class: "stresses"});
    const edit = (key, value) => edit_section((s) => {
      if (value === undefined) delete s.loads[k][key];
      else s.loads[k][key] = value;
    }, `load ${k} ${key}`, {});
    const fields = catalogue.loads.map(({key, meaning}) => {
      const unit = load_unit(units, key), in_it = () => factor(own(state.section), unit, power_of_load(key), 1);
      const field = number_field(on, {name: `load-${k}-${key}`, label: `${key}, ${meaning}`, unit: unit.text, empty: "0",
        get: () => {
          if (of()[key] === undefined) return undefined;
          const value = load_value(of()[key], key, state.section);
          return value === null ? undefined : tidy(value * in_it());
        },
        set: (v) => edit(key, v === undefined ? v : `${typed(v)} ${unit.text.replace(" ", "")}`), step: (v) => 10 ** Math.floor(Math.log10(Math.abs(v) || 10) - 1) * 1});
      return make("label", {class: "load", title: meaning}, symbol(key), field.input, make("span", {class: "unit"}, raised(unit.text)), field.note);
    });
    on(() => result(table, of(), results[k]));
    const look = button("Show", `Show the stresses of load set ${k + 1}`, () => see({load: `#${k}`, field: ["axial", "shear", "mises"].includes(state.see.field) ? state.see.field : "mises"}));
    return make("fieldset", {class: "entry"}, make("legend", {class: "away"}, `Load set ${k + 1}`),
      make("div", {class: "load-head"}, text_field(on, {name: `load-name-${k}`, label: `name of load set ${k + 1}`, get: () => of().name ?? `load ${k + 1}`, set: (v) => edit("name", v || undefined)}),
        look, button("Remove", `Remove load set ${k + 1}`, () => {
          edit_section((s) => {
            s.loads.splice(k, 1);
            if (!s.loads.length) delete s.loads;
          }, "", {});
          if (state.see.load.startsWith("#")) see({load: state.section.loads?.length ? "#0" : "My"});
        })),
      make("div", {class: "loads"}, fields), table);
  }

  function result(table, load, found) {
    const fits = found && (load.name === undefined || found.name === load.name);
    table.classList.toggle("old", failed || !fits);
    if (!fits) return;
    const stress = stress_unit(state.units);
    const cell = (peak, share) => {
      if (!peak) return make("td", {}, "–");
      const value = peak.value === null ? "–" : share ? `${short(100 * peak.value, 3)} %` : short(peak.value);
      const over = share && peak.value > 1, sharp = peak.unlimited_at;
      return make("td", {class: over ? "over" : "", title: `${peak.at ? `at y ${short(peak.at[0])}, z ${short(peak.at[1])}` : ""}${sharp ? `; no limit at the sharp corner ${short(sharp[0])}, ${short(sharp[1])}` : ""}`},
        value, sharp ? make("abbr", {title: "no limit at a sharp corner; this is elsewhere"}, "*") : "", over ? make("span", {class: "words"}, " exceeded") : "",
        share && peak.value !== null ? make("meter", {min: 0, max: 1, high: 0.999, value: Math.min(1, peak.value), "aria-label": "share of the strength"}) : "");
    };
    table.replaceChildren(make("caption", {class: "away"}, `Largest stresses of ${load.name ?? "the load set"}`),
      make("thead", {}, make("tr", {}, make("th", {scope: "col"}, stress), found.materials.map((m) => make("th", {scope: "col"}, m.name)))),
      make("tbody", {}, ROWS.map(([key, words]) => make("tr", {"data-key": key}, make("th", {scope: "row"}, words), found.materials.map((m) => cell(m[key], key === "utilisation"))))));
    const notes = [found.warning, found.materials.some((m) => m.von_mises?.unlimited_at || m.shear?.unlimited_at) ? "* without limit at a sharp corner, elsewhere as told: give the corner its fillet to know what is there" : ""].filter(Boolean);
    if (notes.length) table.append(make("tfoot", {}, notes.map((n) => make("tr", {}, make("td", {colspan: 1 + found.materials.length, class: "hint"}, n)))));
  }
}
