// SPDX-License-Identifier: MIT
// Every view, light and dark, on a wide and on a narrow screen, with a node selected and without: axe finds
// nothing that the guidelines forbid (WCAG 2.1 AA), and nothing is wider than the screen.
import { readFileSync } from "node:fs";
import { createRequire } from "node:module";
import { join } from "node:path";
import { folder, passed, run, stem, tool, traces } from "./cttool.mjs";
import { openReport, startBrowser, views } from "./open_report.mjs";

const axe = readFileSync(createRequire(import.meta.url).resolve("axe-core/axe.min.js"), "utf8");
const sizes = [{ width: 1280, height: 800 }, { width: 360, height: 740 }];
const colours = ["light", "dark"];

async function settled(page) {
  await page.evaluate(() => new Promise((done) => setTimeout(() => requestAnimationFrame(done), 150)));
}

async function check(page, what) {
  await settled(page);
  const violations = await page.evaluate(async () => {
    const tags = ["wcag2a", "wcag2aa", "wcag21a", "wcag21aa", "best-practice"];
    const found = await window.axe.run(document, { runOnly: { type: "tag", values: tags } });
    return found.violations.map(({ id, nodes }) => `${id}: ${nodes.length}, first ${nodes[0].html.slice(0, 200)} ${nodes[0].failureSummary ?? ""}`);
  });
  if (violations.length > 0) throw new Error(`${what}: ${violations.join("\n")}`);
  const [width, screen] = await page.evaluate(() => [document.documentElement.scrollWidth, innerWidth]);
  if (width > screen) throw new Error(`${what}: ${width} pixels wide on a screen of ${screen}`);
}

const browser = await startBrowser();
try {
  for (const trace of traces) {
    const file = join(folder, `${stem(trace)}.html`);
    run(tool, "report", trace, "-o", file);
    for (const size of sizes) {
      for (const colour of colours) {
        const media = [{ name: "prefers-color-scheme", value: colour }];
        const report = await openReport(browser, file, "", { size, media });
        await report.page.evaluate(axe);
        for (const view of views) {
          const what = `${view}, ${colour}, ${size.width} wide`;
          await report.page.evaluate((to) => { location.hash = to; }, `#v=${view}`);
          await check(report.page, what);
          await report.page.evaluate((to) => { location.hash = to; }, `#v=${view}&n=1`);
          await check(report.page, `${what}, with details`);
        }
        await report.close();
      }
    }
    passed("axe", trace, `${views.length} views, ${colours.join(" and ")}, ${sizes.map(({ width }) => width).join(" and ")} wide`);
  }
} finally {
  await browser.close();
}
