// Materials, parts, bars and the layers of a drawing.
import {make, panel, number_field, text_field, choice, button} from "./dom.js";
import {catalogue} from "./catalogue.js";
import {change, edit_section, state} from "./state.js";
import {describe, standard_material, first_parameters} from "./section.js";
import {length_of, force_of, own, factor} from "./units.js";
import {raised} from "./numbers.js";

const labelled = (words, field, note = null) => make("label", {class: "labelled"}, make("span", {}, words), field, note);
const number = (on, words, options) => {
  const field = number_field(on, {label: words, ...options});
  return labelled(options.unit ? make("span", {}, words, " ", make("small", {class: "unit"}, options.unit)) : words, field.input, field.note);
};
const free_name = (base, taken) => {
  for (let k = 2; ; ++k) if (!taken.includes(`${base} ${k}`)) return `${base} ${k}`;
};

// Where there is one material alone, parts and bars need not name it.
function name_materials(s) {
  for (const entry of [...(s.parts ?? []), ...(s.bars ?? [])]) entry.material ??= s.materials[0].name;
}

// Edits that leave a template what it is: its materials keep what is changed here.
const edit_material = (k, key, value) => edit_section((s) => {
  if (value === undefined) delete s.materials[k][key];
  else s.materials[k][key] = value;
}, `material ${k} ${key}`, {});

// Not to the name of another: what is of each could not be told apart afterwards.
function rename_material(k, name) {
  if (!name || state.section.materials.some((m, i) => i !== k && m.name === name)) return;
  const old = state.section.materials[k].name;
  edit_section((s) => {
    s.materials[k].name = name;
    for (const entry of [...(s.parts ?? []), ...(s.bars ?? [])]) if (entry.material === old) entry.material = name;
    const layers = s.drawing?.layers ?? {};
    for (const [key, use] of Object.entries(layers)) {
      if (use === old) layers[key] = name;
      else if (use?.material === old) use.material = name;
    }
  }, `material ${k} name`, {});
}

export function materials(host) {
  const form = panel(host);
  return {
    show() {
      const list = state.section.materials, unit = length_of(state.section), force = force_of(state.section);
      form.show(`${list.length} ${unit} ${force}`, (on) => [
        ...list.map((_, k) => one(on, k, unit, force)),
        make("div", {class: "buttons"}, button("Add a material", "Add a material", () => edit_section((s) => {
          name_materials(s);
          s.materials.push({...standard_material("S235", own(s)), name: free_name("material", s.materials.map((m) => m.name))});
        }, "", {}))),
      ]);
    },
  };
  function one(on, k, unit, force) {
    const of = () => state.section.materials[k] ?? {}, stress = raised(`${force}/${unit}2`);
    const strength = (side) => (typeof of().strength === "object" ? of().strength?.[side] : of().strength);
    const set_strength = (side, value) => edit_section((s) => {
      const m = s.materials[k], both = typeof m.strength === "object" ? {...m.strength} : {tension: m.strength, compression: m.strength};
      both[side] = value;
      if (value === undefined) delete m.strength;
      else m.strength = both.tension === both.compression || both.tension === undefined || both.compression === undefined ? value : both;
    }, `strength ${k}`, {});
    const used = () => [...(state.section.parts ?? []), ...(state.section.bars ?? [])].some((e) => e.material === of().name) || state.section.materials.length === 1;
    const remove = button("Remove", `Remove material ${k + 1}`, () => edit_section((s) => s.materials.splice(k, 1), "", {}));
    on(() => { remove.disabled = used(); });
    const presets = make("select", {"aria-label": `Take material ${k + 1} from the list`, onchange: () => {
      const name = presets.value, taken = state.section.materials.some((m, i) => i !== k && m.name === name);
      presets.value = "";
      if (!name) return;
      const made = standard_material(name, own(state.section));
      if (taken) made.name = of().name;
      rename_material(k, made.name);
      edit_section((s) => { s.materials[k] = made; }, `material ${k} name`, {});
    }}, make("option", {value: ""}, "from the list …"), catalogue.materials.map((m) => make("option", {value: m.name}, m.name)));
    const title = make("legend", {});
    on(() => { title.textContent = of().name ?? ""; });
    return make("fieldset", {class: "entry"}, title, make("div", {class: "grid"},
      labelled("Name", text_field(on, {name: `material-name-${k}`, label: `name of material ${k + 1}`, get: () => of().name, set: (v) => rename_material(k, v)})),
      labelled("Standard", presets),
      number(on, "E", {name: `E-${k}`, unit: stress, get: () => of().E, set: (v) => edit_material(k, "E", v), step: (v) => 10 ** Math.floor(Math.log10(v || 1) - 1)}),
      number(on, "ν", {name: `nu-${k}`, get: () => of().nu ?? (of().G ? of().E / 2 / of().G - 1 : 0.3), step: () => 0.05, set: (v) => edit_section((s) => {
        s.materials[k].nu = v;
        delete s.materials[k].G;
      }, `nu ${k}`, {})}),
      number(on, "Density", {name: `density-${k}`, unit: "kg/m³", empty: "none", get: () => of().density === undefined ? undefined : of().density / factor({length: "m", force}, {length: unit, force}, -3, 0),
        set: (v) => edit_material(k, "density", v === undefined ? v : Number((v * factor({length: "m", force}, {length: unit, force}, -3, 0)).toPrecision(12))), step: () => 50}),
      make("span", {}),
      number(on, "Strength, tension", {name: `tension-${k}`, unit: stress, empty: "none", get: () => strength("tension"), set: (v) => set_strength("tension", v)}),
      number(on, "compression", {name: `compression-${k}`, unit: stress, empty: "none", get: () => strength("compression"), set: (v) => set_strength("compression", v)})),
    make("div", {class: "buttons"}, remove));
  }
}

const material_options = () => state.section.materials.map((m) => [m.name, m.name]);

export function parts(host) {
  const form = panel(host);
  const edit = (key, value) => edit_section((s) => {
    const part = s.parts[state.part];
    if (value === undefined) delete part[key];
    else part[key] = value;
  }, `part ${key}`);
  return {
    show() {
      const list = state.section.parts ?? [], unit = length_of(state.section);
      form.show(`${list.length} ${unit} ${state.part} ${material_options()}`, (on) => [
        make("ul", {class: "parts", "aria-label": "parts, a later one replaces what it covers"}, list.map((_, k) => make("li", {}, entry(on, k)))),
        make("div", {class: "buttons"},
          button("Add", "Add a part", () => add({shape: "rectangle", parameters: first_parameters("rectangle", state.section), material: state.section.materials[0].name})),
          list[state.part] && button("Duplicate", "Duplicate the part", () => add(moved(list[state.part]))),
          list.length > 1 && button("Remove", "Remove the part", () => {
            const section = structuredClone(state.section);
            section.parts.splice(state.part, 1);
            change({section, template: null, part: Math.max(0, Math.min(state.part, section.parts.length - 1))});
          }),
          list.length > 1 && button("↑", "Move the part up", () => move(-1)), list.length > 1 && button("↓", "Move the part down", () => move(1))),
        list[state.part] ? one(on, unit) : null,
      ]);
    },
  };
  function entry(on, k) {
    const swatch = make("span", {class: "swatch"}), words = make("span", {});
    const chosen = button([swatch, words], "", () => change({part: k}), {"aria-pressed": String(k === state.part), "data-name": `part-${k}`});
    on(() => {
      const part = state.section.parts[k], all = state.section.materials;
      swatch.dataset.material = all.findIndex((m) => m.name === (part.material ?? all[0].name)) % 5;
      words.textContent = ` ${k + 1}  ${describe(part)}`;
      chosen.title = chosen.ariaLabel = `edit part ${k + 1}, ${describe(part)}`;
    });
    return chosen;
  }
  function add(part) {
    const section = structuredClone(state.section);
    const material = section.materials[0].name;
    section.parts = [...(section.parts ?? []).map((p) => ({...p, material: p.material ?? material})), part];
    change({section, template: null, part: section.parts.length - 1});
  }
  // A copy beside it, so that it is seen.
  function moved(part) {
    const copy = structuredClone(part), p = part.parameters ?? {}, wide = p.b ?? p.d ?? 100;
    copy.at = [(part.at?.[0] ?? 0) + wide, part.at?.[1] ?? 0];
    if (part.name) copy.name = free_name(part.name, state.section.parts.map((q) => q.name));
    return copy;
  }
  function move(by) {
    const section = structuredClone(state.section), to = state.part + by;
    if (to < 0 || to >= section.parts.length) return;
    [section.parts[state.part], section.parts[to]] = [section.parts[to], section.parts[state.part]];
    change({section, template: null, part: to});
  }
  function one(on, unit) {
    const of = () => state.section.parts?.[state.part] ?? {}, place = (k) => (v) => edit("at", (of().at ?? [0, 0]).map((x, i) => (i === k ? v : x)));
    const mirror = make("input", {type: "checkbox", "data-name": "mirror", onchange: () => edit("mirror", mirror.checked || undefined)});
    on(() => { mirror.checked = of().mirror === true; });
    return make("div", {class: "grid"},
      labelled("Name", text_field(on, {name: "part-name", label: "name of the part", get: () => of().name, set: (v) => edit("name", v || undefined)})),
      labelled("Material", choice(on, {name: "part-material", label: "material of the part", options: material_options(), get: () => of().material ?? state.section.materials[0].name, set: (v) => edit("material", v)})),
      number(on, "at y", {name: "at-y", unit, get: () => of().at?.[0] ?? 0, set: place(0)}), number(on, "at z", {name: "at-z", unit, get: () => of().at?.[1] ?? 0, set: place(1)}),
      number(on, "Turn", {name: "turn", unit: "°", get: () => of().turn ?? 0, set: (v) => edit("turn", v || undefined), step: () => 5}),
      make("label", {class: "labelled check"}, mirror, make("span", {}, "Mirrored")),
      number(on, "Coupling group", {name: "group", get: () => of().group ?? 1, set: (v) => edit("group", v === 1 ? undefined : v), low: 1}),
      number(on, "Group's factor", {name: "factor", get: () => of().factor ?? 1, set: (v) => edit("factor", v === 1 ? undefined : v), step: () => 0.1, low: 0}));
  }
}

const kind_of = (bar) => (bar.from ? "row" : bar.centre ? "ring" : "one");
export function bars(host) {
  const form = panel(host);
  const NEW = {one: () => ({at: [0, 0]}), row: () => ({from: [-50, 0], to: [50, 0], count: 3}), ring: () => ({centre: [0, 0], radius: 50, count: 6})};
  return {
    show() {
      const list = state.section.bars ?? [], unit = length_of(state.section);
      form.show(`${list.map(kind_of)} ${list.map((b) => "area" in b)} ${unit} ${material_options()}`, (on) => [
        ...list.slice(0, 60).map((bar, k) => one(on, k, kind_of(bar), "area" in bar, unit)),
        list.length > 60 ? make("p", {class: "hint"}, `and ${list.length - 60} more, as JSON below`) : null,
        make("div", {class: "buttons"}, ["one", "row", "ring"].map((kind) => button(kind === "one" ? "Add a bar" : `Add a ${kind}`, `Add ${kind === "one" ? "one bar" : `a ${kind} of bars`}`, () => edit_section((s) => {
          const mm = factor({length: "mm", force: "N"}, own(s), 1, 0), made = NEW[kind]();
          for (const key of ["from", "to"]) if (made[key]) made[key] = made[key].map((x) => x * mm);
          if (made.radius) made.radius *= mm;
          const steel = s.materials.find((m) => m.name === "B500") ?? standard_material("B500", own(s));
          if (!s.materials.some((m) => m.name === steel.name)) {
            name_materials(s);
            s.materials.push(steel);
          }
          s.bars = [...(s.bars ?? []), {...made, diameter: 20 * mm, material: steel.name}];
        })))),
      ]);
    },
  };
  function one(on, k, kind, area, unit) {
    const of = () => state.section.bars?.[k] ?? {}, set = (key, at) => (v) => edit_section((s) => {
      const bar = s.bars[k];
      if (at !== undefined) (bar[key] ??= [0, 0])[at] = v;
      else if (v === undefined) delete bar[key];
      else bar[key] = v;
    }, `bar ${k} ${key} ${at}`);
    const field = (words, key, at, more = {}) => number(on, words, {name: `bar-${k}-${key}-${at ?? ""}`, unit, get: () => (at === undefined ? of()[key] : of()[key]?.[at]), set: set(key, at), ...more});
    const places = {one: ["at"], row: ["from", "to"], ring: ["centre"]}[kind];
    const point = make("input", {type: "checkbox", "data-name": `bar-${k}-point`, onchange: () => set("as_point")(point.checked || undefined)});
    on(() => { point.checked = of().as_point === true; });
    const remove = button("Remove", `Remove bars ${k + 1}`, () => edit_section((s) => {
      s.bars.splice(k, 1);
      if (!s.bars.length) delete s.bars;
    }));
    return make("fieldset", {class: "entry"}, make("legend", {}, `${k + 1}  ${{one: "one bar", row: "a row", ring: "a ring"}[kind]}`), make("div", {class: "grid"},
      places.flatMap((key) => [field(`${key} y`, key, 0), field(`${key} z`, key, 1)]),
      kind === "ring" ? [field("radius", "radius"), field("start", "start", undefined, {unit: "°", empty: "0"})] : null,
      kind === "one" ? null : field("count", "count", undefined, {unit: "", low: 2}),
      area ? field("area", "area", undefined, {unit: raised(`${unit}2`)}) : field("diameter", "diameter"),
      labelled("Material", choice(on, {name: `bar-${k}-material`, label: `material of bars ${k + 1}`, options: material_options(), get: () => of().material ?? "", set: set("material")})),
      make("label", {class: "labelled check"}, point, make("span", {}, "As points"))), make("div", {class: "buttons"}, remove));
  }
}

// Layers of a drawing that has been dropped: of which material each is, or that it is left out.
export function layers(host) {
  const form = panel(host);
  return {
    show() {
      host.closest("details").hidden = !state.dxf;
      if (!state.dxf) return form.show("none", () => []);
      const known = layers_of(state.dxf), options = [["", "left out"], ...material_options()];
      form.show(`${known} ${options}`, (on) => known.map((layer) => labelled(layer, choice(on, {name: `layer-${layer}`, label: `material of layer ${layer}`, options,
        get: () => state.section.drawing?.layers?.[layer] ?? "", set: (v) => edit_section((s) => {
          s.drawing ??= {};
          s.drawing.layers ??= {};
          if (v) s.drawing.layers[layer] = v;
          else delete s.drawing.layers[layer];
        })}))));
    },
  };
}

// Names of the layers that the text of a drawing has lines on.
const LINES = /^(LINE|ARC|CIRCLE|ELLIPSE|LWPOLYLINE|POLYLINE|INSERT|SPLINE)$/;
export function layers_of(dxf) {
  const lines = dxf.split(/\r\n|\n|\r/), names = new Set();
  let inside = false, entity = "";
  for (let k = 0; k + 1 < lines.length; k += 2) {
    const code = lines[k].trim(), value = lines[k + 1].trim();
    if (code === "2" && lines[k - 1]?.trim() === "SECTION") inside = value === "ENTITIES" || value === "BLOCKS";
    if (code === "0") entity = value;
    if (inside && code === "8" && LINES.test(entity)) names.add(value);
  }
  return [...names];
}
