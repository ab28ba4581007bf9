// A section as text that people read, and where in a text each place of it stands.

// Lists of numbers and what else is short on one line.
export function text_of(value, indent = "") {
  const line = JSON.stringify(value, null, 1)?.replace(/\n\s*/g, " ").replace(/([[{]) /g, "$1").replace(/ ([\]}])/g, "$1");
  if (typeof value !== "object" || value === null || (indent && line.length + indent.length <= 64)) return line;
  const deeper = indent + "  ";
  if (Array.isArray(value)) return `[\n${value.map((v) => deeper + text_of(v, deeper)).join(",\n")}\n${indent}]`;
  return `{\n${Object.entries(value).map(([k, v]) => `${deeper}${JSON.stringify(k)}: ${text_of(v, deeper)}`).join(",\n")}\n${indent}}`;
}

// {value, places: Map from "parts[1].outline[3]" to lines from 1}; throws {line, message} where it is no JSON.
export function read_text(text) {
  const places = new Map();
  let at = 0, line = 1, counted = 0;  // line: of the character `counted`
  const line_at = (i) => {
    for (; counted < i; ++counted) if (text[counted] === "\n") ++line;
    return line;
  };
  const fault = (message) => { throw Object.assign(new Error(message), {line: line_at(at)}); };
  const blank = () => { while (" \t\r\n".includes(text[at] ?? "x")) ++at; };
  const plain = (pattern) => {
    pattern.lastIndex = at;
    const match = pattern.exec(text);
    if (!match) return fault(at >= text.length ? "the text ends too early" : `“${text[at]}” is not expected here`);
    at += match[0].length;
    try {
      return JSON.parse(match[0]);
    } catch {
      at -= match[0].length;
      return fault("this is not a word or number of JSON");
    }
  };
  function list(close, item) {
    ++at;
    blank();
    for (let k = 0; text[at] !== close; ++k) {
      if (k && text[at] !== ",") fault(at >= text.length ? `a ${close} is missing` : `a comma or ${close} is missing before “${text[at]}”`);
      if (k) ++at;
      blank();
      item(k);
      blank();
    }
    ++at;
  }
  function read(path, depth) {
    blank();
    if (depth > 40) fault("too many lists in one another");
    places.set(path, line_at(at));
    if (text[at] === "{") {
      const made = {};
      list("}", () => {
        if (text[at] !== '"') fault("a key in quotation marks is missing");
        const key = plain(/"(?:[^"\\]|\\.)*"/y);
        if (Object.hasOwn(made, key)) fault(`“${key}” stands twice`);
        blank();
        if (text[at] !== ":") fault(`a colon is missing behind “${key}”`);
        ++at;
        Object.defineProperty(made, key, {value: read(path ? `${path}.${key}` : key, depth + 1), enumerable: true, writable: true, configurable: true});
      });
      return made;
    }
    if (text[at] === "[") {
      const made = [];
      list("]", (k) => made.push(read(`${path}[${k}]`, depth + 1)));
      return made;
    }
    return plain(/"(?:[^"\\]|\\.)*"|-?[\d.][\d.eE+-]*|\w+/y);
  }
  const value = read("", 0);
  blank();
  if (at < text.length) fault("something follows the end");
  return {value, places};
}

// The line of the place, or of the nearest around it.
export function line_of(places, place) {
  for (let path = place; ; path = path.replace(/(\.[^.[\]]*|\[[^\]]*\]|^[^.[\]]+)$/, "")) {
    if (places.has(path)) return places.get(path);
    if (!path) return 1;
  }
}
