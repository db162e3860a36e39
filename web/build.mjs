// SPDX-License-Identifier: MIT
//
// Builds dist/report.html: one document with its program and style inside, and a content security
// policy that allows these and nothing else. The program is packed as the data of a report are, and a
// small script unpacks it. The result depends on the sources alone.
import { createHash } from 'node:crypto';
import { mkdirSync, readFileSync, writeFileSync } from 'node:fs';
import { dirname, join } from 'node:path';
import { fileURLToPath } from 'node:url';
import { build } from 'esbuild';
import { zlibSync } from 'fflate';

const here = dirname(fileURLToPath(import.meta.url));
const most = 85000;

async function bundle(entry, more) {
  const result = await build({
    absWorkingDir: here, entryPoints: [entry], bundle: true, minify: true, write: false, charset: 'ascii', legalComments: 'none', ...more,
  });
  // What would end the element it stands in is written otherwise.
  return result.outputFiles[0].text.trim().replace(/<\/(script|style)/gi, '<\\/$1').replace(/<!--/g, '<\\!--');
}

const hash = (text) => `'sha256-${createHash('sha256').update(text).digest('base64')}'`;

const program = await bundle('src/main.ts', { format: 'iife', target: 'es2022' });
const loader = await bundle('src/loader.ts', { format: 'iife', target: 'es2017' });
const style = await bundle('src/style.css', { target: 'es2022' });
const policy = `default-src 'none'; script-src ${hash(loader)} ${hash(program)}; style-src ${hash(style)}; base-uri 'none'; form-action 'none'`;
// Packed by a library whose result does not depend on the machine, unlike that of node's zlib.
const packed = Buffer.from(zlibSync(Buffer.from(program), { level: 9, mem: 9 })).toString('base64');
const parts = { POLICY: policy, STYLE: style, PROGRAM: packed, LOADER: loader };
const page = readFileSync(join(here, 'src/page.html'), 'utf8').replace(/POLICY|STYLE|PROGRAM|LOADER/g, (name) => parts[name]);

if (page.split('<!-- data -->').length !== 2) throw new Error('the place of the data is not there exactly once');
if (page.length > most) throw new Error(`the page has ${page.length} bytes, more than ${most}`);
mkdirSync(join(here, 'dist'), { recursive: true });
writeFileSync(process.argv[2] ?? join(here, 'dist/report.html'), page);
console.log(`${page.length} bytes: program ${program.length}, packed ${packed.length}, style ${style.length}`);
