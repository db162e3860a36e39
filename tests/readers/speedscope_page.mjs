// SPDX-License-Identifier: MIT
// speedscope's web page in Chromium, as its users have it, with a file of ours open in it.
import { createServer } from "node:http";
import { readFile } from "node:fs/promises";
import { createRequire } from "node:module";
import { basename, dirname, extname, join } from "node:path";
import puppeteer from "puppeteer-core";

const app = join(dirname(createRequire(import.meta.url).resolve("speedscope/package.json")),
  "dist/release");
const types = { ".html": "text/html", ".js": "text/javascript", ".css": "text/css", ".json": "application/json" };

// What Chromium says about drawing without a graphics card is not about the page.
const aboutDrawing = /^\[\.WebGL-|WebGL initialized|GPU stall/;

// It takes the arguments of a call in a Chrome trace for a part of its name, and wonders at every end, which
// does not repeat them: Tried to end "f" when "f {"id":7}" was on the top of the stack. Ending f {"id":7} instead.
// It ends the right one; of another one it would say so.
function isAboutArguments(text) {
  const pattern = /^ts=[\d.]+: Tried to end "(.*?)" when "(.*)" was on the top of the stack\. Ending /s;
  const [, ended, top] = text.match(pattern) ?? [];
  return top?.startsWith(`${ended} {`) ?? false;
}

// Serves the page, and below /file/ the one file.
async function serve(file) {
  const server = createServer(async (asked, answer) => {
    const path = decodeURIComponent(new URL(asked.url, "http://localhost").pathname);
    const place = path.startsWith("/file/") ? file : join(app, basename(path));
    try {
      const bytes = await readFile(place);
      answer.writeHead(200, { "Content-Type": types[extname(place)] ?? "application/octet-stream" });
      answer.end(bytes);
    } catch {
      answer.writeHead(404).end();
    }
  });
  await new Promise((done) => server.listen(0, "127.0.0.1", done));
  return server;
}

export function startBrowser(size = { width: 1200, height: 700 }) {
  return puppeteer.launch({
    executablePath: process.env.CHROMIUM ?? "/usr/bin/chromium",
    args: ["--no-sandbox", "--disable-dev-shm-usage", "--enable-unsafe-swiftshader"],
    defaultViewport: size,
  });
}

function complain(problems) {
  if (problems.length === 0) return;
  const first = problems.slice(0, 3).join("; ");
  throw new Error(`speedscope: ${problems.length} complaints, first ${first}`);
}

// Waits for what the page does in its own time.
async function until(what, problems, condition) {
  for (const end = Date.now() + 60_000; Date.now() < end;) {
    if (problems.length > 0) break;
    const result = await condition();
    if (result) return result;
    await new Promise((done) => setTimeout(done, 50));
  }
  complain(problems);
  throw new Error(`speedscope shows no ${what}`);
}

// Opens the page with the file and hands it to `look(page, problems)`. What the page complains about,
// in its console too, is an error.
export async function withPage(browser, file, look) {
  const server = await serve(file);
  const page = await browser.newPage();
  const problems = [];
  page.on("pageerror", (error) => problems.push(`error on the page: ${error.message}`));
  page.on("dialog", (dialog) => { problems.push(`alert: ${dialog.message()}`); dialog.dismiss(); });
  page.on("requestfailed", (asked) => problems.push(`not loaded: ${asked.url()}`));
  page.on("console", (line) => {
    const text = line.text();
    if (!["error", "warn"].includes(line.type()) || aboutDrawing.test(text) || isAboutArguments(text)) return;
    problems.push(`console: ${text}`);
  });
  try {
    const home = `http://127.0.0.1:${server.address().port}`;
    const place = encodeURIComponent(`${home}/file/${encodeURIComponent(basename(file))}`);
    await page.evaluateOnNewDocument(() => {
      const makeUrl = URL.createObjectURL;
      URL.createObjectURL = (blob) => { globalThis.savedBlob = blob; return makeUrl(blob); };
    });
    await page.goto(`${home}/index.html#profileURL=${place}`);
    await until("profile", problems, () => page.evaluate(() => document.title !== "speedscope"));
    const result = await look(page, problems);
    complain(problems);
    return result;
  } finally {
    await page.close();
    server.close();
    server.closeAllConnections();
  }
}

// The rows of the table that its sandwich view shows, those of the biggest totals.
export async function tableRows(page, problems) {
  await page.keyboard.press("3");
  const head = await page.waitForFunction(() =>
    [...document.querySelectorAll("th")].find((cell) => cell.innerText.trim() === "Total"));
  await head.click();
  // The page is drawn anew in its next frame.
  await page.evaluate(() => new Promise((done) => requestAnimationFrame(() => requestAnimationFrame(done))));
  return until("table", problems, () => page.evaluate(() => {
    const found = [...document.querySelectorAll("tr")].map((row) =>
      [...row.querySelectorAll("td")].map((cell) => cell.innerText.trim()));
    // There is a list of profiles too.
    const functions = found.filter(([total]) => total?.endsWith("%)"));
    return functions.length > 0 && functions;
  }));
}

// All that it holds: the file that its users save with Ctrl+S.
export async function saved(page, problems) {
  await page.keyboard.down("Control");
  await page.keyboard.press("s");
  await page.keyboard.up("Control");
  const text = await until("saved file", problems, () => page.evaluate(() => globalThis.savedBlob?.text()));
  return JSON.parse(text);
}
