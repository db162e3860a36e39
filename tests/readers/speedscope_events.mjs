// SPDX-License-Identifier: MIT
// What the events of an evented profile of speedscope's come to, by the names of frames. Times are in
// units of the profile times `scale`, rounded, so that microseconds become whole nanoseconds.

export function spansOf(profile, frames, scale = 1) {
  const open = [];
  const spans = [];
  let last = profile.startValue;
  for (const { type, frame, at } of profile.events) {
    if (at < last) throw new Error(`${profile.name}: an event at ${at} behind one at ${last}`);
    last = at;
    const time = Math.round(at * scale);
    if (type === "O") {
      open.push({ name: frames[frame].name, frame, begin: time, inner: 0 });
      continue;
    }
    const span = open.pop();
    if (span?.frame !== frame) throw new Error(`${profile.name}: a close of ${frames[frame].name} at ${at}`);
    span.total = time - span.begin;
    span.own = span.total - span.inner;
    if (open.length > 0) open.at(-1).inner += span.total;
    spans.push(span);
  }
  if (open.length > 0) throw new Error(`${profile.name}: ${open.length} frames are never closed`);
  return spans;
}

