// What a device meets, as buttons; each is a statement like any other.

import { byId, make } from './texts.js';

const kAreas = ['all', 'DeviceInfo', 'DeviceCapabilities', 'GUIOutput', 'OOBE', 'AudioIn', 'AppMessaging', 'CommsManager', 'adapters'];

export function offerFaults(operations, play) {
  const names = [...new Set(operations.map((operation) => `${operation.adapter}.${operation.operation}`))].sort();
  const area = make('select', { id: 'area' }, ...kAreas.map((name) => make('option', {}, name)));
  const operation = make('select', { id: 'faulty' }, ...names.map((name) => make('option', {}, name)));
  operation.value = 'VornDeviceInfo.getVolume';
  const wait = make('input', { id: 'wait', type: 'text', value: '500ms', size: '8' });
  const broken = new Set();
  const button = (name, statements, change = () => {}) => make('button', {
    type: 'button',
    click: () => {
      change();
      play(statements());
    },
  }, name);
  const disturb = () => broken.add(operation.value);
  byId('faults').append(
    make('div', { class: 'bar', role: 'group', 'aria-label': 'Assistant side' },
      make('label', {}, 'Object of the assistant side ', area),
      button('It is gone', () => [`remove ${area.value}`]),
      button('It is back', () => [`create ${area.value}`])),
    make('div', { class: 'bar', role: 'group', 'aria-label': 'Host' },
      make('label', {}, 'Operation ', operation),
      make('label', {}, 'Time ', wait),
      button('It is slow', () => [`delay ${operation.value} ${wait.value}`], disturb),
      button('It throws', () => [`fail ${operation.value} "the host is broken"`], disturb),
      button('It blocks, two threads ask', () => [`delay ${operation.value} 60s`, `together 2 ${operation.value}`], disturb),
      button('It is right again', () => [`restore ${operation.value}`], () => broken.delete(operation.value))),
    make('div', { class: 'bar', role: 'group', 'aria-label': 'Sound' },
      button('The microphone has gaps', () => ['delay VornAudioIn.sendAudioData 300ms'], () => broken.add('VornAudioIn.sendAudioData')),
      button('Trace file cannot be written', () => ['remove trace']),
      button('It can be written', () => ['create trace'])),
    make('div', { class: 'bar' },
      make('button', {
        type: 'button', class: 'main', click: () => {
          play([...[...broken].map((name) => `restore ${name}`), 'create trace', 'create all', 'create adapters']);
          broken.clear();
        },
      }, 'Put everything right')));
}
