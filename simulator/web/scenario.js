// Scenarios: played statement by statement, each sent when the one before has been played.

import { byId, download, oneLine } from './texts.js';

export class Scenario {
  #server;
  #lines = [];
  #steps = [];
  #at = 0;
  #state = 'stopped';  // playing, paused
  #played = [];

  constructor(server) {
    this.#server = server;
    byId('start').addEventListener('click', () => this.#start());
    byId('halt').addEventListener('click', () => this.#set('paused'));
    byId('step').addEventListener('click', () => this.#step());
    byId('stop').addEventListener('click', () => this.#stop('stopped'));
    byId('morning').addEventListener('click', () => this.#morning());
    byId('openScript').addEventListener('change', async (event) => {
      const file = event.target.files[0];
      if (file) byId('script').value = (await file.text()).slice(0, 1 << 20);
      event.target.value = '';
    });
    byId('saveScript').addEventListener('click', () => download('played.scenario', this.#played.map((line) => `${line}\n`).join('')));
    this.#morning();
  }

  /** A statement that was played, on any page. */
  remember(statement) {
    this.#played.push(statement);
    if (this.#played.length > 10000) this.#played.shift();
  }

  async #morning() {
    byId('script').value = await this.#server.text('morning.scenario');
  }

  #say(text, bad = false) {
    byId('progress').textContent = text;
    byId('progress').classList.toggle('bad', bad);
  }

  #set(state) {
    this.#state = state;
    byId('start').disabled = state === 'playing';
    byId('step').disabled = state === 'playing';
    byId('halt').disabled = state !== 'playing';
    byId('stop').disabled = state === 'stopped';
    byId('script').readOnly = state !== 'stopped';
  }

  #stop(words, bad = false) {
    this.#set('stopped');
    this.#say(words, bad);
  }

  /** Reads all of it before any of it is played. */
  async #read() {
    const text = byId('script').value;
    this.#lines = text.split('\n');
    try {
      this.#steps = await this.#server.check(text);
    } catch (error) {
      this.#stop(error.message, true);
      return false;
    }
    this.#at = 0;
    return true;
  }

  async #start() {
    const fresh = this.#state === 'stopped';
    this.#set('playing');
    if (fresh && !(await this.#read())) return;
    while (this.#state === 'playing' && (await this.#one()));
  }

  async #step() {
    if (this.#state === 'stopped' && !(await this.#read())) return;
    this.#set('paused');
    await this.#one();
  }

  /** Plays the next statement; false at the end. */
  async #one() {
    if (this.#at === this.#steps.length) {
      this.#stop(`played to the end, ${this.#steps.length} statements`);
      return false;
    }
    const number = this.#steps[this.#at++];
    const line = this.#lines[number - 1];
    this.#say(`line ${number}: ${oneLine(line)}`);
    try {
      await this.#server.play(line);
    } catch (error) {
      this.#stop(`line ${number}: ${error.message}`, true);
      return false;
    }
    if (this.#at === this.#steps.length) {
      this.#stop(`played to the end, ${this.#steps.length} statements`);
      return false;
    }
    return true;
  }
}
