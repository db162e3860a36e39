// SPDX-License-Identifier: MIT
//
// JSON read as text, so that numbers keep every digit. Nothing here recurses in the depth of values.

// A part of the text between a key (or none) and what is its value.
export interface Member {
  key: string | null; // null in arrays
  value: string; // JSON
}

// Behind the next quotation mark that no backslash escapes.
function endOfString(json: string, at: number): number {
  for (let i = json.indexOf('"', at + 1); i >= 0; i = json.indexOf('"', i + 1)) {
    let before = i - 1;
    while (json[before] === '\\') --before;
    if ((i - before) % 2 === 1) return i + 1;
  }
  return json.length;
}

// Where the value that begins at `at` ends.
export function endOfValue(json: string, at: number): number {
  let depth = 0;
  for (let i = at; i < json.length;) {
    const c = json[i];
    if (c === '"') i = endOfString(json, i);
    else if (c === '[' || c === '{') {
      ++depth;
      ++i;
      continue;
    } else if (c === ']' || c === '}') {
      --depth;
      ++i;
    } else if (c === ',' || c === ':') {
      ++i;
      continue;
    } else {
      while (i < json.length && !',:]}'.includes(json[i])) ++i;
    }
    if (depth <= 0) return i;
  }
  return json.length;
}

// Members of an object or items of an array, at most so many; others have none.
export function members(json: string, most = Infinity): Member[] {
  const isObject = json[0] === '{';
  const list: Member[] = [];
  if (!isObject && json[0] !== '[') return list;
  for (let i = 1; i < json.length - 1 && list.length < most; ++i) {
    let key: string | null = null;
    if (isObject) {
      const end = endOfString(json, i);
      key = stringOf(json.slice(i, end));
      i = end + 1;
    }
    const end = endOfValue(json, i);
    list.push({ key, value: json.slice(i, end) });
    i = end;
  }
  return list;
}

export function member(json: string, key: string): string | undefined {
  return members(json).find((each) => each.key === key)?.value;
}

// The text that a JSON string says; other JSON as it is.
export function stringOf(json: string): string {
  try {
    return json[0] === '"' ? (JSON.parse(json) as string) : json;
  } catch {
    return json;
  }
}

// The beginning of a JSON string as one, with no escape cut open.
export function cutString(json: string, length: number): string {
  if (json.length <= length) return json;
  let part = json.slice(0, length);
  const escape = /(\\+)(u[0-9a-f]{0,3})?$/i.exec(part);
  if (escape && escape[1].length % 2 === 1) part = part.slice(0, escape.index + escape[1].length - 1);
  return `${part}"`;
}
