// A state in an address: "#1." and its JSON, deflated, in base64 for addresses. What is as it was at first is left out.
const VERSION = "#1.", LARGEST = 4e6;  // bytes of JSON

// A small address may hold a text without end: it is taken piece by piece, and left where that becomes too long.
const PIECE = 4096;
async function write_all(stream, bytes) {
  const writer = stream.writable.getWriter();
  for (let i = 0; i < bytes.length; i += PIECE) await writer.write(bytes.subarray(i, i + PIECE));
  await writer.close();
}
async function through(stream, bytes, largest = Infinity) {
  write_all(stream, bytes).catch(() => {});
  const reader = stream.readable.getReader(), pieces = [];
  let size = 0;
  for (let read = await reader.read(); !read.done; read = await reader.read()) {
    pieces.push(read.value);
    if ((size += read.value.length) > largest) {
      reader.cancel().catch(() => {});
      throw new Error("it is too long");
    }
  }
  return new Uint8Array(await new Blob(pieces).arrayBuffer());
}

export async function write_link(state, first) {
  const told = Object.fromEntries(
    Object.entries(state).filter(([key, value]) => JSON.stringify(value) !== JSON.stringify(first[key])));
  const bytes = await through(new CompressionStream("deflate-raw"), new TextEncoder().encode(JSON.stringify(told)));
  let text = "";
  for (let i = 0; i < bytes.length; i += 8192) text += String.fromCharCode(...bytes.subarray(i, i + 8192));
  return VERSION + btoa(text).replaceAll("+", "-").replaceAll("/", "_").replaceAll("=", "");
}

const is_object = (x) => typeof x === "object" && x !== null && !Array.isArray(x);

// Throws where the address holds no state.
export async function read_link(hash, first) {
  if (!hash.startsWith(VERSION)) throw new Error("it does not begin as one");
  const text = atob(hash.slice(VERSION.length).replaceAll("-", "+").replaceAll("_", "/"));
  const bytes = await through(new DecompressionStream("deflate-raw"), Uint8Array.from(text, (c) => c.charCodeAt(0)), LARGEST);
  const told = JSON.parse(new TextDecoder().decode(bytes));
  if (!is_object(told) || !is_object(told.section)) throw new Error("it holds no section");
  const state = {...first};
  for (const key of Object.keys(first)) {
    if (!(key in told)) continue;
    const like = first[key];
    if (is_object(like)) state[key] = {...like, ...(is_object(told[key]) ? told[key] : {})};
    else if (like === null ? is_object(told[key]) : typeof told[key] === typeof like) state[key] = told[key];
  }
  return state;
}
