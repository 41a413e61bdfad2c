// Texts come from outside and may hold anything: they are shown, never obeyed.

/** Control characters, and those that turn the direction of writing, made visible; of a long text only the beginning. */
export function harmless(text, most = Infinity) {
  const all = String(text);
  return (all.length > most ? `${all.slice(0, most)} …` : all).replace(/[\u0000-\u0009\u000b-\u001f\u007f-\u009f\u061c\u200e\u200f\u2028-\u202e\u2066-\u2069]/g,
    (character) => '\\x' + character.charCodeAt(0).toString(16).padStart(2, '0'));
}

/** The same, on one line and not longer than people read. */
export function oneLine(text, most = 300) {
  return harmless(text, most).replace(/\n/g, '\\n');
}

/** An element; texts become text, functions listeners, null is left out. */
export function make(tag, attributes = {}, ...children) {
  const element = document.createElement(tag);
  for (const [name, value] of Object.entries(attributes)) {
    if (typeof value === 'function') element.addEventListener(name, value);
    else if (value !== null && value !== false) element.setAttribute(name, value === true ? '' : value);
  }
  element.append(...children.filter((child) => child !== null));
  return element;
}

/** A value as a scenario holds it, quoted where it must be. */
export function quoted(text) {
  if (/^[A-Za-z0-9_./:+-]+$/.test(text)) return text;
  return '"' + text.replace(/[\\"]/g, '\\$&').replace(/\n/g, '\\n').replace(/\t/g, '\\t')
    .replace(/[\u0000-\u001f\u007f]/g, (character) => '\\x' + character.charCodeAt(0).toString(16).padStart(2, '0')) + '"';
}

/** The text that a value of a scenario stands for: "a \"b\"" is a "b". */
export function plain(value) {
  if (typeof value !== 'string' || value[0] !== '"' || !value.endsWith('"')) return value ?? '';
  return value.slice(1, -1).replace(/\\(x[0-9a-fA-F]{2}|.)/g, (_, escaped) => {
    if (escaped.length === 3) return String.fromCharCode(parseInt(escaped.slice(1), 16));
    return { n: '\n', t: '\t' }[escaped] ?? escaped;
  });
}

/** The items of "[a, "b, c"]". */
export function items(value) {
  if (!/^\[.*\]$/s.test(value ?? '')) return [];
  return (value.slice(1, -1).match(/"(?:\\.|[^"\\])*"|[^,\s][^,]*/g) ?? []).map((item) => plain(item.trim()));
}

/** Hands a text, or what a file holds, to the person as a file. */
export function download(name, content) {
  const address = URL.createObjectURL(new Blob([content], { type: 'application/octet-stream' }));
  const link = make('a', { href: address, download: name });
  link.click();
  setTimeout(() => URL.revokeObjectURL(address), 1000);
}

/** "1 call", "2 calls". */
export const counted = (count, name) => `${count} ${name}${count === 1 ? '' : 's'}`;

/** "1.2 ms" of microseconds. */
export function time(microseconds) {
  if (microseconds < 1000) return `${microseconds} µs`;
  if (microseconds < 1e6) return `${(microseconds / 1000).toPrecision(3)} ms`;
  return `${(microseconds / 1e6).toFixed(2)} s`;
}

export const byId = (id) => document.getElementById(id);
