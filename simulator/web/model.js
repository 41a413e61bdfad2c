// Calls in the order in which they began, and what is seen of them.

const kMost = 200000;
const kDropped = 20000;
const kAtOnce = 10000;  // Filtered in one go, so that a frame stays short.

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
  line.duration = Number(line.duration) || 0;
  line.waited = Number.isFinite(line.waited) ? line.waited : null;  // Nobody knows it of a call that was seen at the host.
  line.inside = Math.max(0, Math.min(Number(line.inside) || 0, 40));
  line.thread = String(line.thread ?? '');
  line.direction = String(line.direction ?? 'down');
  line.arguments = texts(line.arguments);
  line.written = texts(line.written);
  line.result = String(line.result ?? '');
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
  filter(filter, more = () => {}) {
    this.#filter = { ...filter, text: filter.text?.toLowerCase() };
    const turn = ++this.#filtering;
    if (!Object.values(this.#filter).some((value) => value)) {
      this.shown = this.all;
      more();
      return;
    }
    this.shown = [];
    let at = 0;
    const part = () => {
      if (turn !== this.#filtering) return;
      for (const end = Math.min(at + kAtOnce, this.all.length); at < end; ++at) {
        if (this.#passes(this.all[at])) insert(this.shown, this.all[at]);
      }
      more();
      if (at < this.all.length) requestAnimationFrame(part);
    };
    part();
  }

  /** What is shown, as a recording. */
  recording() {
    const lines = [{ recording: 'vorn-speaker', version: 2, ...(this.started && { started: this.started }), writer: 'the page of vorn-speaker' }];
    for (const { running, ...call } of this.shown) lines.push(running ? { open: call } : call);
    return lines.map((line) => JSON.stringify(line) + '\n').join('');
  }
}

/** Reads a recording; throws with a sentence for people when it is none. */
export function readRecording(name, text) {
  const lines = text.split('\n');
  let header;
  try {
    header = JSON.parse(lines[0]);
  } catch {
    header = null;
  }
  if (header === null || typeof header !== 'object' || header.recording !== 'vorn-speaker')
    throw new Error(`${name} is no recording. Drop a file that "vorn-speaker record" or this page made.`);
  if (![1, 2].includes(header.version))
    throw new Error(`${name} is a recording of version ${header.version}; this page reads 1 and 2.`);
  const calls = new Calls();
  calls.started = String(header.started ?? '');
  for (const line of lines.slice(1)) {
    if (line === '') continue;
    let read;
    try {
      read = JSON.parse(line);
    } catch {
      ++calls.leftOut;
      continue;
    }
    if (read === null || typeof read !== 'object') ++calls.leftOut;
    else if (!calls.add(read)) calls.leftOut += Number(read.leftOut) || 0;
  }
  return calls;
}

/** Where two recordings differ: pairs of calls, one of them null where the other has none. */
export function differences(left, right, most = 200) {
  const key = (call) => `${call.direction} ${nameOf(call)} ${call.arguments.join(' ')} = ${answerOf(call)}`;
  const found = [];
  const kNear = 50;
  let i = 0;
  let j = 0;
  while ((i < left.length || j < right.length) && found.length < most) {
    if (i < left.length && j < right.length && key(left[i]) === key(right[j])) {
      ++i;
      ++j;
      continue;
    }
    // The nearest place where both go on alike.
    let skip = null;
    for (let distance = 1; distance <= kNear && !skip; ++distance) {
      for (let a = 0; a <= distance && !skip; ++a) {
        const b = distance - a;
        if (i + a < left.length && j + b < right.length && key(left[i + a]) === key(right[j + b])) skip = [a, b];
      }
    }
    const [a, b] = skip ?? [1, 1];
    for (let n = 0; n < Math.max(a, b); ++n) {
      found.push([n < a ? left[i + n] ?? null : null, n < b ? right[j + n] ?? null : null]);
    }
    i += a;
    j += b;
  }
  return found.slice(0, most).filter(([one, other]) => one || other);
}
