// SPDX-License-Identifier: MIT
// A report in a browser, with everything that the page should not do written down: messages on the console,
// errors, requests, what the policy of the page refused.
import { resolve } from "node:path";
import { pathToFileURL } from "node:url";
import puppeteer from "puppeteer-core";

export const views = ["overview", "flame", "tree", "functions", "sql", "output", "headers", "errors", "includes", "events"];

const browsers = {
  chrome: { executablePath: process.env.CHROMIUM ?? "/usr/bin/chromium", args: ["--no-sandbox", "--disable-dev-shm-usage"] },
  firefox: { executablePath: process.env.FIREFOX ?? "/usr/bin/firefox-esr" },
};

export function startBrowser(browser = "chrome") {
  return puppeteer.launch({ browser, ...browsers[browser], defaultViewport: { width: 1280, height: 800 } });
}

function watch(page, file, problems) {
  page.on("console", (message) => problems.push(`console: ${message.text()}`));
  page.on("pageerror", (error) => problems.push(`error: ${error.message}`));
  page.on("dialog", (dialog) => {
    problems.push(`dialog: ${dialog.message()}`);
    void dialog.dismiss();
  });
  page.on("popup", () => problems.push("a window was opened"));
  page.on("request", (request) => {
    if (request.url().split("#")[0] !== file) problems.push(`request: ${request.url().slice(0, 200)}`);
  });
}

// Opens the report with this part behind `#`, and waits for its first view. `options.media`: features such as
// the wish for dark colours. `close` throws if there was any problem.
export async function openReport(browser, path, hash = "", options = {}) {
  const page = await browser.newPage();
  const file = pathToFileURL(resolve(path)).href;
  const problems = [];
  watch(page, file, problems);
  if (options.size) await page.setViewport(options.size);
  if (options.media) await page.emulateMediaFeatures(options.media);
  await page.evaluateOnNewDocument(() => {
    addEventListener("securitypolicyviolation", (event) => console.error(`refused: ${event.violatedDirective}`));
    window.broken = () => console.error("a text of the trace ran");
  });
  await page.goto(file + hash, { waitUntil: "load" });
  await page.waitForFunction(() => performance.getEntriesByName("ct-first-view").length > 0, { timeout: 60_000 });
  return {
    page,
    problems,
    async close() {
      await page.close();
      if (problems.length > 0) throw new Error(`${path}: ${problems.length} problems, first ${problems.slice(0, 3).join("; ")}`);
    },
  };
}

// Opens one of its views by its tab.
export async function openView(page, view) {
  await page.click(`[role="tab"][data-view="${view}"]`);
  await page.waitForSelector(`#view-${view}:not([hidden])`);
}

// Goes to this part behind `#`, and waits until the page has drawn it.
export async function goTo(page, hash) {
  await page.evaluate((to) => {
    location.hash = to;
    return new Promise((done) => setTimeout(() => requestAnimationFrame(() => setTimeout(done)), 30));
  }, hash);
}

// All rows of a table, of which the page only has those in sight, as what `read` makes of each.
export function allRows(page, selector, read) {
  return page.$eval(selector, async (root, reader) => {
    const make = new Function(`return ${reader}`)();
    const rows = new Map();
    const next = () => new Promise((done) => requestAnimationFrame(() => setTimeout(done)));
    for (root.scrollTop = 0, await next(); ; await next()) {
      for (const row of root.querySelectorAll("tbody tr[data-row]")) rows.set(Number(row.dataset.row), make(row));
      const before = root.scrollTop;
      root.scrollTop += root.clientHeight;
      if (root.scrollTop === before) break;
    }
    return [...rows.entries()].sort(([a], [b]) => a - b).map(([, row]) => row);
  }, read.toString());
}
