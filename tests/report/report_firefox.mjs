// SPDX-License-Identifier: MIT
// The same pages in Firefox: every view opens without a message, and the totals are those of the companion.
import { join } from "node:path";
import { folder, passed, profile, request, run, same, stem, tool, traces } from "./cttool.mjs";
import { openReport, openView, startBrowser, views } from "./open_report.mjs";

const browser = await startBrowser("firefox");
try {
  for (const trace of traces) {
    const file = join(folder, `${stem(trace)}.html`);
    run(tool, "report", trace, "-o", file);
    const report = await openReport(browser, file);
    const { page } = report;
    for (const view of views) {
      await openView(page, view);
      const shown = await page.$eval(`#view-${view}`, (element) => element.textContent.trim().length);
      if (shown === 0) throw new Error(`${trace}: the view ${view} is empty`);
    }
    const wanted = `${(request(trace).total_ns / 1e6).toFixed(3)} ms`;
    const title = await page.$eval("header", (element) => element.textContent);
    if (!title.replaceAll(",", "").includes(wanted)) throw new Error(`${trace}: ${title} is without ${wanted}`);
    await openView(page, "functions");
    const said = await page.$eval("#view-functions output", (element) => element.textContent);
    same(`${trace}: functions`, Number(said.replace(/,/g, "").match(/^\d+/)[0]), profile(trace).filter(({ calls }) => calls > 0).length);
    await report.close();
    passed("Firefox", trace, `${views.length} views, ${wanted}`);
  }
} finally {
  await browser.close();
}
