// SPDX-License-Identifier: MIT
// Every control of the page, by mouse and by keyboard: views, selection and links, back and forward, search,
// tables, tree and flame graph, printing.
import { join } from "node:path";
import { folder, passed, request, rows, run, same, stem, tool, traces } from "./cttool.mjs";
import { nodesWithValues } from "./report_nodes.mjs";
import { allRows, goTo, openReport, openView, startBrowser, views } from "./open_report.mjs";

const opened = (page) => page.$$eval(".view:not([hidden])", (found) => found.map((view) => view.dataset.view));
const selected = (page) => page.$eval("#details", (details) => (details.hidden ? null : details.querySelector("dd").textContent));
const place = (page) => page.evaluate(() => location.hash);

async function settle(page) {
  await page.evaluate(() => new Promise((done) => setTimeout(() => requestAnimationFrame(() => setTimeout(done)), 60)));
}

// After the flame graph has moved to where it was sent.
async function still(page) {
  await page.evaluate(() => new Promise((done) => setTimeout(done, 500)));
}

async function press(page, ...keys) {
  for (const key of keys) await page.keyboard.press(key);
  await settle(page);
}

async function waitForText(page, selector, pattern) {
  await page.waitForFunction((where, what) => new RegExp(what).test(document.querySelector(where)?.textContent ?? ""), { timeout: 20_000 }, selector, pattern);
}

function expect(condition, what) {
  if (!condition) throw new Error(what);
}

async function checkViews(page) {
  await goTo(page, "#v=overview");
  await page.focus('[role="tab"][aria-selected="true"]');
  for (const view of [...views.slice(1), views[0]]) {
    await press(page, "ArrowRight");
    same("the view that the arrow opens", await opened(page), [view]);
  }
  await press(page, "End");
  same("the view that End opens", await opened(page), [views.at(-1)]);
  await page.evaluate(() => document.activeElement.blur());
  for (const [i, view] of views.entries()) {
    await press(page, String((i + 1) % 10));
    same(`the view of key ${(i + 1) % 10}`, await opened(page), [view]);
  }
  for (const view of views) {
    await openView(page, view);
    same("the view that a click opens", await opened(page), [view]);
  }
}

async function checkLinks(page) {
  await goTo(page, "#n=2");
  same("the node of a link", [await selected(page), ...await opened(page)], ["#2", "tree"]);
  await page.evaluate(() => new Promise((done) => setTimeout(done, 800)));
  await goTo(page, "#v=flame&n=3");
  await page.goBack();
  await settle(page);
  same("the node one step back", [await selected(page), ...await opened(page)], ["#2", "tree"]);
  await page.goForward();
  await settle(page);
  same("the node one step forward", [await selected(page), ...await opened(page)], ["#3", "flame"]);
  await page.click("#details .close");
  await settle(page);
  same("the node after closing the details", await selected(page), null);
  await goTo(page, "#n=999999999");
  same("a node that there is not", await selected(page), null);
}

// Whether a string or number of the values has the text; members' names do not count.
function hasText(value, text) {
  if (Array.isArray(value)) return value.some((item) => hasText(item, text));
  if (value !== null && typeof value === "object") return Object.entries(value).some(([key, item]) => key.toLowerCase().includes(text) || hasText(item, text));
  return String(value).toLowerCase().includes(text);
}

// What is looked for: a word, a number and the end of a class's name that are there.
function soughtIn(nodes) {
  const name = nodes.find(({ values }) => values.this?.class)?.values.this.class ?? "";
  const number = nodes.find(({ values }) => values.args?.some((value) => Number.isInteger(value) && value > 10));
  const found = [name.slice(-6).toLowerCase(), String(number?.values.args.find((value) => Number.isInteger(value) && value > 10) ?? "")];
  return ["the", ...found.filter(Boolean)];
}

async function search(page, where, text) {
  await page.evaluate(() => document.activeElement.blur());
  await press(page, "/");
  same("what / focuses", await page.evaluate(() => document.activeElement.id), "search");
  await press(page, "Backspace");
  await waitForText(page, "#search-hits", "^$");
  await page.select("#search-in", where);
  await page.keyboard.type(text);
  await waitForText(page, "#search-hits", "hit");
  return Number((await page.$eval("#search-hits", (hits) => hits.textContent)).replace(/,/g, "").replace("no hit", "0 hits").match(/(\d+) hit/)[1]);
}

async function checkSearch(page, trace, file) {
  const name = rows(trace, "select name from functions where calls > 1 and name regexp '^[a-z_]{4,}$' order by own_ns desc limit 1")[0].name;
  const wanted = rows(trace, `select id from nodes where instr(lower(text), '${name}') and kind = 'call' and
    (select instr(lower(name), '${name}') from calls c where c.id = nodes.id) order by id`).map(({ id }) => id);
  const found = await search(page, "names", name);
  expect(found >= wanted.length && wanted.length > 0, `${found} hits of the name ${name}, and ${wanted.length} calls`);
  await press(page, "Enter");
  const first = await selected(page);
  await press(page, "Enter");
  expect(first !== null && (found === 1 || (await selected(page)) !== first), `Enter goes from ${first} to ${await selected(page)}`);
  await page.click("#search-previous");
  await settle(page);
  same("the hit before", await selected(page), first);
  const nodes = nodesWithValues(trace);
  // In texts, of any case; in numbers; where words say nothing of themselves; in classes.
  for (const text of soughtIn(nodes)) {
    const least = nodes.filter(({ values }) => Object.values(values).some((value) => hasText(value, text))).length;
    same(`hits of ${text} in values`, await search(page, "values", text), least);
  }
  same("hits of nonsense", await search(page, "values", "zqzqzqzq"), 0);
  await press(page, "Escape");
  same("hits after Escape", await page.$eval("#search-hits", (hits) => hits.textContent), "");
}

async function checkTables(page) {
  await goTo(page, "#v=functions");
  for (const column of ["total", "calls", "name", "each", "memory", "place", "own"]) {
    const button = `#view-functions thead [data-column="${column}"] button`;
    await page.click(button);
    const once = await page.$eval(`#view-functions [data-column="${column}"]`, (head) => head.ariaSort);
    await page.click(button);
    const twice = await page.$eval(`#view-functions [data-column="${column}"]`, (head) => head.ariaSort);
    expect(new Set([once, twice, "ascending", "descending"]).size === 2, `${column} is sorted ${once}, then ${twice}`);
  }
  const many = Number(await page.$eval("#view-functions table", (table) => table.getAttribute("aria-rowcount")));
  await page.type("#functions-filter", "str");
  await settle(page);
  const names = await allRows(page, "#view-functions .table", (row) => row.cells[3].textContent);
  expect(names.length > 0 && names.length < many - 1 && names.every((name) => /str/i.test(name)), `the filter leaves ${names}`);
  await page.$eval("#functions-filter", (input) => {
    input.value = "";
    input.dispatchEvent(new Event("input"));
  });
  await page.focus("#view-functions tbody a");
  await press(page, "ArrowDown", "Enter");
  expect(!(await page.$eval("#functions-one", (part) => part.hidden)), "Enter on a function shows nothing of it");
}

// Callers as `cttool top --callers` has them.
async function checkCallers(page, trace) {
  const { id, name } = rows(trace, "select id, name from functions where calls > 1 and name regexp '^[a-z_]+$' order by calls desc limit 1")[0];
  await goTo(page, `#v=functions&a=${id}`);
  for (const [option, title] of [["--callers", "Called by"], ["--callees", "Called"]]) {
    let wanted = [];
    try {
      wanted = JSON.parse(run(tool, "top", trace, option, name, "--limit", "0", "--format", "json")).rows;
    } catch {
      continue; // it calls nothing
    }
    const shown = await page.$$eval("#functions-one section", (parts, start) => {
      const part = parts.find((each) => each.querySelector("h3").textContent.replace(/ \(.*/, "").startsWith(start));
      return part && [...part.querySelectorAll("tbody tr[data-row]")].map((row) => [...row.cells].slice(0, 3).map((cell) => Number(cell.textContent.replaceAll(",", ""))));
    }, title);
    const figures = wanted.map(({ total_ns, own_ns, calls }) => [total_ns, own_ns].map((ns) => Math.round(ns / 1000) / 1000).concat(calls));
    const inOrder = (list) => list.map((row) => JSON.stringify(row)).sort();
    same(`${option} of ${name}`, inOrder(shown.slice(0, figures.length)), inOrder(figures));
  }
}

async function checkTree(page, nodes) {
  await goTo(page, "#v=tree&n=0");
  const rowsSaid = () => page.$eval("#tree-grid", (grid) => Number(grid.getAttribute("aria-rowcount")) - 1);
  await page.click("#tree-close");
  await settle(page);
  const closed = await rowsSaid();
  await page.focus("#tree-grid");
  await press(page, "Home", "ArrowRight");
  const open = await rowsSaid();
  expect(closed < open, `the right arrow opens ${closed} rows to ${open}`);
  await press(page, "ArrowDown");
  same("the row below", await selected(page), "#1");
  await press(page, "ArrowLeft", "ArrowLeft");
  same("the row around", await selected(page), "#0");
  await press(page, "ArrowLeft");
  same("rows after closing", await rowsSaid(), closed);
  await page.click("#tree-fold");
  await page.click("#tree-all");
  await settle(page);
  same("all rows", await rowsSaid(), nodes);
  await page.focus("#tree-grid");
  await press(page, "End");
  const last = await page.$$eval("#tree-grid [data-row]", (found) => Math.max(...found.map((row) => Number(row.dataset.row))));
  same("the last row", last, nodes - 1);
  await page.click("#tree-fold");
  await page.click("#tree-start");
  await settle(page);
  await page.click('#tree-grid [data-row="1"] .tree-what b');
  await settle(page);
  same("the row that was clicked", await selected(page), "#1");
}

async function checkFlame(page) {
  await goTo(page, "#v=flame&n=0");
  const data = () => page.$eval(".flame-canvas", (canvas) => ({ ...canvas.dataset }));
  await page.click("#flame-all");
  await still(page);
  const all = await data();
  expect(Number(all.boxes) > 3, `the flame graph has ${all.boxes} boxes`);
  await page.focus(".flame-canvas");
  await press(page, "ArrowDown");
  same("the box below", await selected(page), "#1");
  await page.click("#flame-in");
  await still(page);
  const width = ({ range }) => { const [from, to] = range.split(" ").map(Number); return to - from; };
  expect(width(await data()) < width(all), "zooming in shows as much as before");
  await page.focus(".flame-canvas");
  await press(page, "Escape");
  await still(page);
  same("the range after Escape", (await data()).range, all.range);
  for (const weight of ["memory", "calls", "time"]) {
    await page.select("#flame-weight", weight);
    await settle(page);
    same("the weight", (await data()).weight, weight);
  }
  await page.click('[data-form="merged"]');
  await page.waitForFunction(() => document.querySelector(".flame-canvas").dataset.form === "merged" && Number(document.querySelector(".flame-canvas").dataset.boxes) > 3);
  await page.click('[data-form="order"]');
  await page.waitForFunction(() => document.querySelector(".flame-canvas").dataset.form === "order");
  await settle(page);
  await goTo(page, "#v=flame");
  const box = await (await page.$(".flame-canvas")).boundingBox();
  await page.mouse.move(box.x + box.width / 2, box.y + 29);
  await page.waitForSelector(".flame-tip:not([hidden])");
  await page.mouse.click(box.x + box.width / 2, box.y + 29);
  await settle(page);
  expect(/^#\d+$/.test(await selected(page)), "a click on a box selects nothing");
}

async function checkPrint(page) {
  await goTo(page, "#v=overview");
  const pdf = await page.pdf({ format: "A4" });
  expect(pdf.length > 10_000, `the print has ${pdf.length} bytes`);
}

const browser = await startBrowser();
try {
  for (const trace of traces) {
    const file = join(folder, `${stem(trace)}.html`);
    run(tool, "report", trace, "-o", file);
    const report = await openReport(browser, file);
    const { page } = report;
    await checkViews(page);
    await checkLinks(page);
    await checkSearch(page, trace, file);
    await checkTables(page);
    await checkCallers(page, trace);
    await checkTree(page, request(trace).nodes);
    await checkFlame(page);
    await checkPrint(page);
    expect((await place(page)).startsWith("#v="), "the address does not say the view");
    await report.close();
    passed("controls of the page", trace, "views, links, search, tables, callers, tree, flame graph, print");
  }
} finally {
  await browser.close();
}
