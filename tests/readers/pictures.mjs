// SPDX-License-Identifier: MIT
// pictures.mjs CTTOOL TRACE: writes speedscope.png and devtools.png into the current folder, a trace as two
// viewers in Chromium show it. tools/pictures.sh calls it.
import { exported, stem, traces } from "./cttool.mjs";
import { startBrowser, withPage } from "./speedscope_page.mjs";

const size = { width: 1000, height: 640 };
const pause = (milliseconds) => new Promise((done) => setTimeout(done, milliseconds));

async function pictureOfSpeedscope(browser, trace) {
  const file = exported(trace, "speedscope", `${stem(trace)}.speedscope.json`);
  await withPage(browser, file, async (page) => {
    await page.keyboard.press("Escape");
    await page.keyboard.press("2");
    await pause(2000);
    await page.screenshot({ path: "speedscope.png" });
  });
}

// An element of the developer tools, which lie in shadow trees.
function find(page, selector) {
  return page.waitForFunction((wanted) => {
    const search = (root) => {
      for (const element of root.querySelectorAll("*")) {
        if (element.matches(wanted)) return element;
        const found = element.shadowRoot && search(element.shadowRoot);
        if (found) return found;
      }
      return null;
    };
    return search(document);
  }, { timeout: 20_000 }, selector);
}

async function pictureOfDevtools(browser, trace) {
  const page = await browser.newPage();
  await page.goto("devtools://devtools/bundled/devtools_app.html?panel=timeline");
  const input = await find(page, "input[type=file]");
  await input.asElement().uploadFile(exported(trace, "chrome", `${stem(trace)}.trace.json`));
  await pause(8000);
  // Without hints and sidebar, and with process and thread open, which are drawn on a canvas.
  await page.mouse.click(size.width - 28, 77);
  await (await find(page, "[aria-label='Hide sidebar']")).asElement().click();
  await pause(1000);
  for (const [x, y] of [[10, 129], [20, 146], [250, 260]]) {
    await page.mouse.click(x, y);
    await pause(1000);
  }
  await page.screenshot({ path: "devtools.png" });
  await page.close();
}

const browser = await startBrowser(size);
try {
  await pictureOfSpeedscope(browser, traces[0]);
  await pictureOfDevtools(browser, traces[0]);
} finally {
  await browser.close();
}
