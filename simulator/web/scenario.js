// Scenarios: played statement by statement, each sent when the one before has been played.

import { byId, counted, download, oneLine } from './texts.js';

const kLargest = 1 << 20;

export class Scenario {
  #server;
  #lines = [];
  #steps = [];
  #at = 0;
  #state = 'stopped';  // playing, paused
  #run = 0;            // One that was stopped has no more to say.
  #underWay = false;   // Whether it waits for an answer.
  #unmet = [];
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
      event.target.value = '';
      if (!file) return;
      if (file.size > kLargest) this.#say(`${oneLine(file.name)} is larger than 1 MiB, which no scenario of this page is.`, true);
      else byId('script').value = await file.text();
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
    byId('step').disabled = state === 'playing' || this.#underWay;
    byId('halt').disabled = state !== 'playing';
    byId('stop').disabled = state === 'stopped';
    byId('script').readOnly = state !== 'stopped';
  }

  #stop(words, bad = false) {
    ++this.#run;
    this.#underWay = false;
    this.#set('stopped');
    this.#say(words, bad);
  }

  /** Reads all of it before any of it is played; false when it cannot be, or was stopped meanwhile. */
  async #read(state) {
    const run = ++this.#run;
    const text = byId('script').value;
    this.#underWay = true;
    this.#set(state);
    try {
      const steps = await this.#server.check(text);
      if (run !== this.#run) return false;
      this.#lines = text.split('\n');
      this.#steps = steps;
    } catch (error) {
      if (run === this.#run) this.#stop(error.message, true);
      return false;
    }
    this.#at = 0;
    this.#unmet = [];
    this.#underWay = false;
    this.#set(this.#state);
    return true;
  }

  async #start() {
    if (this.#state === 'stopped') {
      if (await this.#read('playing')) this.#goOn();
      return;
    }
    this.#set('playing');
    if (!this.#underWay) this.#goOn();
  }

  async #step() {
    if (this.#state === 'stopped' && !(await this.#read('paused'))) return;
    if (!this.#underWay && (await this.#one())) this.#goOn();
  }

  async #goOn() {
    while (this.#state === 'playing' && (await this.#one()));
  }

  /** Plays the next statement; false at the end, and when it was stopped meanwhile. */
  async #one() {
    const run = this.#run;
    if (this.#at === this.#steps.length) return this.#end();
    const number = this.#steps[this.#at++];
    const line = this.#lines[number - 1];
    this.#say(`line ${number}: ${oneLine(line)}`);
    this.#underWay = true;
    this.#set(this.#state);
    const problem = await this.#server.play(line).then(() => null, (error) => error.message);
    if (run !== this.#run) return false;
    this.#underWay = false;
    this.#set(this.#state);
    if (problem !== null) {
      this.#unmet.push(`line ${number}: ${problem}`);
      if (!byId('keepGoing').checked || !line.trim().startsWith('expect')) {
        this.#stop(this.#unmet[this.#unmet.length - 1], true);
        return false;
      }
    }
    return this.#at < this.#steps.length || this.#end();
  }

  #end() {
    const unmet = this.#unmet.length;
    this.#stop(`played to the end, ${counted(this.#steps.length, 'statement')}${
      unmet > 0 ? `; not met: ${counted(unmet, 'expectation')}, the first in ${this.#unmet[0]}` : ''}`, unmet > 0);
    return false;
  }
}
