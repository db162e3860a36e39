// SPDX-License-Identifier: MIT
// speedscope's web page opens the exports that its users would open in it: the profile has its name, the
// table shows the request's time, and the own times that the page holds are those of the calls.
import { basename } from "node:path";
import { exported, passed, request, rows, same, sameSums, stem, sums, traces } from "./cttool.mjs";
import { spansOf } from "./speedscope_events.mjs";
import { saved, startBrowser, tableRows, withPage } from "./speedscope_page.mjs";

// What speedscope makes of each format, and the name that it shows. In Chrome's it takes a call's arguments
// for a part of its name; folded stacks have no single calls; what it works out from callgrind's sums is a
// guess, but for the total. Spans without length are not kept.
const titleOf = ({ method, uri, url }) => (method ? `${method} ${uri}` : url);
const formats = [
  { format: "speedscope", suffix: ".speedscope.json.gz", options: ["--gzip"], title: titleOf,
    scale: 1, frame: (name) => name, calls: true },
  { format: "chrome", suffix: ".trace.json.gz", options: ["--gzip"], title: titleOf, scale: 1000,
    frame: (name) => name.replace(/ \{("|\}).*$/s, ""), calls: true },
  { format: "folded", suffix: ".folded.txt", options: [], title: (_, file) => basename(file),
    scale: 1, frame: (name) => name, calls: false },
  { format: "callgrind", prefix: "callgrind.out.", options: [], title: (_, file) => basename(file), scale: 1 },
];

const units = { ns: 1, "µs": 1e3, ms: 1e6, s: 1e9 };

// "197.06ms (100%)" in nanoseconds, and what its last digit stands for.
function shownTime(text) {
  const [, digits, unit] = text.match(/^([\d,.]+)(ns|µs|ms|s)? /) ?? [];
  const [whole, decimals = ""] = (digits ?? "").split(".");
  if (!whole) throw new Error(`speedscope shows ${text}`);
  const factor = units[unit ?? "ns"];
  return { time: Number(`${whole.replaceAll(",", "")}.${decimals}`) * factor, digit: factor / 10 ** decimals.length };
}

function checkShownTotal(table, wanted) {
  const totals = table.map(([total]) => shownTime(total));
  const longest = totals.reduce((one, other) => (other.time > one.time ? other : one));
  if (Math.abs(longest.time - wanted) <= longest.digit) return;
  throw new Error(`speedscope shows ${longest.time} of ${wanted} ns`);
}

function checkOwnTimes(trace, spans, frame, calls) {
  const figures = (one) => (calls ? one : { own_ns: one.own_ns });
  const longer = rows(trace, `select name, count(*) as calls, sum(own_ns) as own_ns from calls
    where total_ns > 0 group by name`);
  const wanted = new Map(longer.map(({ name, ...sum }) => [name, figures(sum)]));
  const got = sums(spans.map(({ name, own }) => [frame(name), figures({ calls: 1, own_ns: own })]));
  sameSums("own time", new Map([...got].filter(([name]) => wanted.has(name))), wanted);
  return wanted.size;
}

async function check(browser, trace, { format, prefix = "", suffix = "", options, title, scale, frame, calls }) {
  const file = exported(trace, format, `${prefix}${stem(trace)}${suffix}`, ...options);
  const facts = request(trace);
  const { total_ns } = facts;
  const { text, table, document } = await withPage(browser, file, async (page, problems) => ({
    text: await page.evaluate(() => `${document.title}\n${document.body.innerText}`),
    table: await tableRows(page, problems),
    document: await saved(page, problems),
  }));
  const [times] = document.profiles;
  for (const part of [times.name, title(facts, file)]) {
    if (!text.includes(part)) throw new Error(`speedscope shows ${text} without ${part}`);
  }
  checkShownTotal(table, total_ns);
  same("the profile's end", Math.round(times.endValue * scale), total_ns);

  const spans = spansOf(times, document.shared.frames, scale);
  const compared = frame ? checkOwnTimes(trace, spans, frame, calls) : spans.length;
  const what = frame ? "functions as in calls" : "spans";
  passed(`speedscope: ${format}`, trace, `"${times.name}", ${total_ns} ns, ${compared} ${what}`);
}

const browser = await startBrowser();
try {
  for (const trace of traces) for (const format of formats) await check(browser, trace, format);
} finally {
  await browser.close();
}
