// What a device meets, as buttons; each is a statement like any other.

import { byId, make, oneLine } from './texts.js';

const kSides = ['DeviceInfo', 'DeviceCapabilities', 'GUIOutput', 'OOBE', 'AudioIn', 'AppMessaging', 'CommsManager'];
const kMicrophone = 'VornAudioIn.sendAudioData';

export class Faults {
  #gone = new Set();      // Objects of the assistant side, adapters, trace.
  #broken = new Map();    // By operation: what is wrong with it, in words.
  #words = make('p', { id: 'wrong', role: 'status' });

  constructor(operations, play) {
    const names = [...new Set(operations.map((operation) => `${operation.adapter}.${operation.operation}`))].sort();
    const area = make('select', { id: 'area' }, ...['all', ...kSides, 'adapters'].map((name) => make('option', {}, name)));
    const operation = make('select', { id: 'faulty' }, ...names.map((name) => make('option', {}, name)));
    operation.value = 'VornDeviceInfo.getVolume';
    const wait = make('input', { id: 'wait', type: 'text', value: '500ms', size: '8' });
    const button = (name, statements) => make('button', { type: 'button', click: () => play(statements()) }, name);
    byId('faults').append(
      make('div', { class: 'bar', role: 'group', 'aria-label': 'Assistant side' },
        make('label', {}, 'Object of the assistant side ', area),
        button('It is gone', () => [`remove ${area.value}`]),
        button('It is back', () => [`create ${area.value}`])),
      make('div', { class: 'bar', role: 'group', 'aria-label': 'Host' },
        make('label', {}, 'Operation of the host ', operation),
        make('label', {}, 'Time ', wait),
        button('It is slow', () => [`delay ${operation.value} ${wait.value}`]),
        button('It throws', () => [`fail ${operation.value} "the host is broken"`]),
        button('It blocks, two threads ask', () => [`delay ${operation.value} 60s`, `together 2 ${operation.value}`]),
        button('It is right again', () => [`restore ${operation.value}`])),
      make('div', { class: 'bar', role: 'group', 'aria-label': 'Sound' },
        button('The microphone has gaps', () => [`delay ${kMicrophone} 300ms`]),
        button('The microphone has no gaps', () => [`restore ${kMicrophone}`])),
      make('div', { class: 'bar', role: 'group', 'aria-label': 'Trace file' },
        button('Trace file cannot be written', () => ['remove trace']),
        button('Trace file can be written', () => ['create trace'])),
      make('div', { class: 'bar' },
        make('button', {
          type: 'button', class: 'main',
          click: () => play([...[...this.#broken.keys()].map((name) => `restore ${name}`), 'create trace', 'create all', 'create adapters']),
        }, 'Put everything right'), this.#words));
    this.#render();
  }

  restart() {
    this.#gone.clear();
    this.#broken.clear();
    this.#render();
  }

  /** A statement that was played, on whichever page. */
  played(statement) {
    const [verb, name, ...rest] = statement.split(' ');
    const parts = name === 'all' ? kSides : [name];
    if (verb === 'delay') this.#broken.set(name, `${name} takes ${rest.join(' ')} longer`);
    else if (verb === 'fail') this.#broken.set(name, `${name} throws`);
    else if (verb === 'restore') this.#broken.delete(name);
    else if (verb === 'remove') parts.forEach((part) => this.#gone.add(part));
    else if (verb === 'create') parts.forEach((part) => this.#gone.delete(part));
    else return;
    this.#render();
  }

  #render() {
    const gone = [...this.#gone].filter((part) => part !== 'trace');
    const words = [...this.#broken.values()];
    if (gone.length > 0) words.push(`gone: ${gone.join(', ')}`);
    if (this.#gone.has('trace')) words.push('the trace file cannot be written');
    this.#words.textContent = words.length === 0 ? 'Everything is right.' : `Now: ${oneLine(words.join('; '), 1000)}.`;
  }
}
