// The whole section as a file, two ways: what is typed is drawn, what is drawn is written, and a wrong text stays.
import {make} from "./dom.js";
import {change, first_load, state} from "./state.js";
import {is_sound} from "./section.js";
import {text_of, read_text, line_of} from "./json_text.js";

export function json_panel(host) {
  const area = make("textarea", {id: "json", spellcheck: "false", "aria-label": "the section as a section file, JSON", wrap: "off", rows: 18, "aria-describedby": "json-fault"});
  const numbers = make("pre", {class: "numbers", "aria-hidden": "true"}), fault = make("p", {class: "fault", id: "json-fault", hidden: true});
  host.append(make("div", {class: "editor"}, numbers, area), fault);
  let mine = null, waiting = 0, wrong = null, places = new Map();

  function number_lines(marked = 0) {
    const count = area.value.split("\n").length;
    numbers.replaceChildren(...Array.from({length: Math.min(count, 5000)}, (_, k) => make("span", {class: k + 1 === marked ? "marked" : ""}, `${k + 1}\n`)));
    numbers.scrollTop = area.scrollTop;
  }
  function tell(line, words) {
    fault.hidden = !words;
    fault.textContent = words ? `${line ? `line ${line}: ` : ""}${words}` : "";
    area.toggleAttribute("aria-invalid", Boolean(words));
    if (words) area.setAttribute("aria-invalid", "true");
    number_lines(words ? line : 0);
  }
  function take() {
    try {
      const read = read_text(area.value);
      places = read.places;
      if (!is_sound(read.value)) {
        wrong = {at: "", message: "this is no section: it needs an object with lists of materials and parts, and units that are known"};
        return tell(1, wrong.message);
      }
      wrong = null;
      tell(0, "");
      mine = read.value;
      if (JSON.stringify(mine) !== JSON.stringify(state.section))
        change({section: mine, template: null, part: Math.min(state.part, Math.max(0, (mine.parts ?? []).length - 1)),
          ...(!state.section.loads?.length && first_load(mine))}, "json");
    } catch (error) {
      wrong = error;
      tell(error.line ?? 1, error.message);
    }
  }
  area.addEventListener("input", () => {
    number_lines();
    clearTimeout(waiting);
    waiting = setTimeout(take, 250);
  });
  area.addEventListener("scroll", () => { numbers.scrollTop = area.scrollTop; });
  area.addEventListener("blur", () => { if (waiting) { clearTimeout(waiting); take(); } });

  return {
    show() {
      if (!host.closest("details").open || state.section === mine) return;
      mine = state.section;
      wrong = null;
      area.value = text_of(mine) + "\n";
      places = read_text(area.value).places;
      tell(0, "");
    },
    // What the answer says of the section, or nothing.
    mark(error) {
      if (wrong || !host.closest("details").open) return;
      tell(error ? line_of(places, error.at) : 0, error ? [error.message, error.remedy].filter(Boolean).join("; ") : "");
    },
  };
}
