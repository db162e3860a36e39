// SPDX-License-Identifier: MIT
// report_pictures.mjs CTTOOL TRACE: writes report-overview.png and report-flame.png into the current folder, two
// views of a report. tools/pictures.sh calls it.
import { join } from "node:path";
import { folder, run, tool, traces } from "./cttool.mjs";
import { openReport, startBrowser } from "./open_report.mjs";

const pictures = [["overview", 620], ["flame", 560]];
const pause = (milliseconds) => new Promise((done) => setTimeout(done, milliseconds));

const file = join(folder, "report.html");
run(tool, "report", traces[0], "-o", file);
const browser = await startBrowser();
try {
  for (const [view, height] of pictures) {
    const report = await openReport(browser, file, `#v=${view}`, { size: { width: 960, height } });
    await pause(1000);
    await report.page.screenshot({ path: `report-${view}.png` });
    await report.close();
  }
} finally {
  await browser.close();
}
