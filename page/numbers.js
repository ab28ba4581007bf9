// How numbers are read and written. `figures` and `bound_text` write as the command and its reports do.
const MOST_DIGITS = 7, FEWEST_DIGITS = 2;
const SMALLEST = -4;   // exponent of numbers that are written without a power of ten
const EXACT = 1e-9;    // relative bounds up to this are rounding

const exponent_of = (value) => Math.floor(Math.log10(Math.abs(value)));
const clamp = (x, low, high) => Math.min(high, Math.max(low, x));
const power_of = (exponent) =>
  exponent >= SMALLEST && exponent < MOST_DIGITS ? 0 : 3 * Math.floor(exponent / 3);

function written(value, last, power, exact) {
  const scaled = power < 0 ? value * 10 ** -power : value / 10 ** power;
  let text = scaled.toFixed(clamp(power - last, 0, 100));
  if (exact && text.includes(".")) text = text.replace(/\.?0+$/, "");
  return power === 0 ? text : `${text}e${power}`;
}

// A value with the digits that its bound allows; `bound` null where none is known.
export function figures(value, bound = 0) {
  if (value === 0 || Math.abs(value) <= bound) return "0";
  const exponent = exponent_of(value);
  const wanted = bound > 0 ? exponent - exponent_of(bound) + 1 : MOST_DIGITS;
  return written(value, exponent - clamp(wanted, FEWEST_DIGITS, MOST_DIGITS) + 1, power_of(exponent),
    bound !== null && bound <= EXACT * Math.abs(value));
}

export function bound_text(value, bound) {
  if (bound === null || !Number.isFinite(bound)) return "?";
  if (bound <= EXACT * Math.abs(value)) return "exact";
  let last = exponent_of(bound);
  if (Math.abs(value) > bound) last = Math.max(last, exponent_of(value) - MOST_DIGITS + 1);
  const unit = 10 ** last, up = Math.ceil((bound / unit) * (1 - 1e-12)) * unit;
  last = exponent_of(up * (1 + 1e-12));
  const power = Math.abs(value) > bound ? power_of(exponent_of(value)) : last < SMALLEST ? last : power_of(last);
  return written(up, last, power, false);
}

// A stress, a place, a share: four digits, without zeros at the end and with a true minus sign.
export function short(value, digits = 4) {
  if (!Number.isFinite(value)) return "–";
  if (value === 0) return "0";
  const exponent = exponent_of(value), power = power_of(exponent);
  return minus(written(Number(value.toPrecision(digits)), exponent - digits + 1, power, true));
}

export const minus = (text) => (text === "-0" ? "0" : text.replace(/^-/, "−"));
const DIGITS = "⁰¹²³⁴⁵⁶⁷⁸⁹";
export const superscript = (number) => String(number).replace("-", "⁻").replace(/\d/g, (d) => DIGITS[d]);
export const raised = (unit) => (unit === "deg" ? "°" : unit.replace(/\d/g, (d) => DIGITS[d]).replaceAll(" ", "·"));

// "Wpl,y" as its letter and its index.
export function letter_and_index(symbol) {
  const end = /^[EG][A-Z]/.test(symbol) ? 2 : 1;
  return [symbol.slice(0, end), symbol.slice(end).replace(/^,/, "")];
}

// The same of a parameter, as "d_top"; a whole word has no index.
export const parameter_symbol = (name) => (/^(cover|slope)$/.test(name) ? [name, ""] : letter_and_index(name.replace("_", ",")));

// A number as it was typed, with a point or a comma; null where it is none.
export function number_of(text) {
  const plain = text.trim().replace("−", "-").replace(/^([^.,]*),([^.,]*)$/, "$1.$2");
  return /^[-+]?(\d+\.?\d*|\.\d+)(e[-+]?\d+)?$/i.test(plain) && Number.isFinite(Number(plain)) ? Number(plain) : null;
}

// As it is shown in a field: the shortest that reads back, without the dust of conversions.
export const typed = (value) => String(Number(Number(value).toPrecision(12)));
