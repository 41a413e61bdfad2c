import { Faults } from './faults.js';
import { Figures, Measures } from './figures.js';
import { Lanes } from './lanes.js';
import { Calls, answerOf, differences, nameOf, readRecording } from './model.js';
import { documentation, offer } from './operations.js';
import { Scenario } from './scenario.js';
import { Server } from './server.js';
import { DeviceState, Past, SpeakerView } from './speaker.js';
import { byId, counted, download, harmless, make, oneLine, time } from './texts.js';
import { turns } from './turns.js';

const kMostReport = 200000;
const kLargestRecording = 1 << 28;
const kMostValue = 5000;

const server = new Server();
const speaker = new SpeakerView();
const figures = new Figures();
let device = new DeviceState();
let live = new Calls();
let measures = new Measures();
const locked = new Set();  // Operations whose calls come one at a time.
const opened = [];  // Recordings: {name, calls, past, measures}
let shown = live;
let watching = '';
let host = '';  // One's own, in place of the simulated one.
let connected = false;
let alive = true;
let found = false;  // By the doctor.

const lanes = new Lanes((call) => {
  detail(call);
  if (shown !== live) room(call);
}, (call) => locked.has(nameOf(call)));

// ---- One call ------------------------------------------------------------------------------------------------

async function detail(call) {
  const facts = [['Number', call.call], ['Began', time(call.time)], ['Took', call.running ? 'not ended yet' : time(call.duration)],
    ['Thread', call.thread], ['Direction', call.direction], ['Arrived', call.interface ? `${call.interface}, slot ${call.slot}` : 'nowhere'],
    ['Inside', `${call.inside} calls`], ...(call.samples === undefined ? call.arguments : []).map((value, n) => [`Argument ${n + 1}`, value]),
    ['Answer', answerOf(call) || '—']];
  if (locked.has(nameOf(call))) facts.push(['Lock', `held by this call${call.waited === null ? ', the wait for it was not measured' : `, waited ${time(call.waited)} for it`}`]);
  if (call.samples !== undefined) facts.push(['Sound', `${call.samples} samples, peak ${call.peak}, level ${call.level}`]);
  for (const line of call.trace ?? []) facts.push(['Trace', line]);
  const words = make('pre', {});
  byId('details').replaceChildren(make('h3', {}, oneLine(nameOf(call))),
    make('dl', {}, ...facts.flatMap(([name, value]) => [make('dt', {}, name), make('dd', {}, harmless(value, kMostValue))])), words);
  words.textContent = await documentation(call.adapter, call.operation);
}

let asked = 0;

/** The speaker as it was after a call of a recording. */
async function room(call) {
  const mine = ++asked;
  const recording = opened.find(({ calls }) => calls === shown);
  const then = await recording?.past.after(shown.all.indexOf(call));
  if (then && mine === asked) speaker.show(then, `Speaker, after call ${call.call} of ${oneLine(recording.name, 60)}`);
}

function now() {
  ++asked;
  speaker.show(device);
}

// ---- What is shown -------------------------------------------------------------------------------------------

function options(select, names, all) {
  const before = select.value;
  const wanted = ['', ...[...names].sort()];
  if (select.options.length === wanted.length) return;
  select.replaceChildren(...wanted.map((name) => make('option', { value: name }, name === '' ? all : oneLine(name, 60))));
  select.value = wanted.includes(before) ? before : '';
}

let counting = false;
function count() {
  if (counting) return;
  counting = true;
  requestAnimationFrame(() => {
    counting = false;
    options(byId('byAdapter'), shown.adapters, 'all');
    options(byId('byThread'), shown.threads, 'all');
    const words = [counted(lanes.length, 'call')];
    if (shown.shown !== shown.all) words.push(`of ${shown.all.length}`);
    if (lanes.length < shown.shown.length) words.push(`(paused, ${shown.shown.length - lanes.length} more)`);
    if (shown.missed > 0) words.push(`(${shown.missed} earlier ones are not kept)`);
    if (shown.leftOut > 0) words.push(`(left out: ${counted(shown.leftOut, 'line')} that could not be read)`);
    byId('count').textContent = words.join(' ');
  });
}

function redraw() {
  lanes.show(shown.shown);
  count();
}

function filter() {
  shown.filter({ adapter: byId('byAdapter').value, direction: byId('byDirection').value, thread: byId('byThread').value, text: byId('byText').value }, redraw);
}

function pause(paused) {
  byId('pause').setAttribute('aria-pressed', String(paused));
  lanes.pause(paused ? shown.all[shown.all.length - 1]?.call ?? 0 : null);
  count();
}

function sources() {
  byId('shown').replaceChildren(make('option', { value: '-1' }, watching ? 'the recording that is watched' : 'what happens now'),
    ...opened.map(({ name }, n) => make('option', { value: n }, oneLine(name, 60))));
}

function show(n) {
  shown = n < 0 ? live : opened[n].calls;
  byId('shown').value = n;
  byId('stepping').hidden = n < 0;
  if (n < 0) now();
  figures.show(n < 0 ? measures : opened[n].measures, n < 0 ? 'Figures' : `Figures of ${oneLine(opened[n].name, 60)}`);
  pause(false);
  filter();
  if (n >= 0) lanes.choose(0);
}

byId('byDirection').append(...['', 'down', 'up', 'life', 'own'].map((name) => make('option', { value: name }, name || 'all')));
for (const id of ['byAdapter', 'byDirection', 'byThread']) byId(id).addEventListener('change', filter);
byId('byText').addEventListener('input', filter);
byId('shown').addEventListener('change', (event) => show(Number(event.target.value)));
byId('pause').addEventListener('click', () => pause(byId('pause').getAttribute('aria-pressed') !== 'true'));
byId('perThread').addEventListener('change', (event) => { lanes.perThread = event.target.checked; });
byId('save').addEventListener('click', async () => download('calls.jsonl', await shown.recording()));
for (const [name, to] of [['First', () => 0], ['Back', () => lanes.chosen - 1], ['Next', () => lanes.chosen + 1], ['Last', () => Infinity]]) {
  byId('stepping').append(make('button', { type: 'button', click: () => lanes.choose(to()) }, name));
}

// ---- Recordings ----------------------------------------------------------------------------------------------

function tell(text, bad = false) {
  byId('outcome').textContent = text;
  byId('outcome').removeAttribute('aria-busy');
  byId('outcome').classList.toggle('bad', bad);
}

async function open(files) {
  let last = null;
  if (files.length === 0) tell('What was dropped is no file. Drop a recording.', true);
  for (const file of files) {
    try {
      if (file.size > kLargestRecording) throw new Error(`${file.name} is larger than 256 MiB, which this page does not take.`);
      tell(`Reading ${oneLine(file.name)} …`);
      const told = new Measures(true);
      const calls = await readRecording(file, (line) => told.note(line));
      const pause = turns();
      for (const call of calls.all) {
        told.add(call);
        await pause();
      }
      last = { name: file.name, calls, past: new Past(calls.all), measures: told };
      if (opened.length === 2) opened.shift();
      opened.push(last);
      tell(`${oneLine(file.name)}: ${counted(calls.all.length, 'call')}`);
    } catch (error) {
      // A browser's own words, as for a folder, do not name the file.
      tell(oneLine(error.message.includes(file.name) ? error.message : `${file.name} cannot be read: ${error.message}`, 600), true);
    }
  }
  if (!last) return;
  sources();
  show(opened.indexOf(last));
  compare();
}

async function compare() {
  const box = byId('comparison');
  box.hidden = opened.length < 2;
  if (box.hidden) return;
  const [one, other] = opened;
  box.replaceChildren(make('p', {}, 'Comparing …'));
  const found = await differences(one.calls.all, other.calls.all);
  if (one !== opened[0] || other !== opened[1]) return;
  const words = (call) => (call ? oneLine(`${nameOf(call)}(${call.arguments.join(', ')}) = ${answerOf(call) || 'no result'}`, 160) : 'no call');
  const go = (left, right) => {
    const n = left ? 0 : 1;
    show(n);
    lanes.choose(opened[n].calls.all.indexOf(left ?? right));
  };
  box.replaceChildren(
    make('h3', {}, found.length === 0 ? `${oneLine(one.name)} and ${oneLine(other.name)} tell the same`
      : `${oneLine(one.name)} and ${oneLine(other.name)} differ in ${found.length === 200 ? '200 places or more' : counted(found.length, 'place')}`),
    make('ol', {}, ...found.map(([left, right]) => make('li', {},
      make('button', { type: 'button', click: () => go(left, right) }, `${words(left)}\n${words(right)}`)))));
}

byId('open').addEventListener('change', (event) => {
  open([...event.target.files]);
  event.target.value = '';
});
addEventListener('dragover', (event) => {
  event.preventDefault();
  byId('drop').hidden = false;
});
addEventListener('dragleave', (event) => { if (!event.relatedTarget) byId('drop').hidden = true; });
addEventListener('drop', (event) => {
  event.preventDefault();
  byId('drop').hidden = true;
  open([...event.dataTransfer.files]);
});

// ---- What comes ----------------------------------------------------------------------------------------------

function report(text) {
  byId('reports').hidden = false;
  byId('toReports').hidden = false;
  const box = byId('report');
  const end = box.scrollHeight;
  box.textContent = (box.textContent + harmless(text) + '\n').slice(-kMostReport);
  box.scrollTop = end;  // Its beginning says what it is.
}

function state() {
  const runs = `The speaker runs${host ? `, with the host ${oneLine(host)}` : ''}.${found ? ' The doctor found something: see Reports.' : ''}`;
  const serves = watching ? `Watching ${oneLine(watching)}` : alive ? runs : 'The speaker has ended: see Reports, where it can be started again.';
  byId('source').textContent = connected ? serves
    : 'No connection to vorn-speaker: it has ended, or is not reached. Start it again and open the address that it prints.';
}

function begin() {
  live = new Calls();
  device = new DeviceState();
  measures = new Measures(watching !== '');
  faults.restart();
  waits([]);
  alive = true;
  found = false;
  state();
  show(-1);
  compare();
}

function line(read) {
  if (read.recording !== undefined) {
    if (!watching) begin();
    live.started = String(read.started ?? '');
  } else if (read.watching !== undefined) {
    watching = String(read.watching);
    begin();
    sources();
    for (const id of ['assistant', 'firmware', 'scenario', 'faults']) byId(id).hidden = true;
  } else if (read.device) {
    host = String(read.device.host ?? '');
    device.begin(read.device);
    speaker.show(device);
    showVolume(device.facts.get('Volume'));
    state();
  } else if (read.earlier) {
    if (Array.isArray(read.earlier.arguments)) device.take(read.earlier);
  } else if (read.missed) {
    live.missed += read.missed;
  } else if (read.played) {
    if (read.played.statement) scenario.remember(read.played.statement);
    if (!read.played.problem) faults.played(read.played.statement);
    server.played(read.played);
  } else if (read.waiting) {
    waits(read.waiting);
  } else if (read.process || read.sound) {
    measures.note(read);
  } else if (read.finding) {
    found = true;
    report(read.finding);
    state();
  } else if (read.report !== undefined) {
    report(read.report);
  } else if (read.note !== undefined) {
    report(read.note);
  } else if (read.ended !== undefined) {
    alive = false;
    report(`The speaker ended with status ${read.ended}.`);
    server.ended();
    state();
  } else if (read.leftOut) {
    live.leftOut += read.leftOut;
  } else if (live.add(read)) {
    const call = read.open ?? read;
    measures.add(call);
    device.take(call);
    showVolume(device.facts.get('Volume'));
    if (shown === live) {
      speaker.show(device);
      redraw();
    }
  }
}

/** Threads that have asked an adapter and are not let in yet. */
function waits(all) {
  const list = Array.isArray(all) ? all : [];
  byId('waits').textContent = list.map(({ operation, thread }) =>
    `${oneLine(String(operation))} waits for its adapter's lock, ${oneLine(String(thread))}`).join('; ');
}

/** Whether an operation that answers false says that it did not do what it was to do. */
const didNot = (statement, result) => /^false\b/.test(result) && !/\.(get|is)/.test(statement);

async function play(statements) {
  for (const statement of statements) {
    const name = statement.split(' ', statement.startsWith('together ') ? 3 : 2).join(' ');  // The rest may be secret.
    tell(`${oneLine(name)} …`);
    byId('outcome').setAttribute('aria-busy', 'true');
    try {
      const { statement: kept, result } = await server.play(statement);
      const shown = kept.startsWith('#') ? `${name} ********` : kept;
      tell(`${oneLine(shown)}${result ? ` gave ${oneLine(result)}` : ''}${didNot(shown, result) ? ': it was not done' : ''}`);
    } catch (error) {
      tell(`${oneLine(name)}: ${error.message}`, true);
      return;
    }
  }
}

byId('restart').addEventListener('click', () => server.restart().catch((error) => tell(error.message, true)));

const list = await server.operations();
for (const operation of list) if (operation.locked) locked.add(nameOf(operation));
const showVolume = offer(list, play);
const faults = new Faults(list, play);
const scenario = new Scenario(server);
sources();
server.listen(line, (now) => {
  connected = now;
  state();
});
setInterval(() => measures.tick(), 1000);
document.body.dataset.ready = 'yes';
