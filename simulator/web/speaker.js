// The speaker as a person sees it. All of it is told by calls, so it can be shown of any host and of any recording.

import { nameOf } from './model.js';
import { byId, harmless, items, make, oneLine, plain } from './texts.js';
import { turns } from './turns.js';

const kLights = 12;
const kThousand = 1000;
const kMostCard = 5000;
const kNamespace = 'http://www.w3.org/2000/svg';

/** A colour and a pattern for each animation, the same in every run. */
function lightsOf(name) {
  let sum = 2166136261;
  for (const byte of new TextEncoder().encode(name)) sum = Math.imul(sum ^ byte, 16777619) >>> 0;
  const on = [];
  for (let light = 0; light < kLights; ++light) on.push(((sum >>> light) & 1) === 1 || light % 6 === 0);
  return { hue: sum % 360, on };
}

function cardOf(document) {
  let card;
  try {
    card = JSON.parse(document);
  } catch {
    card = null;
  }
  if (card === null || typeof card !== 'object') return document;
  const text = (value) => (typeof value === 'string' ? value : JSON.stringify(value));
  const lines = ['title', 'subtitle', 'text'].filter((name) => name in card).map((name) => text(card[name]));
  if (Array.isArray(card.list)) card.list.forEach((item, n) => lines.push(`${n + 1}. ${text(item)}`));
  if ('image' in card) lines.push(`[image: ${text(card.image)}]`);
  return lines.length > 0 ? lines.join('\n') : document;
}

const kPlaying = { Play: 'playing', Pause: 'paused', Stop: 'stopped', StartOver: 'playing', Previous: 'playing', Next: 'playing', Rewind: 'winding back', FastForward: 'winding forward' };

/** What calls tell of a device. */
export class DeviceState {
  facts = new Map([['Display', ''], ['Volume', '?'], ['Muted', '?'], ['Playback', '—'], ['Call', '—'], ['Setup', '—'], ['Dialog', '—'], ['Network', '?'], ['Audio focus', '—']]);
  animations = [];

  copy() {
    const copy = new DeviceState();
    copy.facts = new Map(this.facts);
    copy.animations = this.animations;
    return copy;
  }

  begin(device) {
    if (device.volume !== undefined) this.facts.set('Volume', String(device.volume));
    if (device.muted !== undefined) this.facts.set('Muted', device.muted ? 'yes' : 'no');
    if (device.network !== undefined) this.facts.set('Network', device.network ? 'connected' : 'not connected');
    if (device.locale !== undefined) this.facts.set('Language', String(device.locale));
  }

  /** Takes over what a call tells; one that threw tells nothing. */
  take(call) {
    if (call.running || (call.exception !== null && call.exception !== undefined)) return;
    const values = call.arguments.map(plain);
    const set = (name, value) => this.facts.set(name, value);
    const flag = (text) => (text === 'true' || text === 'on' ? 'yes' : 'no');
    const worked = !call.result.startsWith('false');
    const playback = /^VornDeviceCapabilities\.onChangePlayback(.+)$/.exec(nameOf(call));
    if (playback && worked) set('Playback', kPlaying[playback[1]] ?? playback[1]);
    switch (nameOf(call)) {
      case 'VornLEDController.setAnimation': this.animations = items(call.arguments[0]); break;
      case 'VornGUIOutput.renderGUICard': set('Display', cardOf(values[0])); break;
      case 'VornGUIOutput.clearGUICard': set('Display', ''); break;
      case 'VornDeviceInfo.getVolume': set('Volume', call.result); break;
      case 'VornDeviceInfo.notifyVolumeChanged': set('Volume', values[0]); break;
      case 'VornDeviceCapabilities.onSetVolume': if (worked) set('Volume', values[0]); break;
      case 'VornDeviceInfo.getMuteStatus': set('Muted', flag(call.result)); break;
      case 'VornDeviceInfo.notifyMuteChanged': set('Muted', flag(values[0])); break;
      case 'VornDeviceCapabilities.onMute': if (worked) set('Muted', flag(values[0])); break;
      case 'VornCommsManager.onCommsStateChanged': set('Call', values[0]); break;
      case 'VornOOBE.sendCBLInfo': set('Setup', `go to ${values[0]} and enter ${values[1]}`); break;
      case 'VornOOBE.alexaAuthStatusChanged': set('Setup', values[0]); break;
      case 'VornOOBE.notifyOOBECancelled': set('Setup', 'cancelled'); break;
      case 'VornAlexaState.alexaStateChanged': set('Assistant', values[0]); break;
      case 'VornAlexaState.dialogUXStateChanged': set('Dialog', values[0]); break;
      case 'VornDeviceInfo.getNetworkConnectionStatus': set('Network', flag(call.result) === 'yes' ? 'connected' : 'not connected'); break;
      case 'VornDeviceInfo.updateInternetConnectionStatus': set('Network', flag(values[0]) === 'yes' ? 'connected' : 'not connected'); break;
      case 'VornDeviceInfo.notifyNetworkConnectionChanged': set('Network', values[0]); break;
      case 'VornDeviceInfo.changeAlexaLocale': set('Language', values[0]); break;
      case 'VornAudioFocus.requestAudioFocus': if (worked) set('Audio focus', 'held'); break;
      case 'VornAudioFocus.releaseAudioFocus': set('Audio focus', 'free'); break;
      case 'VornAudioIn.startStreamingAudioData': if (worked) set('Microphone', 'streaming'); break;
      case 'VornAudioIn.stopStreamingAudioData': set('Microphone', 'quiet'); break;
      case 'VornEMPAdapterControl.getPlaybackState': this.#player(call.result); break;
      case 'VornEMPAdapterControl.pause': if (worked) set('Playback', 'paused'); break;
      case 'VornEMPAdapterControl.stop': if (worked) set('Playback', 'stopped'); break;
      case 'VornEMPAdapterControl.resume':
      case 'VornEMPAdapterControl.launchAndPlay':
      case 'VornEMPAdapterControl.nextTrack':
      case 'VornEMPAdapterControl.previousTrack': if (worked) set('Playback', 'playing'); break;
      default:
    }
  }

  #player(text) {
    try {
      const state = JSON.parse(text);
      this.facts.set('Playback', `${state.state}, ${state.title}`);
    } catch {
      // A host of one's own may say it in another way.
    }
  }
}

/** What a recording tells of a device, after any of its calls. */
export class Past {
  #calls;
  #kept = [new DeviceState()];  // Before the first of each thousand calls.

  constructor(calls) {
    this.#calls = calls;
  }

  async after(index) {
    const pause = turns();
    const nearest = Math.min(Math.floor(index / kThousand), this.#kept.length - 1);
    const state = this.#kept[nearest].copy();
    for (let at = nearest * kThousand; at <= index; ++at) {
      if (at === this.#kept.length * kThousand) {
        this.#kept.push(state.copy());
        await pause();
      }
      state.take(this.#calls[at]);
    }
    return state;
  }
}

export class SpeakerView {
  #lights = [];
  #ring;
  #title = make('h2', {}, 'Speaker');
  #name = make('p', { id: 'animation' });
  #card = make('div', { id: 'card', role: 'img', tabindex: '0', 'aria-label': 'Display' });
  #facts = make('dl', { id: 'facts' });
  #state = null;
  #frame = 0;
  #asked = false;

  constructor() {
    this.#ring = document.createElementNS(kNamespace, 'svg');
    this.#ring.id = 'ring';
    this.#ring.setAttribute('viewBox', '0 0 150 150');
    this.#ring.setAttribute('role', 'img');
    const group = document.createElementNS(kNamespace, 'g');
    group.setAttribute('class', 'lights');
    for (let light = 0; light < kLights; ++light) {
      const dot = document.createElementNS(kNamespace, 'circle');
      const angle = (light / kLights) * 2 * Math.PI;
      dot.setAttribute('cx', 75 + 55 * Math.sin(angle));
      dot.setAttribute('cy', 75 - 55 * Math.cos(angle));
      dot.setAttribute('r', 8);
      group.append(dot);
      this.#lights.push(dot);
    }
    this.#ring.append(group);
    byId('speaker').append(this.#title, this.#ring, this.#name, this.#card, this.#facts);
    // The animations one after the other.
    setInterval(() => {
      if (!this.#state || this.#state.animations.length < 2) return;
      ++this.#frame;
      this.#light();
    }, 1200);
  }

  show(state, title = 'Speaker') {
    this.#title.textContent = title;
    if (this.#state !== state) this.#frame = 0;
    this.#state = state;
    if (this.#asked) return;
    this.#asked = true;
    requestAnimationFrame(() => {
      this.#asked = false;
      this.#render();
    });
  }

  #light() {
    const { animations } = this.#state;
    const still = matchMedia('(prefers-reduced-motion: reduce)').matches;
    const name = animations.length === 0 ? null : animations[still ? 0 : this.#frame % animations.length];
    const { hue, on } = name === null ? { hue: 0, on: [] } : lightsOf(name);
    this.#lights.forEach((dot, light) => {
      dot.style.fill = on[light] ? `hsl(${hue} 80% 50%)` : 'none';
    });
    this.#ring.classList.toggle('spinning', name !== null);
    const words = name === null ? 'lights off' : oneLine(animations.join(', '));
    this.#ring.setAttribute('aria-label', `Ring of lights: ${words}`);
    if (this.#name.textContent !== words) this.#name.textContent = words;
  }

  #render() {
    this.#light();
    const card = this.#state.facts.get('Display');
    this.#card.textContent = harmless(card, kMostCard);
    this.#card.setAttribute('aria-label', card ? `Display: ${oneLine(card)}` : 'Display: empty');
    this.#facts.replaceChildren(...[...this.#state.facts].filter(([name]) => name !== 'Display')
      .flatMap(([name, value]) => [make('dt', {}, name), make('dd', { 'data-fact': name }, oneLine(value))]));
  }
}
