// Calls in the order in which they began, and what is seen of them.

import { next, turns } from './turns.js';

const kMost = 200000;
const kDropped = 20000;
const kLongestLine = 1 << 22;
const kPart = 1 << 18;  // Of a file, read or written.
const kSome = 64;  // Done before the browser is asked whether it wants its turn.

export const nameOf = (call) => `${call.adapter}.${call.operation}`;

/** The result, and what was written: "true value=on". */
export function answerOf(call) {
  if (call.exception !== null && call.exception !== undefined) return `threw ${call.exception}`;
  return [call.result, ...(call.written ?? [])].filter((part) => part).join(' ');
}

/** Whether a line of a recording is a call that can be shown. */
export function isCall(line) {
  return Number.isInteger(line.call) && typeof line.adapter === 'string' && typeof line.operation === 'string' &&
    Array.isArray(line.arguments);
}

const texts = (list) => (Array.isArray(list) ? list.map(String) : []);

/** Missing fields get values, so that nobody need ask; files come from anywhere. */
function whole(line, running) {
  line.time = Number(line.time) || 0;
  line.duration = Math.max(0, Number(line.duration) || 0);
  line.waited = Number.isFinite(line.waited) ? line.waited : null;  // Nobody knows it of a call that was seen at the host.
  line.inside = Math.max(0, Math.min(Number(line.inside) || 0, 40));
  line.thread = String(line.thread ?? '');
  line.direction = String(line.direction ?? 'down');
  line.arguments = texts(line.arguments);
  line.written = texts(line.written);
  line.result = String(line.result ?? '');
  if (line.trace !== undefined) line.trace = texts(line.trace);
  if (running) line.running = true;
  return line;
}

function insert(list, call) {
  let at = list.length;
  while (at > 0 && list[at - 1].call > call.call) --at;
  if (at > 0 && list[at - 1].call === call.call) list[at - 1] = call;
  else if (at === list.length) list.push(call);
  else list.splice(at, 0, call);
}

export class Calls {
  all = [];
  shown = this.all;  // What the filter lets through.
  threads = new Set();
  adapters = new Set();
  missed = 0;
  leftOut = 0;
  started = '';
  #filter = {};
  #filtering = 0;

  /** Takes a line that was read; false when it is none of a call. */
  add(line) {
    const running = line.open !== undefined && line.open !== null && isCall(line.open);
    if (running) line = line.open;
    if (!isCall(line)) return false;
    const call = whole(line, running);
    this.threads.add(call.thread);
    this.adapters.add(call.adapter);
    insert(this.all, call);
    if (this.shown !== this.all && this.#passes(call)) insert(this.shown, call);
    if (this.all.length > kMost) {
      this.missed += kDropped;
      this.all.splice(0, kDropped);
      if (this.shown !== this.all) this.filter(this.#filter);
    }
    return true;
  }

  #passes(call) {
    const { adapter, direction, thread, text } = this.#filter;
    if (adapter && call.adapter !== adapter) return false;
    if (direction && call.direction !== direction) return false;
    if (thread && call.thread !== thread) return false;
    return !text || `${nameOf(call)} ${call.arguments.join(' ')} ${answerOf(call)}`.toLowerCase().includes(text);
  }

  /** Chooses what is shown; a little at a time, `more` is called after each part. */
  async filter(filter, more = () => {}) {
    this.#filter = { ...filter, text: filter.text?.toLowerCase() };
    const turn = ++this.#filtering;
    if (!Object.values(this.#filter).some((value) => value)) {
      this.shown = this.all;
      more();
      return;
    }
    this.shown = [];
    const pause = turns();
    await next();  // Of what is typed at once, only the last is looked for.
    for (let at = 0; turn === this.#filtering && at < this.all.length; ++at) {
      if (this.#passes(this.all[at])) insert(this.shown, this.all[at]);
      if (at % kSome === 0 && (await pause())) more();
    }
    more();
  }

  /** What is shown, as the content of a recording. */
  async recording() {
    const header = { recording: 'vorn-speaker', version: 2, ...(this.started && { started: this.started }), writer: 'the page of vorn-speaker' };
    const parts = [];
    let part = `${JSON.stringify(header)}\n`;
    const pause = turns();
    const calls = this.shown.slice();
    for (let at = 0; at < calls.length; ++at) {
      const { running, ...call } = calls[at];
      part += `${JSON.stringify(running ? { open: call } : call)}\n`;
      if (part.length > kPart) {
        parts.push(new Blob([part]));
        part = '';
      }
      if (at % kSome === 0) await pause();
    }
    return new Blob([...parts, part]);
  }
}

/** The lines of a file, some at a time. */
async function* linesOf(file) {
  const decoder = new TextDecoder();
  let begun = '';
  for (let at = 0; at < file.size; at += kPart) {
    const part = await file.slice(at, at + kPart).arrayBuffer();
    const lines = (begun + decoder.decode(part, { stream: true })).split('\n');
    begun = lines.pop();
    yield lines;
    if (begun.length > kLongestLine) throw new Error(`${file.name} has a line of more than 4 MiB, which no recording has.`);
  }
  yield [begun];
}

function headerOf(name, line) {
  let header;
  try {
    header = JSON.parse(line);
  } catch {
    header = null;
  }
  if (header === null || typeof header !== 'object' || header.recording !== 'vorn-speaker')
    throw new Error(`${name} is no recording. Drop a file that "vorn-speaker record" or this page made.`);
  if (![1, 2].includes(header.version))
    throw new Error(`${name} is a recording of version ${header.version}; this page reads 1 and 2.`);
  return header;
}

/** Reads a recording, and hands on what it holds but calls; throws with a sentence for people when it is none. */
export async function readRecording(file, note = () => {}) {
  const calls = new Calls();
  const pause = turns();
  let header = null;
  for await (const lines of linesOf(file)) {
    for (let at = 0; at < lines.length; ++at) {
      if (at % kSome === 0) await pause();
      const line = lines[at];
      if (header === null) {
        header = headerOf(file.name, line);
        continue;
      }
      if (line === '') continue;
      let read;
      try {
        read = JSON.parse(line);
      } catch {
        ++calls.leftOut;
        continue;
      }
      if (read === null || typeof read !== 'object') {
        ++calls.leftOut;
      } else if (!calls.add(read)) {
        calls.leftOut += Number(read.leftOut) || 0;
        note(read);
      }
    }
  }
  calls.started = String(header.started ?? '');
  return calls;
}

/** Where two recordings differ: pairs of calls, one of them null where the other has none. */
export async function differences(left, right, most = 200) {
  const keys = (calls) => {
    const known = [];
    return (n) => (known[n] ??= `${calls[n].direction} ${nameOf(calls[n])} ${calls[n].arguments.join(' ')} = ${answerOf(calls[n])}`);
  };
  const [one, other] = [keys(left), keys(right)];
  const pause = turns();
  const found = [];
  const kNear = 50;
  let i = 0;
  let j = 0;
  while ((i < left.length || j < right.length) && found.length < most) {
    if (i < left.length && j < right.length && one(i) === other(j)) {
      if (i % kSome === 0) await pause();
      ++i;
      ++j;
      continue;
    }
    // The nearest place where both go on alike.
    let skip = null;
    for (let distance = 1; distance <= kNear && !skip; ++distance) {
      for (let a = 0; a <= distance && !skip; ++a) {
        const b = distance - a;
        if (i + a < left.length && j + b < right.length && one(i + a) === other(j + b)) skip = [a, b];
      }
    }
    await pause();
    const [a, b] = skip ?? [1, 1];
    for (let n = 0; n < Math.max(a, b); ++n) {
      found.push([n < a ? left[i + n] ?? null : null, n < b ? right[j + n] ?? null : null]);
    }
    i += a;
    j += b;
  }
  return found.slice(0, most).filter(([one, other]) => one || other);
}
