// SPDX-License-Identifier: MIT
// Texts that try to get out of the place where a page shows them: none runs, none asks for anything, none
// becomes an element of the page, and the long ones do not stop it.
import { passed, request, run, folder, tool, traces } from "./cttool.mjs";
import { join } from "node:path";
import { readFileSync } from "node:fs";
import { openReport, openView, startBrowser, views } from "./open_report.mjs";

// Nothing of a trace stands in the document as it is.
function checkSource(html) {
  for (const text of ["broken()", "198.51.100.1", "\u2028", "javascript:"]) {
    if (html.includes(text)) throw new Error(`the document has ${JSON.stringify(text)} of the trace`);
  }
}

// Elements and attributes that only a text of the trace could have made.
function foreignElements() {
  const isForeign = (element) => {
    if (/^(IMG|LINK|IFRAME|OBJECT|EMBED|BASE)$/.test(element.tagName)) return true;
    if (/^(SCRIPT|STYLE|META)$/.test(element.tagName) && element.closest("#app")) return true;
    return [...element.attributes].some(({ name, value }) =>
      /^on/i.test(name) || (/^(href|src|action|xlink:href)$/i.test(name) && !value.startsWith("#")));
  };
  return [...document.querySelectorAll("*")].filter(isForeign).map((element) => element.outerHTML.slice(0, 200));
}

// The characters that would turn the text around them.
function countTurned() {
  const walker = document.createTreeWalker(document.body, NodeFilter.SHOW_TEXT);
  let turned = 0;
  for (let node = walker.nextNode(); node; node = walker.nextNode()) {
    if (node.parentElement.tagName === "SCRIPT") continue;
    if (/[\u202a-\u202e\u2066-\u2069\u0000]/.test(node.data)) ++turned;
  }
  return turned;
}

const browser = await startBrowser();
try {
  for (const trace of traces) {
    const file = join(folder, "hostile.html");
    run(tool, "report", trace, "-o", file);
    checkSource(readFileSync(file, "utf8"));
    const report = await openReport(browser, file);
    const { page } = report;
    const nodes = request(trace).nodes;
    for (const view of views) {
      await openView(page, view);
      for (let id = 0; id < nodes; ++id) {
        await page.evaluate((to) => {
          location.hash = to;
          return new Promise((done) => setTimeout(done));
        }, `#v=${view}&n=${id}`);
      }
      await page.evaluate(() => new Promise((done) => requestAnimationFrame(() => setTimeout(done, 100))));
      const foreign = await page.evaluate(foreignElements);
      if (foreign.length > 0) throw new Error(`${view}: ${foreign.length} foreign elements, first ${foreign[0]}`);
      const turned = await page.evaluate(countTurned);
      if (turned > 0) throw new Error(`${view}: ${turned} texts that turn others`);
    }
    await report.close();
    passed("hostile texts", trace, `${views.length} views of ${nodes} nodes`);
  }
} finally {
  await browser.close();
}
