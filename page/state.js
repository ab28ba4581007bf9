// The state of the page: what is drawn, what is to be seen, and how one came here. It is never changed in place.
//   section   in the form of a section file            template  {name, parameters}: a whole section made of these
//   dxf       text of a drawing, or ""                  part      that is being edited, from 0
//   see       what the picture shows                    units     of values, {length, force}
import {read_link, write_link} from "./link.js";

const FIRST_SEEN = {
  field: "outline", load: "My", centroid: true, shear_centre: true, principal: false, plastic: false, arrows: true,
};
export const FIRST = {
  section: null, template: null, dxf: "", part: 0, see: FIRST_SEEN, units: {length: "cm", force: "kN"}, all: false,
  theme: "auto", report: {project: "", by: ""},
};

export let state = FIRST;
const DRAWN = ["section", "template", "dxf", "part"];  // what undo brings back
const MOST_STEPS = 200, MERGED = 1000;                  // steps; milliseconds
let past = [], future = [], last = {key: "", at: 0};
const listeners = [];

export const listen = (listener) => listeners.push(listener);
const tell = (how) => listeners.forEach((listener) => listener(state, how));
const drawn = (s) => Object.fromEntries(DRAWN.map((key) => [key, s[key]]));
const differs = (a, b) => DRAWN.slice(0, 3).some((key) => a[key] !== b[key]);

// Keys of the state that change. Changes with the same `merge` within a second are one step of undo.
export function change(next, merge = "") {
  const before = state, now = performance.now();
  state = {...state, ...next};
  if (differs(before, state)) {
    if (!merge || merge !== last.key || now - last.at > MERGED) past = [...past.slice(-MOST_STEPS), drawn(before)];
    future = [];
    last = {key: merge, at: now};
  }
  tell(differs(before, state) ? "drawn" : "seen");
}

// The section changed by `edit`, which gets a copy of its own.
export function edit_section(edit, merge = "", more = {template: null}) {
  const section = structuredClone(state.section);
  edit(section);
  change({section, ...more}, merge);
}

// What is to be seen of a section that brings load sets: the first of them, as in the command's pictures.
export const first_load = (section) => section.loads?.length ? {see: {...state.see, load: "#0"}} : {};

export const see = (next) => change({see: {...state.see, ...next}});
export const can_undo = () => past.length > 0;
export const can_redo = () => future.length > 0;

function step(from, to) {
  if (!from.length) return;
  to.push(drawn(state));
  state = {...state, ...from.pop()};
  last.key = "";
  tell("drawn");
}
export const undo = () => step(past, future);
export const redo = () => step(future, past);

// A whole state, of a link.
export function open(next) {
  past = [...past, drawn(state)].filter((s) => s.section);
  future = [];
  state = next;
  tell("drawn");
}

// The address follows the state, a moment later.
let waiting = 0, written = "";
export function follow_address(failed, checked) {
  listen(() => {
    clearTimeout(waiting);
    waiting = setTimeout(save_link, 300);
  });
  addEventListener("hashchange", async () => {
    if (location.hash === written) return;
    try {
      open(checked(await read_link(location.hash, FIRST)));
    } catch (error) {
      failed(error);
    }
  });
}
export async function save_link() {
  clearTimeout(waiting);
  written = await write_link(state, FIRST);
  history.replaceState(null, "", written);
  return location.href;
}
