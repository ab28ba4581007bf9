// Files in and out: drawings and section files that are opened or dropped; documents that are downloaded.
import {$, download} from "./dom.js";
import {ask} from "./answers.js";
import {change, first_load, state, save_link} from "./state.js";
import {is_sound} from "./section.js";
import {read_text} from "./json_text.js";
import {layers_of} from "./parts_panel.js";
import {is_dark} from "./drawing.js";

const LARGEST = 2e6;  // bytes: the server takes little more

async function open_file(file, say) {
  if (file.size > LARGEST) return say(`${file.name} has ${(file.size / 1e6).toFixed(1)} MB; at most ${LARGEST / 1e6} are read: velquor calc takes more`, true);
  let text;
  try {
    text = await file.text();
  } catch {
    return say(`${file.name} cannot be read: it is a folder, or was moved`, true);
  }
  if (/\.dxf$/i.test(file.name)) return open_drawing(file.name, text, say);
  let read;
  try {
    read = read_text(text).value;
  } catch (error) {
    return say(`${file.name} is no section file: line ${error.line}: ${error.message}`, true);
  }
  if (!is_sound(read)) return say(`${file.name} is no section file: it needs lists of materials and parts`, true);
  const other = read.drawing?.file ?? read.mesh?.file;
  if (other || read.mesh) return say(`${file.name} names another file, ${other ?? "of a mesh"}, which a page cannot read: ${read.mesh ? "velquor calc does" : "drop the drawing itself"}`, true);
  change({section: read, template: null, dxf: "", part: 0, ...first_load(read)});
  say(`${file.name} opened`);
}

function open_drawing(name, text, say) {
  if (text.includes("\0") || text.startsWith("AutoCAD Binary")) return say(`${name} is a binary drawing: save it as ASCII`, true);
  const layers = layers_of(text), {materials, units} = state.section;
  if (!layers.length) return say(`${name} has no lines on any layer`, true);
  const like = (layer) => materials.find((m) => m.name.toLowerCase() === layer.toLowerCase())?.name ?? materials[0].name;
  const section = {name: name.replace(/\.dxf$/i, ""), ...(units && {units}), materials, drawing: {layers: Object.fromEntries(layers.map((l) => [l, like(l)]))}};
  change({section, template: null, dxf: text, part: 0});
  say(`${name} opened with ${layers.length} ${layers.length === 1 ? "layer" : "layers"}: each has its material under Drawing`);
}

export function take_drops(say) {
  const cover = $("drop");
  let depth = 0;
  const has_files = (event) => event.dataTransfer?.types.includes("Files");
  addEventListener("dragenter", (event) => { if (has_files(event)) cover.hidden = ++depth <= 0; });
  addEventListener("dragleave", (event) => { if (has_files(event)) cover.hidden = --depth <= 0; });
  addEventListener("dragover", (event) => { if (has_files(event)) event.preventDefault(); });
  addEventListener("drop", (event) => {
    if (!has_files(event)) return;
    event.preventDefault();
    depth = 0;
    cover.hidden = true;
    const [file] = event.dataTransfer.files;
    if (file) open_file(file, say);
  });
  $("file").addEventListener("change", () => {
    const [file] = $("file").files;
    $("file").value = "";
    if (file) open_file(file, say);
  });
  $("open").addEventListener("click", () => $("file").click());
}

const ENDING = {section: "section.json", json: "json", csv: "csv", svg: "svg", png: "png", pdf: "pdf", html: "html"};

// The field of the picture as documents name it.
function field_name() {
  const {field, load} = state.see;
  if (!["axial", "shear", "mises"].includes(field)) return field;
  const set = load.startsWith("#") ? state.section.loads?.[Number(load.slice(1))] : null;
  return `${field}:${set ? set.name ?? `load ${Number(load.slice(1)) + 1}` : load}`;
}

export async function export_as(form, request, say) {
  const document = {form};
  if (form === "svg" || form === "png") Object.assign(document, {fields: [field_name()], dark: is_dark()});
  if (form === "pdf" || form === "html") {
    const told = Object.fromEntries(Object.entries(state.report).filter(([, text]) => text));
    Object.assign(document, told, {date: new Date().toLocaleDateString("sv")});
  }
  say("being written …");
  let answer;
  try {
    ({answer} = await ask("export", {...request, document}));
  } catch {
    return say("the server does not answer", true);
  }
  if (answer.error) return say([answer.error.at, answer.error.message, answer.error.remedy].filter(Boolean).join(": "), true);
  const {type, text} = answer.document;
  const content = form === "png" || form === "pdf" ? Uint8Array.from(atob(text), (c) => c.charCodeAt(0)) : text;
  const name = `${(state.section.name || "section").replace(/[^\p{L}\p{N}._-]+/gu, "_").slice(0, 80)}.${ENDING[form]}`;
  download(new Blob([content], {type}), name);
  say(`${name} written`);
}

export async function copy_link(say) {
  const link = await save_link();
  try {
    await navigator.clipboard.writeText(link);
    say(link.length > 8000 ? `link copied; it has ${link.length} letters, which some programs cut` : "link copied");
  } catch {
    say("the link stands in the address of this page");
  }
}
