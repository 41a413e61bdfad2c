// Numbers of what happened: bounded, however long it runs.

import { nameOf } from './model.js';
import { byId, make, oneLine, time } from './texts.js';

const kBuckets = 100;  // Durations by their logarithm.
const kBucketsOfTen = 12;  // From one power of ten to the next.
const kMostOperations = 500;
const kMoments = 120;  // Seconds in a chart.
const kNotMeasured = 'not measured here';

const endOf = (bucket) => Math.round(10 ** ((bucket + 1) / kBucketsOfTen)) - 1;

class Durations {
  count = 0;
  most = 0;
  buckets = new Uint32Array(kBuckets);

  add(duration) {
    ++this.count;
    this.most = Math.max(this.most, duration);
    ++this.buckets[Math.min(kBuckets - 1, Math.floor(Math.log10(duration + 1) * kBucketsOfTen))];
  }

  /** The upper end of the bucket in which this part of all ends. */
  percentile(part) {
    let left = Math.ceil(this.count * part);
    for (let bucket = 0; bucket < kBuckets; ++bucket) {
      left -= this.buckets[bucket];
      if (left <= 0) return Math.min(this.most, endOf(bucket));
    }
    return this.most;
  }
}

// A worker: to begin with, the library takes longer than a frame.
const charts = new Worker('charts.js', { type: 'module' });
let made = 0;

class Chart {
  #title;
  #number = ++made;
  #canvas = make('canvas', { role: 'img' });
  #caption = make('figcaption');
  figure = make('figure', {}, this.#caption, this.#canvas);

  constructor(title, type) {
    this.#title = title;
    const canvas = this.#canvas.transferControlToOffscreen();
    charts.postMessage({ number: this.#number, canvas, type }, [canvas]);
  }

  show(labels, values, scale) {
    const words = `${this.#title}: ${scale}`;
    if (this.#caption.textContent !== words) {
      this.#caption.textContent = words;
      this.#canvas.setAttribute('aria-label', words);
    }
    const colours = getComputedStyle(document.documentElement);
    const colour = (name) => colours.getPropertyValue(name).trim();
    charts.postMessage({
      number: this.#number, labels, values, width: this.#canvas.clientWidth, height: this.#canvas.clientHeight,
      ratio: devicePixelRatio, accent: colour('--accent'), faint: colour('--faint'), line: colour('--line'),
    });
  }
}

/** What is measured of a list of calls. */
export class Measures {
  all = new Durations();
  waits = new Durations();
  operations = new Map();
  rates = [];  // Calls in each of the newest seconds.
  levels = [];
  gap = 0;
  process = null;
  #recorded;
  #second = null;
  #block = null;

  /** Of a recording: its seconds are those that it tells of. Those of others are counted with tick(). */
  constructor(recorded = false) {
    this.#recorded = recorded;
    if (!recorded) this.rates.push(0);
  }

  tick() {
    if (!this.#recorded) this.#seconds(1);
  }

  #seconds(count) {
    for (let n = 0; n < Math.min(count, kMoments); ++n) this.rates.push(0);
    this.rates.splice(0, this.rates.length - kMoments);
  }

  /** A line of a recording, or of the stream, that is none of a call. */
  note({ process, sound, level, gap }) {
    if (process) this.process = { memory: Number(process.memory) || 0, descriptors: Number(process.descriptors) || 0, threads: Number(process.threads) || 0 };
    if (sound) this.#heard(Number(level) || 0, Number(gap) || 0);  // One a second in recordings, in place of the blocks.
  }

  #heard(level, gap) {
    this.levels.push(level);
    if (this.levels.length > 1200) this.levels.splice(0, 200);
    this.gap = Math.max(this.gap, gap);
  }

  add(call) {
    if (call.running) return;
    if (this.#recorded) {
      const second = Math.floor(call.time / 1e6);
      this.#seconds(this.#second === null ? 1 : second - this.#second);
      this.#second = Math.max(this.#second ?? second, second);
    }
    ++this.rates[this.rates.length - 1];
    this.all.add(call.duration);
    const name = nameOf(call);
    if (!this.operations.has(name) && this.operations.size < kMostOperations)
      this.operations.set(name, { down: 0, up: 0, durations: new Durations(), waited: null });
    const of = this.operations.get(name);
    if (of) {
      ++of[call.direction === 'up' ? 'up' : 'down'];
      of.durations.add(call.duration);
      if (call.waited !== null) of.waited = Math.max(of.waited ?? 0, call.waited);
    }
    if (call.waited !== null) this.waits.add(call.waited);
    if (call.level !== undefined) {
      this.#heard(Number(call.level) || 0, this.#block === null ? 0 : call.time - this.#block);
      this.#block = call.time;
    } else if (name.startsWith('VornAudioIn.st')) {
      this.#block = null;  // Between streams there is no gap.
    }
  }
}

/** Shows measures, anew each second. */
export class Figures {
  #measures = new Measures();
  #title = byId('figures').querySelector('h2');
  #numbers = make('dl', { class: 'numbers' });
  #rate = new Chart('Calls a second, the last two minutes', 'line');
  #histogram = new Chart('Durations of all calls', 'bar');
  #level = new Chart('Level of the sound that went up', 'line');
  #rows = make('tbody');

  constructor() {
    const heads = ['Operation', 'down', 'up', 'median', '90 %', '99 %', 'longest', 'waited, longest'];
    byId('figures').append(this.#numbers,
      make('div', { class: 'charts' }, this.#rate.figure, this.#histogram.figure, this.#level.figure),
      make('div', { class: 'table', tabindex: '0', role: 'region', 'aria-label': 'Calls by operation' },
        make('table', {}, make('caption', {}, 'Calls that arrived'),
          make('thead', {}, make('tr', {}, ...heads.map((head) => make('th', { scope: 'col' }, head)))), this.#rows)));
    setInterval(() => this.#render(), 1000);
  }

  show(measures, title) {
    this.#measures = measures;
    this.#title.textContent = title;
    this.#render();
  }

  #render() {
    const number = (name, value) => make('div', {}, make('dt', {}, name), make('dd', { 'data-figure': name }, value));
    const { all, waits, operations, rates, gap, process } = this.#measures;
    this.#numbers.replaceChildren(
      number('Calls', String(all.count)),
      number('Calls a second', String(rates[rates.length - 2] ?? rates[0] ?? 0)),
      number('Median', time(all.percentile(0.5))),
      number('99 % within', time(all.percentile(0.99))),
      number('Longest wait for a lock', waits.count ? time(waits.most) : kNotMeasured),
      number('Longest gap in the sound', time(gap)),
      number('Memory', process ? `${(process.memory / 1048576).toFixed(1)} MiB` : '—'),
      number('Open files', process ? String(process.descriptors) : '—'),
      number('Threads', process ? String(process.threads) : '—'));
    const ago = (values) => values.map((_, n) => `${values.length - 1 - n} s ago`);
    this.#rate.show(ago(rates), rates, `${Math.max(0, ...rates)} at most`);
    const levels = this.#measures.levels.slice(-240);
    this.#level.show(levels.map((_, n) => n + 1), levels, levels.length === 0 ? 'nothing yet' : `${Math.max(...levels)} of 32767 at most`);
    const buckets = [...all.buckets];
    const first = buckets.findIndex((count) => count > 0);
    const last = buckets.findLastIndex((count) => count > 0);
    const seen = buckets.slice(first, last + 1);
    this.#histogram.show(seen.map((_, n) => `to ${time(endOf(first + n))}`), first < 0 ? [] : seen,
      first < 0 ? 'nothing yet' : `${time(first === 0 ? 0 : endOf(first - 1) + 1)} to ${time(Math.min(all.most, endOf(last)))}`);
    this.#rows.replaceChildren(...[...operations].sort(([one], [other]) => (one < other ? -1 : 1))
      .map(([name, { down, up, durations, waited }]) => make('tr', {},
        ...[oneLine(name), down || '', up || '', time(durations.percentile(0.5)), time(durations.percentile(0.9)),
          time(durations.percentile(0.99)), time(durations.most), waited === null ? kNotMeasured : time(waited)]
          .map((value) => make('td', {}, String(value))))));
  }
}
