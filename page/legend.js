// The bar of colours beside the picture, with round numbers and the unit.
import {make, svg} from "./dom.js";
import {STEPS, colour_at, css_of, map_of, share_of} from "./colours.js";
import {minus, superscript} from "./numbers.js";

const HIGH = 180, WIDE = 14;

export function legend(host, shown, name, unit) {
  host.hidden = !shown?.field && ["Outline", "Mesh"].includes(name);
  if (!shown?.field) {
    host.replaceChildren(host.hidden ? "" : `no ${name === "Warping" ? "warping" : "shear stresses"}: pieces do not touch`);
    return;
  }
  const {scale, field} = shown;
  if (scale.reach === 0) return host.replaceChildren(`${name}: 0 everywhere`);
  const at = (value) => 8 + HIGH * (scale.high - value) / (scale.high - scale.low), map = map_of(scale);
  const stops = Array.from({length: STEPS * 2 + 1}, (_, k) => k / STEPS / 2).map((t) => {
    const value = scale.high - t * (scale.high - scale.low);
    return svg("stop", {offset: t, "stop-color": css_of(colour_at(map, share_of(scale, value)))});
  });
  const tick = (value) => minus(String(Number((value / 10 ** scale.power).toPrecision(6))));
  const words = scale.ticks.map((value) => [svg("path", {class: "tick", d: `M${WIDE} ${at(value)}h5`}), svg("text", {x: WIDE + 9, y: at(value) + 4}, tick(value))]);
  host.replaceChildren(make("div", {class: "legend-name"}, name, make("span", {class: "unit"}, ` ${scale.power ? `10${superscript(scale.power)} ` : ""}${unit}`)),
    svg("svg", {viewBox: `0 0 84 ${HIGH + 16}`, width: 84, height: HIGH + 16, "aria-hidden": "true"}, svg("defs", {}, svg("linearGradient", {id: "colours-of-legend", x1: 0, x2: 0, y1: 0, y2: 1}, stops)),
      svg("rect", {x: 0, y: 8, width: WIDE, height: HIGH, fill: "url(#colours-of-legend)", class: "bar-of-colours"}), ...words),
    field.corners.length ? make("div", {class: "legend-mark"}, make("b", {}, "×"), " no limit at sharp corners; left out of the range") : "");
}
