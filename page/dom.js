// Elements, and fields that follow the state.
import {number_of, typed, letter_and_index} from "./numbers.js";

export const $ = (id) => document.getElementById(id);

// make("input", {type: "text", onchange: ...}, child, "words"): an attribute that is a function listens, `style` is an
// object, false and null leave an attribute out.
export function make(tag, given = {}, ...children) {
  const element = tag === "svg" || given.xmlns
    ? document.createElementNS("http://www.w3.org/2000/svg", tag) : document.createElement(tag);
  for (const [name, value] of Object.entries(given)) {
    if (name === "xmlns" || value === false || value === null || value === undefined) continue;
    if (typeof value === "function") element.addEventListener(name.slice(2), value);
    else if (name === "style") Object.assign(element.style, value);
    else element.setAttribute(name, value === true ? "" : value);
  }
  element.append(...children.flat().filter((child) => child !== null && child !== undefined && child !== false));
  return element;
}
export const svg = (tag, given = {}, ...children) => make(tag, {...given, xmlns: true}, ...children);

export function symbol(text, [letter, index] = letter_and_index(text)) {
  return make("i", {class: "symbol"}, letter, index && make("sub", {}, index));
}

// Things that are built once for a structure, and refreshed with every state: panel.show(key, build) builds anew where
// the key differs, and keeps the focus in the field of the same name.
export function panel(host) {
  let known = null, refreshers = [];
  return {
    show(key, build) {
      if (key !== known) {
        known = key;
        refreshers = [];
        const focused = host.contains(document.activeElement) ? document.activeElement.getAttribute("data-name") : null;
        host.replaceChildren(...[build((refresh) => refreshers.push(refresh))].flat().filter(Boolean));
        if (focused) host.querySelector(`[data-name="${CSS.escape(focused)}"]`)?.focus();
      }
      for (const refresh of refreshers) refresh();
    },
  };
}

let names = 0;
const fresh_id = () => `id${++names}`;

// A field for a number. get() is its value or undefined, set(value) takes one; step(value) is what arrow keys add.
// What is no number is marked, told beneath, and changes nothing.
export function number_field(on, {name, label, get, set, step = () => 1, unit = "", empty = null, low = -Infinity}) {
  let before;
  const note = make("small", {class: "fault", id: fresh_id(), hidden: true});
  const input = make("input", {
    type: "text", inputmode: "decimal", autocomplete: "off", spellcheck: "false", "data-name": name,
    "aria-label": unit ? `${label}, ${unit}` : label,
    "aria-describedby": note.id,
    oninput: () => take(),
    onfocus: () => { before = get(); },
    onblur: () => { if (input.getAttribute("aria-invalid") !== "true") show(); },
    onkeydown: (event) => {
      const way = event.key === "ArrowUp" ? 1 : event.key === "ArrowDown" ? -1 : 0;
      if (event.key === "Escape") {
        fault("");
        if (get() !== before) set(before);
        show();
      }
      if (!way) return;
      event.preventDefault();
      const now = number_of(input.value) ?? get() ?? 0;
      const size = step(now) * (event.shiftKey ? 10 : 1);
      input.value = typed(Math.max(low, Math.round((now + way * size) / size) * size));
      take();
    },
  });
  function fault(words) {
    note.textContent = words;
    note.hidden = !words;
    input.toggleAttribute("aria-invalid", Boolean(words));
    if (words) input.setAttribute("aria-invalid", "true");
  }
  function take() {
    const text = input.value.trim();
    if (text === "" && empty !== null) return fault(""), set(undefined);
    const value = number_of(text);
    if (value === null) return fault(text ? `“${text}” is not a number` : "a number is needed");
    if (value < low) return fault(`at least ${low}`);
    fault("");
    set(value);
  }
  function show() {
    const value = get();
    input.value = value === undefined || value === null ? "" : typed(value);
    if (empty !== null) input.placeholder = empty;
  }
  on(() => {
    if (document.activeElement === input && (input.getAttribute("aria-invalid") === "true" || number_of(input.value) === get())) return;
    fault("");
    show();
  });
  return {input, note};
}

export function text_field(on, {name, label, get, set, ...more}) {
  let taking = false;
  const show = () => { if (!taking && input.value !== (get() ?? "")) input.value = get() ?? ""; };
  const input = make("input", {type: "text", autocomplete: "off", "data-name": name, "aria-label": label, maxlength: 1000, ...more, onblur: show,
    oninput: () => {
      taking = true;
      set(input.value);
      taking = false;
    }});
  on(show);
  return input;
}

export function choice(on, {name, label, options, get, set, ...more}) {
  const select = make("select", {"data-name": name, "aria-label": label, ...more, onchange: () => set(select.value)},
    options.map(([value, words]) => make("option", {value}, words)));
  on(() => { select.value = get(); });
  return select;
}

export const button = (words, label, onclick, more = {}) =>
  make("button", {type: "button", title: label, "aria-label": label, onclick, ...more}, words);

export function download(blob, name) {
  const link = make("a", {href: URL.createObjectURL(blob), download: name});
  link.click();
  setTimeout(() => URL.revokeObjectURL(link.href), 30000);
}
