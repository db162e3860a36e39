// SPDX-License-Identifier: MIT
//
// The first script of the page: unpacks the program, which lies in the page as the data do, and has the
// browser run it. The content security policy knows the program's hash too, so nothing else would run.
import { readText } from './blocks';
import { h, replace } from './dom';

function fail(error: unknown): void {
  const old = typeof DecompressionStream === 'undefined';
  replace(
    document.getElementById('app')!,
    h(
      'p',
      { class: 'failed', role: 'alert' },
      old
        ? 'This report needs a browser of 2023 or later.'
        : `This report did not arrive whole. ${String(error)}`,
    ),
  );
}

addEventListener('DOMContentLoaded', () => {
  readText('program').then((program) => document.body.append(h('script', null, program)), fail);
});
