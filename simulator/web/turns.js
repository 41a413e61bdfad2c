// Long work in parts: whatever there is to do, what is seen goes on moving.

const kMost = 8;  // Milliseconds.

// Not a timer: those of a page that nobody sees hardly run.
const channel = new MessageChannel();
const waiting = [];
channel.port1.addEventListener('message', () => waiting.shift()());
channel.port1.start();

/** The browser's turn; what comes after the await is a task of its own. */
export function next() {
  return new Promise((resolve) => {
    waiting.push(resolve);
    channel.port2.postMessage(null);
  });
}

/** For one piece of work: awaited again and again, it lets the browser have its turn when this one has been long, and tells whether it did. */
export function turns() {
  let began = performance.now();
  return async () => {
    if (performance.now() - began < kMost) return false;
    await next();
    began = performance.now();
    return true;
  };
}
