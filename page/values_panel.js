// Values with their bounds, as the answer gives them: the main ones or all, those that a search finds, as a table to copy.
import {$, make, symbol} from "./dom.js";
import {catalogue} from "./catalogue.js";
import {change, state} from "./state.js";
import {figures, bound_text, minus, raised} from "./numbers.js";

const slack = (v) => (v.bound ?? 0) + 1e-9 * Math.abs(v.value);
const same = (a, b) => Math.abs(a.value - b.value) <= slack(a) + slack(b);
const ALONG_AXES = /^(I[uv]|W(el|pl)_[uv].*|i_[uv]|[uv]_M|beta_[uv]|r_[uv]|As_[uv]|Mpl_[uv].*|shape_[uv]|[uv]_pl.*|EI[uv]|GAuv|GA[uv]|e_[uv].*)$/;

// Of main values those that say something new; where y and z are the principal axes, not those along u and v.
function shown_of(values, all, text) {
  const alpha = values.alpha, angle = Math.abs(alpha?.value ?? 0);
  const principal = !alpha || alpha.value === null || Math.min(angle, Math.abs(angle - 90)) <= slack(alpha) + 1e-9;
  const wanted = text.toLowerCase().replace(/[\s,_]/g, "");
  return catalogue.values.filter((q) => {
    const v = values[q.key];
    if (!v || v.value === null) return false;
    if (wanted) return [q.symbol, q.key, q.meaning, q.group].some((t) => t.toLowerCase().replace(/[\s,_]/g, "").includes(wanted));
    if (all) return true;
    if (!q.main || (principal && ALONG_AXES.test(q.key))) return false;
    const twin = values[q.twin];
    return !twin || twin.value === null || !same(v, twin);
  });
}

export function missing_of(values) {
  const reasons = new Map();
  for (const q of catalogue.values) {
    const v = values[q.key];
    if (!v || v.value !== null || !q.main || q.twin) continue;
    reasons.set(v.reason, [...(reasons.get(v.reason) ?? []), q.symbol]);
  }
  return [...reasons];
}

export function values_panel(say) {
  const table = $("values"), search = $("values-search"), all = $("values-all");
  let answer = null, rows = [], key = "";
  search.addEventListener("input", () => show(answer));
  all.addEventListener("change", () => change({all: all.checked}));
  $("values-copy").addEventListener("click", copy);

  function show(next) {
    if (!next) return;
    answer = next;
    all.checked = state.all;
    const list = shown_of(answer.values, state.all, search.value);
    const names = list.map((q) => q.key + answer.values[q.key].unit).join();
    if (names !== key) build(list);
    key = names;
    for (const {q, value, bound} of rows) {
      const v = answer.values[q.key], told = bound_text(v.value, v.bound);
      const shown = minus(figures(v.value, v.bound)), limit = told === "exact" ? "exact" : `± ${told}`;
      if (value.textContent !== shown) value.textContent = shown;
      if (bound.textContent !== limit) bound.textContent = limit;
    }
  }
  function build(list) {
    rows = [];
    const groups = [];
    for (const q of list) {
      if (groups.at(-1)?.group !== q.group) groups.push({group: q.group, body: make("tbody", {}, make("tr", {class: "group"}, make("th", {colspan: 4, scope: "rowgroup"}, q.group)))});
      const value = make("td", {class: "number"}), bound = make("td", {class: "bound"});
      rows.push({q, value, bound});
      groups.at(-1).body.append(make("tr", {title: q.meaning, "data-key": q.key}, make("th", {scope: "row"}, symbol(q.symbol), make("span", {class: "away"}, ` ${q.meaning}`)),
        value, bound, make("td", {class: "unit"}, raised(answer.values[q.key].unit))));
    }
    table.replaceChildren(make("caption", {class: "away"}, "Values of the section with their bounds"),
      make("thead", {class: "away"}, make("tr", {}, ["Value", "", "bound", "unit"].map((t) => make("th", {scope: "col"}, t || "number")))),
      ...groups.map((g) => g.body));
    if (!list.length) table.append(make("tbody", {}, make("tr", {}, make("td", {colspan: 4, class: "hint"}, "no value of this name"))));
  }
  async function copy() {
    if (!answer) return;
    const lines = rows.map(({q}) => {
      const v = answer.values[q.key];
      return [q.symbol, String(v.value), v.bound === null ? "" : String(v.bound), v.unit, q.meaning];
    });
    const head = ["value", "number", "bound", "unit", "meaning"], text = [head, ...lines].map((l) => l.join("\t")).join("\n");
    const cells = (l, tag) => make("tr", {}, l.map((t) => make(tag, {}, t)));
    const html = make("table", {}, cells(head, "th"), lines.map((l) => cells(l, "td"))).outerHTML;
    try {
      await navigator.clipboard.write([new ClipboardItem({"text/plain": new Blob([text], {type: "text/plain"}), "text/html": new Blob([html], {type: "text/html"})})]);
      say(`${lines.length} values copied`);
    } catch {
      say("the browser does not let this page write to the clipboard");
    }
  }
  return {show};
}
