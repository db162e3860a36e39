// SPDX-License-Identifier: MIT
//
// Long work in slices, so that the page keeps answering.

const SLICE_MS = 12;

// Lets the page do what waits.
export function pause(): Promise<void> {
  return new Promise((resolve) => {
    const channel = new MessageChannel();
    channel.port1.onmessage = () => {
      channel.port1.close();
      resolve();
    };
    channel.port2.postMessage(0);
  });
}

// Runs a generator to its end; it yields every few milliseconds. Undefined if isStale said so.
export async function inSlices<T>(work: Generator<void, T>, isStale: () => boolean): Promise<T | undefined> {
  let end = performance.now() + SLICE_MS;
  for (;;) {
    const step = work.next();
    if (step.done) return step.value;
    if (performance.now() < end) continue;
    await pause();
    if (isStale()) return undefined;
    end = performance.now() + SLICE_MS;
  }
}
