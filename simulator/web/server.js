// The way to the speaker: statements go up one by one, all that happens comes down as a stream of lines.

import { harmless } from './texts.js';
import { turns } from './turns.js';

const kMostUnread = 1 << 24;  // Characters; beyond, the server is to wait.

export class Server {
  #waiting = new Map();  // By the statement's number: who waits for what came of it.
  #early = new Map();    // What came before the answer to the request did.

  async #post(path, body) {
    let reply;
    try {
      reply = await fetch(path, { method: 'POST', body });
    } catch {
      throw new Error('vorn-speaker does not answer any more; start it again and open the address it prints.');
    }
    if (!reply.ok) throw new Error(harmless((await reply.text()).trim()));
    return reply.json();
  }

  async text(path) {
    const reply = await fetch(path).catch(() => null);
    return reply?.ok ? reply.text() : '';
  }

  async operations() {
    return (await fetch('operations')).json();
  }

  /** The numbers of the lines that are statements; throws with all the mistakes. */
  check(text) {
    return this.#post('scenario', text);
  }

  restart() {
    return this.#post('restart', '');
  }

  /** Plays a statement; gives it, with its secrets masked, and its result. Throws when it could not be played, or was not met. */
  async play(line) {
    const { id } = await this.#post('statement', line);
    const early = this.#early.get(id);
    this.#early.delete(id);
    const played = early ?? (await new Promise((resolve) => this.#waiting.set(id, resolve)));
    if (played.problem) throw new Error(harmless(played.problem));
    return played;
  }

  played(played) {
    const waiting = this.#waiting.get(played.id);
    this.#waiting.delete(played.id);
    if (waiting) {
      waiting(played);
      return;
    }
    this.#early.set(played.id, played);
    if (this.#early.size > 100) this.#early.delete(this.#early.keys().next().value);
  }

  /** Whoever waits is told that the speaker ended. */
  ended() {
    for (const resolve of this.#waiting.values()) resolve({ problem: 'the speaker ended', result: '' });
    this.#waiting.clear();
  }

  listen(onLine, onState) {
    const source = new EventSource('events');
    source.addEventListener('open', () => onState(true));
    source.addEventListener('error', () => onState(false));
    const unread = [];
    let characters = 0;
    let reading = false;
    const read = async () => {
      reading = true;
      const pause = turns();
      for (let text; (text = unread.shift()) !== undefined;) {
        characters -= text.length;
        for (const line of text.split('\n')) {
          if (characters < kMostUnread) await pause();
          let told;
          try {
            told = JSON.parse(line);
          } catch {
            continue;
          }
          try {
            onLine(told);
          } catch (error) {
            reportError(error);  // The lines after it are shown all the same.
          }
        }
      }
      reading = false;
    };
    source.addEventListener('message', (event) => {
      unread.push(event.data);
      characters += event.data.length;
      if (!reading) read();
    });
  }
}
