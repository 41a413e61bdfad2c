// Numbers of what happened: bounded, however long it runs.

import { nameOf } from './model.js';
import { byId, make, oneLine, time } from './texts.js';

const kNamespace = 'http://www.w3.org/2000/svg';
const kBuckets = 100;  // Durations by their logarithm, eight to a doubling of ten.
const kMostOperations = 500;
const kMoments = 120;  // Seconds in a chart.
const kNotMeasured = 'not measured here';

class Durations {
  count = 0;
  most = 0;
  buckets = new Uint32Array(kBuckets);

  add(duration) {
    ++this.count;
    this.most = Math.max(this.most, duration);
    ++this.buckets[Math.min(kBuckets - 1, Math.floor(Math.log10(duration + 1) * 12))];
  }

  /** The upper end of the bucket in which this part of all ends. */
  percentile(part) {
    let left = Math.ceil(this.count * part);
    for (let bucket = 0; bucket < kBuckets; ++bucket) {
      left -= this.buckets[bucket];
      if (left <= 0) return Math.min(this.most, Math.round(10 ** ((bucket + 1) / 12)) - 1);
    }
    return this.most;
  }
}

function svg(tag, attributes) {
  const element = document.createElementNS(kNamespace, tag);
  for (const [name, value] of Object.entries(attributes)) element.setAttribute(name, value);
  return element;
}

function chart(title) {
  const drawing = svg('svg', { viewBox: '0 0 240 70', preserveAspectRatio: 'none', role: 'img', 'aria-label': title });
  return { drawing, figure: make('figure', {}, make('figcaption', {}, title), drawing), title };
}

export class Figures {
  #all = new Durations();
  #waits = new Durations();
  #operations = new Map();
  #second = 0;
  #rates = [];
  #levels = [];
  #gap = 0;
  #block = null;
  #process = null;
  #numbers = make('dl', { class: 'numbers' });
  #rate = chart('Calls a second, the last two minutes');
  #histogram = chart('Durations of all calls, short to long');
  #level = chart('Level of the sound that went up');
  #rows = make('tbody');

  constructor() {
    const heads = ['Operation', 'down', 'up', 'median', '90 %', '99 %', 'longest', 'waited, longest'];
    byId('figures').append(this.#numbers,
      make('div', { class: 'charts' }, this.#rate.figure, this.#histogram.figure, this.#level.figure),
      make('div', { class: 'table', tabindex: '0', role: 'region', 'aria-label': 'Calls by operation' },
        make('table', {}, make('caption', {}, 'Calls that arrived'),
          make('thead', {}, make('tr', {}, ...heads.map((head) => make('th', { scope: 'col' }, head)))), this.#rows)));
    setInterval(() => {
      this.#rates.push(this.#second);
      if (this.#rates.length > kMoments) this.#rates.shift();
      this.#second = 0;
      this.#render();
    }, 1000);
  }

  restart() {
    this.#all = new Durations();
    this.#waits = new Durations();
    this.#operations.clear();
    this.#levels = [];
    this.#gap = 0;
    this.#block = null;
  }

  process(process) {
    this.#process = process;
  }

  /** One a second in recordings, in place of the blocks. */
  sound({ level, gap }) {
    this.#heard(Number(level) || 0, Number(gap) || 0);
  }

  #heard(level, gap) {
    this.#levels.push(level);
    if (this.#levels.length > 1200) this.#levels.splice(0, 200);
    this.#gap = Math.max(this.#gap, gap);
  }

  add(call) {
    if (call.running) return;
    ++this.#second;
    this.#all.add(call.duration);
    const name = nameOf(call);
    if (!this.#operations.has(name) && this.#operations.size < kMostOperations)
      this.#operations.set(name, { down: 0, up: 0, durations: new Durations(), waited: null });
    const of = this.#operations.get(name);
    if (of) {
      ++of[call.direction === 'up' ? 'up' : 'down'];
      of.durations.add(call.duration);
      if (call.waited !== null) of.waited = Math.max(of.waited ?? 0, call.waited);
    }
    if (call.waited !== null) this.#waits.add(call.waited);
    if (call.level !== undefined) {
      this.#heard(Number(call.level), this.#block === null ? 0 : call.time - this.#block);
      this.#block = call.time;
    } else if (name.startsWith('VornAudioIn.st')) {
      this.#block = null;  // Between streams there is no gap.
    }
  }

  #line({ drawing }, values, most = Math.max(1, ...values)) {
    const points = values.map((value, n) => `${(n * 240) / Math.max(1, values.length - 1)},${68 - (64 * value) / most}`);
    drawing.replaceChildren(svg('polyline', { points: points.join(' ') }));
  }

  #render() {
    const number = (name, value) => make('div', {}, make('dt', {}, name), make('dd', { 'data-figure': name }, value));
    const part = this.#process;
    this.#numbers.replaceChildren(
      number('Calls', String(this.#all.count)),
      number('Calls a second', String(this.#rates[this.#rates.length - 1] ?? 0)),
      number('Median', time(this.#all.percentile(0.5))),
      number('99 % within', time(this.#all.percentile(0.99))),
      number('Longest wait for a lock', this.#waits.count ? time(this.#waits.most) : kNotMeasured),
      number('Longest gap in the sound', time(this.#gap)),
      number('Memory', part ? `${(part.memory / 1048576).toFixed(1)} MiB` : '—'),
      number('Open files', part ? String(part.descriptors) : '—'),
      number('Threads', part ? String(part.threads) : '—'));
    this.#line(this.#rate, this.#rates);
    this.#line(this.#level, this.#levels.slice(-240), 32768);
    const buckets = [...this.#all.buckets];
    const most = Math.max(1, ...buckets);
    this.#histogram.drawing.replaceChildren(...buckets.flatMap((count, n) => (count === 0 ? []
      : [svg('rect', { x: (n * 240) / kBuckets, y: 68 - (64 * count) / most, width: 240 / kBuckets, height: (64 * count) / most })])));
    this.#rows.replaceChildren(...[...this.#operations].sort(([one], [other]) => (one < other ? -1 : 1))
      .map(([name, { down, up, durations, waited }]) => make('tr', {},
        ...[oneLine(name), down || '', up || '', time(durations.percentile(0.5)), time(durations.percentile(0.9)),
          time(durations.percentile(0.99)), time(durations.most), waited === null ? kNotMeasured : time(waited)]
          .map((value) => make('td', {}, String(value))))));
  }
}
