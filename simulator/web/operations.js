// What either side can do: every operation with fields for its arguments, the usual ones at hand.

import { byId, make, oneLine, quoted } from './texts.js';

const kTalk = ['assistant VornAudioIn.notifyAlexaInvocationDetected TapToTalk', 'assistant VornLEDController.setAnimation [listening, pulse]',
  'assistant VornAudioIn.startStreamingAudioData'];

// A name for people, and its statements.
const kUsual = {
  assistant: [
    ['Listen', kTalk],
    ['Stop listening', ['assistant VornAudioIn.stopStreamingAudioData', 'assistant VornLEDController.setAnimation []']],
    ['Mute', ['assistant VornDeviceCapabilities.onMute true']],
    ['Unmute', ['assistant VornDeviceCapabilities.onMute false']],
    ['Play music', ['assistant VornEMPAdapterControl.login "" guest true 3600s music', 'assistant VornEMPAdapterControl.launchAndPlay breakfast 0s music']],
    ['Next track', ['assistant VornEMPAdapterControl.nextTrack music', 'assistant VornEMPAdapterControl.getPlaybackState music']],
    ['Pause music', ['assistant VornEMPAdapterControl.pause music']],
    ['Show a card', ['assistant VornGUIOutput.renderGUICard "{\\"title\\":\\"Oslo\\",\\"text\\":\\"Rain until noon, then sun\\"}"']],
    ['Clear the display', ['assistant VornGUIOutput.clearGUICard']],
    ['Message to the device', ['assistant VornAppMessaging.sendAppMessage phone ping 1']],
    ['Somebody calls', ['assistant VornCommsManager.onCommsStateChanged RINGING']],
    ['The call ends', ['assistant VornCommsManager.onCommsStateChanged ENDED']],
    ['Set up', ['assistant VornOOBE.sendCBLInfo https://link.example/code AB12CD 600']],
  ],
  firmware: [
    ['Press talk', ['firmware VornAudioIn.notifyAlexaButtonPress AlexaButtonPress 300ms']],
    ['Release talk', ['firmware VornAudioIn.notifyAlexaButtonReleased']],
    ['Network is there', ['firmware VornDeviceInfo.notifyNetworkConnectionChanged CONNECTED']],
    ['Network is gone', ['firmware VornDeviceInfo.notifyNetworkConnectionChanged DISCONNECTED']],
    ['Message to the app', ['firmware VornAppMessaging.SendMessageToxApp speaker battery full']],
    ['Answer the call', ['firmware VornCommsManager.notifyCallAction 1']],
    ['Next, on the device', ['firmware VornGUIOutput.notifyPlaybackControllerAction NEXT']],
    ['Muted by hand', ['firmware VornDeviceInfo.notifyMuteChanged true']],
    ['Unmuted by hand', ['firmware VornDeviceInfo.notifyMuteChanged false']],
  ],
};

// A slider on each side.
const kVolume = {
  assistant: (value) => `assistant VornDeviceCapabilities.onSetVolume ${value}`,
  firmware: (value) => `firmware VornDeviceInfo.notifyVolumeChanged ${value}`,
};

const nameOf = (operation) => `${operation.adapter}.${operation.operation}`;
const usage = (operation) => [nameOf(operation), ...operation.parameters.map((parameter) => parameter.name)].join(' ');

class Side {
  #caller;
  #play;
  #operations;
  #chosen = null;
  #fields = make('div', { class: 'fields' });
  #inputs = [];
  #volume;
  #number = make('output', { 'aria-hidden': 'true' });  // The slider says it itself.
  #moves = 0;  // Of the slider, that have not been answered.
  #threads = make('input', { type: 'number', min: '1', max: '64', value: '1' });

  constructor(caller, operations, play) {
    this.#caller = caller;
    this.#play = play;
    this.#operations = operations.filter((operation) => operation.caller === caller);
    const form = byId(caller);
    const volume = make('input', { type: 'range', min: '0', max: '100', value: '30', id: `${caller}Volume`,
      input: () => { this.#number.textContent = volume.value; },
      change: async () => {
        ++this.#moves;
        await play([kVolume[caller](volume.value)]);
        --this.#moves;
      } });
    this.#volume = volume;
    const select = make('select', { id: `${caller}Operation`, change: () => this.#choose(select.value) });
    const groups = new Map();
    this.#operations.forEach((operation, index) => {
      if (!groups.has(operation.adapter)) groups.set(operation.adapter, make('optgroup', { label: operation.adapter }));
      groups.get(operation.adapter).append(make('option', { value: index }, usage(operation)));
    });
    select.append(...groups.values());
    form.append(
      make('h2', {}, caller === 'assistant' ? 'Assistant' : 'Firmware'),
      make('div', { class: 'bar', role: 'group', 'aria-label': 'The usual' },
        ...kUsual[caller].map(([name, statements]) => make('button', { type: 'button', click: () => play(statements) }, name))),
      make('label', {}, caller === 'assistant' ? 'Set the volume ' : 'Volume turned by hand ', volume, this.#number),
      make('h3', {}, 'Every operation'),
      make('label', {}, 'Operation ', select),
      this.#fields,
      make('button', { type: 'submit', class: 'main' }, 'Call'));
    form.addEventListener('submit', (event) => {
      event.preventDefault();
      this.#call();
    });
    this.#choose(0);
  }

  /** Puts the slider where the volume is, unless somebody is moving it. */
  showVolume(value) {
    if (this.#moves > 0 || this.#volume.matches(':active') || !/^\d+$/.test(value)) return;
    this.#volume.value = value;
    this.#number.textContent = value;
  }

  #choose(index) {
    this.#chosen = this.#operations[index];
    this.#inputs = this.#chosen.parameters.map((parameter) => make('input',
      { type: parameter.secret ? 'password' : 'text', autocomplete: 'off', spellcheck: 'false', name: parameter.name }));
    this.#fields.replaceChildren(
      ...this.#chosen.parameters.map((parameter, n) => make('label', {}, parameter.name,
        this.#inputs[n], make('small', {}, parameter.type + (parameter.optional ? '; may be left out' : '')))),
      ...(this.#caller === 'assistant' ? [make('label', {}, 'from so many threads at once', this.#threads)] : []),
      this.#chosen.locked ? make('p', {}, 'Locked: calls of this adapter come one at a time.') : make('p', {}, 'Not locked.'));
  }

  #call() {
    const values = this.#inputs.map((input, n) => {
      const { type, optional } = this.#chosen.parameters[n];
      if (input.value === '' && optional) return null;
      return type === 'a text' || type === 'a communications state' || input.value === '' ? quoted(input.value) : input.value;
    });
    while (values.length > 0 && values[values.length - 1] === null) values.pop();
    const threads = Number(this.#threads.value);
    const verb = this.#caller === 'assistant' && threads > 1 ? `together ${threads}` : this.#caller;
    this.#play([[verb, nameOf(this.#chosen), ...values.map((value) => value ?? '""')].join(' ')]);
  }
}

/** Both sides; gives what puts their sliders where the volume is. */
export function offer(operations, play) {
  const sides = ['assistant', 'firmware'].map((caller) => new Side(caller, operations, play));
  let volume = null;
  return (now) => {
    if (volume === null) {
      requestAnimationFrame(() => {
        sides.forEach((side) => side.showVolume(volume));
        volume = null;
      });
    }
    volume = now;
  };
}

/** What the header says of an operation: the lines of comment above its declaration. */
export async function documentation(adapter, operation) {
  if (!/^\w+$/.test(adapter)) return '';
  const reply = await fetch(`headers/${adapter}.h`).catch(() => null);
  if (!reply?.ok) return '';
  const lines = (await reply.text()).split('\n');
  const at = lines.findIndex((line) => !line.trim().startsWith('//') && new RegExp(`\\b${operation.replace(/\W/g, '')}\\(`).test(line));
  let from = at;
  while (from > 0 && lines[from - 1].trim().startsWith('///')) --from;
  if (at < 0) return '';
  let end = at;
  while (end + 1 < lines.length && !lines[end].includes(';') && !lines[end].includes('{')) ++end;
  return [...lines.slice(from, at).map((line) => line.trim().replace(/^\/\/\/ ?/, '')),
    lines.slice(at, end + 1).map((line) => line.trim()).join(' ')].map((line) => oneLine(line)).join('\n');
}
