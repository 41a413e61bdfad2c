// The calls as lines with arrows between lanes. However many there are, only the lines that can be seen exist.

import { answerOf, nameOf } from './model.js';
import { byId, counted, make, oneLine, time } from './texts.js';

const kRow = 22;
const kLanes = 280;  // Pixels for the lanes, left of the texts, where there is room.
const kLeastLanes = 150;
const kMostArguments = 20;

export function textOf(call) {
  const answer = answerOf(call);
  const values = call.samples === undefined ? call.arguments.slice(0, kMostArguments).map((value) => value.slice(0, 200)).join(', ')
    : `${counted(call.samples, 'sample')}, level ${call.level}`;
  return `${String(call.call).padStart(6)}  ${'  '.repeat(call.inside)}${nameOf(call)}` +
    oneLine(`(${values})${call.running ? ' …' : answer ? ` = ${answer}` : ''}`, 160) +
    (call.running ? '' : `  ${time(call.duration)}`);
}

export class Lanes {
  #box = byId('lanes');
  #canvas = make('canvas', { 'aria-hidden': 'true' });
  #space = make('div', { role: 'presentation' });
  #rows = [];
  #list = [];
  #last = null;  // While paused, the number of the last call that is shown.
  #chosen = null;
  #following = true;
  #asked = false;
  #perThread = false;
  #onChoose;
  #isLocked;

  constructor(onChoose, isLocked) {
    this.#onChoose = onChoose;
    this.#isLocked = isLocked;
    this.#box.append(this.#canvas, this.#space);
    this.#box.addEventListener('scroll', () => {
      this.#following = this.#box.scrollTop + this.#box.clientHeight >= this.#box.scrollHeight - kRow;
      this.draw();
    });
    this.#box.addEventListener('keydown', (event) => this.#key(event));
    this.#box.addEventListener('click', (event) => {
      const row = event.target.closest('.row');
      if (row) this.choose(Number(row.dataset.index));
    });
    new ResizeObserver(() => this.draw()).observe(this.#box);
  }

  show(list) {
    this.#list = list;
    this.draw();
  }

  /** Shows no call after this one, or with null all of them; what comes is kept. */
  pause(last) {
    this.#last = last;
    if (last === null) this.#following = true;
    this.draw();
  }

  set perThread(wanted) {
    this.#perThread = wanted;
    this.draw();
  }

  get length() {
    if (this.#last === null) return this.#list.length;
    let [from, to] = [0, this.#list.length];
    while (from < to) {
      const middle = (from + to) >> 1;
      if (this.#list[middle].call > this.#last) to = middle;
      else from = middle + 1;
    }
    return from;
  }

  get chosen() {
    return this.#chosen === null ? -1 : this.#list.indexOf(this.#chosen);
  }

  choose(index) {
    if (this.length === 0) return;
    const at = Math.max(0, Math.min(index, this.length - 1));
    this.#chosen = this.#list[at];
    this.#following = false;
    const top = at * kRow;
    const { scrollTop, clientHeight } = this.#box;
    if (top < scrollTop) this.#box.scrollTop = top;
    if (top + kRow > scrollTop + clientHeight) this.#box.scrollTop = top + kRow - clientHeight;
    this.draw();
    this.#onChoose(this.#chosen, at);
  }

  #key(event) {
    const page = Math.floor(this.#box.clientHeight / kRow);
    const at = this.chosen;
    const to = { ArrowDown: at + 1, ArrowUp: at - 1, PageDown: at + page, PageUp: at - page, Home: 0, End: Infinity }[event.key];
    if (to === undefined) return;
    event.preventDefault();
    this.choose(Math.max(0, to));
  }

  /** Before the next frame, once. */
  draw() {
    if (this.#asked) return;
    this.#asked = true;
    requestAnimationFrame(() => {
      this.#asked = false;
      this.#render();
    });
  }

  #render() {
    const count = this.length;
    const height = this.#box.clientHeight;
    const width = Math.max(kLeastLanes, Math.min(kLanes, Math.round(this.#box.clientWidth / 3)));
    this.#box.style.setProperty('--lanes', `${width}px`);
    this.#space.style.height = `${Math.max(0, count * kRow - height)}px`;
    if (this.#following) this.#box.scrollTop = count * kRow;
    const top = this.#box.scrollTop;
    const first = Math.max(0, Math.floor(top / kRow));
    const last = Math.min(count, Math.ceil((top + height) / kRow));
    while (this.#rows.length < last - first) {
      const row = make('div', { class: 'row', role: 'option' });
      this.#rows.push(row);
      this.#box.append(row);
    }
    let active = '';
    this.#rows.forEach((row, n) => {
      const index = first + n;
      row.hidden = index >= last;
      if (row.hidden) return;
      const call = this.#list[index];
      const text = textOf(call);
      if (row.textContent !== text) row.textContent = text;
      row.dataset.index = index;
      row.id = `call-${index}`;
      row.className = `row ${call.direction}${call.exception === null || call.exception === undefined ? '' : ' threw'}`;
      row.style.transform = `translateY(${index * kRow}px)`;
      row.setAttribute('aria-selected', String(call === this.#chosen));
      row.setAttribute('aria-posinset', index + 1);
      row.setAttribute('aria-setsize', count);
      if (call === this.#chosen) active = row.id;
    });
    if (active) this.#box.setAttribute('aria-activedescendant', active);
    else this.#box.removeAttribute('aria-activedescendant');
    this.#arrows(first, last, top, width, height);
  }

  #arrows(first, last, top, width, height) {
    const scale = devicePixelRatio || 1;
    const canvas = this.#canvas;
    if (canvas.width !== Math.round(width * scale) || canvas.height !== Math.round(height * scale)) {
      canvas.width = Math.round(width * scale);
      canvas.height = Math.round(height * scale);
      canvas.style.width = `${width}px`;
      canvas.style.height = `${height}px`;
    }
    const colours = getComputedStyle(document.documentElement);
    const colour = (name) => colours.getPropertyValue(name);
    const pen = canvas.getContext('2d');
    pen.setTransform(scale, 0, 0, scale, 0, 0);
    pen.clearRect(0, 0, width, height);
    pen.font = '11px sans-serif';
    const seen = this.#list.slice(first, last);
    const names = this.#perThread ? [...new Set(seen.map((call) => call.thread))].slice(0, 8).concat('library')
      : ['assistant', 'library', 'firmware'];
    const edge = Math.max(24, width / 8);
    const apart = (width - 2 * edge) / Math.max(1, names.length - 1);
    const place = (lane) => edge + lane * apart;
    pen.strokeStyle = colour('--line');
    pen.fillStyle = colour('--faint');
    pen.textAlign = 'center';
    names.forEach((name, lane) => {
      pen.beginPath();
      pen.moveTo(place(lane), 0);
      pen.lineTo(place(lane), height);
      pen.stroke();
    });
    const ends = (call) => {
      if (this.#perThread) return [Math.max(0, names.indexOf(call.thread)), names.length - 1];
      if (call.direction === 'down') return [0, 2];
      return call.direction === 'up' ? [2, 0] : [2, 1];
    };
    seen.forEach((call, n) => {
      const y = (first + n) * kRow - top + kRow / 2;
      const [from, to] = ends(call).map(place);
      const turn = to > from ? 1 : -1;
      pen.strokeStyle = pen.fillStyle = colour(call.exception === null || call.exception === undefined
        ? call.direction === 'up' ? '--up' : '--down' : '--bad');
      pen.setLineDash(call.running ? [4, 3] : []);
      pen.beginPath();
      pen.moveTo(from, y);
      pen.lineTo(to, y);
      pen.stroke();
      pen.setLineDash([]);
      pen.beginPath();
      pen.moveTo(to, y);
      pen.lineTo(to - turn * 7, y - 4);
      pen.lineTo(to - turn * 7, y + 4);
      pen.fill();
      const library = this.#perThread ? names.length - 1 : 1;
      if (this.#isLocked(call)) pen.fillRect(place(library) - 3, y - 3, 6, 6);
      if (call.waited > 0) pen.fillText(`waited ${time(call.waited)}`, (from + to) / 2, y - 2);
      // What it holds inside.
      let inner = n + 1;
      while (inner < seen.length && seen[inner].thread === call.thread && seen[inner].inside > call.inside) ++inner;
      if (inner > n + 1) {
        pen.fillRect(to - 2, y, 4, (inner - n - 1) * kRow);
      }
    });
    pen.fillStyle = colour('--paper');
    pen.fillRect(0, 0, width, 14);
    pen.fillStyle = colour('--faint');
    names.forEach((name, lane) => pen.fillText(oneLine(name, 12), place(lane), 11, apart - 4));
  }
}
