// SPDX-License-Identifier: MIT
//
// Values in a few columns: `Note::find(7, "abc…") → null`.
import { cutString, Member, member, members, stringOf } from './json_text';
import { Kind, Trace, nameOf } from './trace';
import { visible } from './dom';

export const cutMark = '**CUT**';

function fitted(line: string, columns: number): string {
  return line.length > columns ? `${line.slice(0, Math.max(0, columns - 1))}…` : line;
}

function briefString(json: string, columns: number): string {
  // No more is read of a long text than is shown; an escape that is cut open is left away.
  const part = json.length > columns + 12 ? cutString(json, columns + 2) : json;
  const whole = stringOf(part);
  const cut = whole.endsWith(cutMark);
  const said = visible(cut ? whole.slice(0, -cutMark.length) : whole);
  return said.length > columns || part !== json || cut ? `"${said.slice(0, columns)}…"` : `"${said}"`;
}

function objectName(parts: Member[]): string | null {
  const named = (key: string) => parts.find((part) => part.key === key)?.value;
  const handle = named('handle');
  if (handle === undefined || parts.length > 2) return null;
  const kind = named('class') ?? named('resource');
  return `${kind === undefined ? 'object' : visible(stringOf(kind))}#${handle}`;
}

// One value of plain JSON.
export function brief(json: string, columns: number): string {
  if (json[0] === '"') return briefString(json, columns);
  if (json[0] !== '[' && json[0] !== '{') return fitted(json, columns);
  const parts = members(json, 12);
  const object = json[0] === '{' ? objectName(parts) : null;
  if (object !== null) return fitted(object, columns);
  let line = json[0];
  for (const part of parts) {
    if (line.length > 1) line += ', ';
    if (line.length >= columns) break;
    const shallow =
      /^[[{]./.test(part.value) && columns < 16
        ? '…'
        : brief(part.value, Math.max(8, (columns - line.length) >> 1));
    line +=
      part.value === `"${cutMark}"` || part.key === cutMark
        ? '…'
        : (part.key === null ? '' : `${visible(part.key)}: `) + shallow;
  }
  return fitted(line, columns - 1) + (json[0] === '[' ? ']' : '}');
}

// Arguments in brackets, each with its share of the columns.
function briefArguments(json: string, columns: number): string {
  let line = '';
  const parts = members(json, 40);
  for (const part of parts) {
    const rest = columns - line.length;
    if (rest < 6) return `${line}, …`;
    line +=
      (line && ', ') +
      (part.value === `"${cutMark}"` ? '…' : brief(part.value, Math.min(rest, parts.length > 1 ? 40 : rest)));
  }
  return line;
}

export function briefCall(trace: Trace, index: number, line: string, columns: number): string {
  const name = visible(nameOf(trace, index));
  if (trace.kind[index] === Kind.write) return `${name} ${brief(member(line, 'body') ?? '""', columns)}`;
  if (trace.kind[index] !== Kind.call) return name;
  const all = members(line);
  const of = (key: string) => all.find((each) => each.key === key)?.value;
  const [returned, thrown] = [of('returned'), of('thrown')];
  const result =
    thrown !== undefined
      ? ` threw ${brief(thrown, 60)}`
      : returned !== undefined
        ? ` → ${brief(returned, 40)}`
        : '';
  return `${name}(${briefArguments(of('args') ?? '[]', columns)})${result}`;
}
