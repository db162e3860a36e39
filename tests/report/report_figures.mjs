// SPDX-License-Identifier: MIT
// What the page says is what the companion says: the profile, the calls of functions with their values, the
// request, headers and the body, includes, exceptions and errors.
import { join } from "node:path";
import { folder, passed, request, rows, run, same, stem, tool, traces } from "./cttool.mjs";
import { allRows, goTo, openReport, startBrowser } from "./open_report.mjs";

// Milliseconds as the page has them, three decimals.
const ms = (ns) => (Math.round(ns / 1000) / 1000).toFixed(3);
const number = (text) => Number(text.replaceAll(",", ""));

async function checkProfile(page, trace) {
  await goTo(page, "#v=functions");
  const shown = await allRows(page, "#view-functions .table", (row) => {
    const cells = [...row.cells].map((cell) => cell.textContent);
    return [Number(row.querySelector("[data-function]").dataset.function), ...cells.slice(0, 3)];
  });
  const wanted = rows(trace, "select id, own_ns, total_ns, calls from functions where calls > 0");
  const said = new Map(shown.map(([id, own, total, calls]) => [id, [number(own), number(total), number(calls)]]));
  same(`${trace}: functions`, said.size, wanted.length);
  for (const { id, own_ns, total_ns, calls } of wanted) {
    same(`${trace}: function ${id}`, said.get(id), [Number(ms(own_ns)), Number(ms(total_ns)), calls]);
  }
  const order = shown.map(([, own]) => number(own));
  if (order.some((own, i) => i > 0 && own > order[i - 1])) throw new Error(`${trace}: functions are not in order of own time`);
  return wanted.length;
}

// The slowest calls of a function, and who called it.
async function checkFunction(page, trace, id) {
  await goTo(page, `#v=functions&a=${id}`);
  const calls = await allRows(page, "#functions-one [data-slowest] .table", (row) => Number(row.querySelector("[data-node]").dataset.node));
  const wanted = rows(trace, `select id, total_ns from calls where function = ${id} order by total_ns desc, id limit ${calls.length}`);
  const total = new Map(wanted.map((call) => [call.id, call.total_ns]));
  same(`${trace}: calls of ${id}`, [...calls].sort((a, b) => a - b), [...total.keys()].sort((a, b) => a - b));
  return calls.slice(0, 3);
}

// Texts and whole numbers among the arguments and the result of a call.
function plainValues(call) {
  const values = [...JSON.parse(call.args ?? "[]"), JSON.parse(call.returned ?? "null")];
  return values.filter((value) => Number.isInteger(value) || (typeof value === "string" && /^[ -~]{1,80}$/.test(value))).map(String);
}

async function checkNode(page, trace, id) {
  await goTo(page, `#v=overview&n=${id}`);
  const node = rows(trace, `select n.*, json(c.args) as args, json(c.returned) as returned from nodes n left join calls c using (id) where n.id = ${id}`)[0];
  await page.waitForFunction(() => document.querySelector("#details .values")?.hidden || document.querySelector("#details .values")?.children.length > 0);
  const facts = await page.$eval("#details dl", (list) => Object.fromEntries(
    [...list.querySelectorAll("dt")].map((title) => [title.textContent, title.nextElementSibling.textContent])));
  same(`${trace}: node`, facts.Node, `#${id}`);
  if (node.outcome !== null) {
    same(`${trace}: total of ${id}`, number(facts.Total.split(" ")[0]), Number(ms(node.total_ns)));
    same(`${trace}: own of ${id}`, number(facts.Own.split(" ")[0]), Number(ms(node.own_ns)));
  }
  same(`${trace}: begin of ${id}`, number(facts["Begins at"].split(" ")[0]), Number(ms(node.start_ns)));
  if (node.kind !== "call") return 0;
  const said = await page.$eval("#details .values", (element) => element.textContent);
  const wanted = plainValues(node);
  for (const value of wanted) {
    if (!said.includes(value)) throw new Error(`${trace}: the values of ${id} are without ${value}: ${said.slice(0, 300)}`);
  }
  return wanted.length;
}

async function checkRequest(page, trace) {
  await goTo(page, "#v=overview");
  const wanted = request(trace);
  const text = await page.$eval("#view-overview", (element) => element.textContent);
  for (const part of [`${ms(wanted.total_ns)} ms`, wanted.calls.toLocaleString("en"), `${wanted.depth} deep`, ...(wanted.status ? [`Status${wanted.status}`] : [])]) {
    if (!text.includes(part)) throw new Error(`${trace}: the overview is without ${part}`);
  }
}

async function checkResponse(page, trace) {
  const answers = "select count(*) as n from nodes where kind in ('write', 'header', 'send_headers')";
  if (rows(trace, answers)[0].n === 0) return;
  const wanted = JSON.parse(run(tool, "response", trace, "--format", "json"));
  await goTo(page, "#v=output");
  if (wanted.writes.length > 0) {
    const length = wanted.body.length;
    await page.waitForFunction((least) => (document.querySelector("#output-body")?.textContent.length ?? 0) >= least, {}, Math.min(length, 1000));
    const body = await page.$eval("#output-body", (element) => element.textContent);
    // Characters that nobody sees are shown as what they are, and so is where the tracer cut.
    if (/^[\n -~]*$/.test(wanted.body)) same(`${trace}: body`, body.replaceAll("cut by the tracer", ""), wanted.body);
  }
  const headers = wanted.headers.map(({ name, value }) => `${name}: ${value}`);
  if (headers.length > 0) {
    const shown = await page.$$eval("#output-headers li", (lines) => lines.map((line) => line.textContent));
    for (const header of headers) if (!shown.includes(header)) throw new Error(`${trace}: ${header} is not among ${shown}`);
  }
  await goTo(page, "#v=headers");
  const operations = await allRows(page, "#view-headers .table", (row) => [Number(row.querySelector("[data-node]").dataset.node), row.cells[3].textContent.split(/[ ,]/)[0]]);
  same(`${trace}: headers`, operations.map(([id]) => id), wanted.operations.map(({ id }) => id));
}

async function checkLists(page, trace) {
  await goTo(page, "#v=includes");
  const includes = await allRows(page, "#view-includes .table", (row) => [row.cells[1].textContent, row.cells[3].textContent]);
  const times = includes.reduce((sum, [, count]) => sum + number(count), 0);
  same(`${trace}: includes`, times, rows(trace, "select count(*) as n from includes")[0].n);
  await goTo(page, "#v=errors");
  const exceptions = rows(trace, "select count(*) as n from exceptions")[0].n;
  const errors = rows(trace, "select count(*) as n from errors")[0].n;
  const text = await page.$eval("#view-errors", (element) => element.textContent);
  for (const [count, what] of [[exceptions, "exception"], [errors, "PHP error"]]) {
    if (count > 0 && !text.includes(`${count.toLocaleString("en")} ${what}`)) throw new Error(`${trace}: no ${count} ${what}s`);
  }
}

const browser = await startBrowser();
try {
  for (const trace of traces) {
    const file = join(folder, `${stem(trace)}.html`);
    run(tool, "report", trace, "-o", file);
    const report = await openReport(browser, file);
    const { page } = report;
    const functions = await checkProfile(page, trace);
    const hot = rows(trace, "select id from functions where calls > 0 order by own_ns desc, id limit 3");
    const nodes = [0, 1];
    for (const { id } of hot) nodes.push(...await checkFunction(page, trace, id));
    const spread = rows(trace, "select id from nodes where id % (select max(id) / 20 + 1 from nodes) = 7");
    nodes.push(...spread.map(({ id }) => id));
    let values = 0;
    for (const id of nodes) values += await checkNode(page, trace, id);
    if (values === 0) throw new Error(`${trace}: no value was compared`);
    await checkRequest(page, trace);
    await checkResponse(page, trace);
    await checkLists(page, trace);
    await report.close();
    passed("figures of the page", trace, `${functions} functions, ${nodes.length} nodes with ${values} values`);
  }
} finally {
  await browser.close();
}
