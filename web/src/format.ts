// SPDX-License-Identifier: MIT
//
// Figures as cttool prints them.

export function count(value: number): string {
  return String(value).replace(/\B(?=(\d{3})+(?!\d))/g, ',');
}

// 1.234 ms, always in milliseconds so that figures compare at a glance.
export function ms(ns: number): string {
  const microseconds = Math.floor(ns / 1000) + (ns % 1000 >= 500 ? 1 : 0);
  return `${count(Math.floor(microseconds / 1000))}.${String(microseconds % 1000).padStart(3, '0')} ms`;
}

// For axes and headings: as few digits as say it.
export function roughly(ns: number): string {
  if (ns >= 1e9) return `${+(ns / 1e9).toPrecision(3)} s`;
  if (ns >= 1e6) return `${+(ns / 1e6).toPrecision(3)} ms`;
  return ns >= 1e3 ? `${+(ns / 1e3).toPrecision(3)} µs` : `${Math.round(ns)} ns`;
}

const units = ['B', 'KiB', 'MiB', 'GiB', 'TiB', 'PiB', 'EiB'];

export function bytes(value: number): string {
  if (Number.isNaN(value)) return '';
  let unit = 0;
  let amount = value;
  for (; Math.abs(amount) >= 1024 && unit + 1 < units.length; ++unit) amount /= 1024;
  return unit === 0 ? `${count(value)} B` : `${amount.toFixed(1)} ${units[unit]}`;
}

export function signedBytes(value: number): string {
  return value > 0 ? `+${bytes(value)}` : bytes(value);
}

export function percent(part: number, whole: number): string {
  return `${(whole ? (100 * part) / whole : 0).toFixed(1)} %`;
}

// "1 call", "7,091 calls".
export function many(value: number, one: string, more = `${one}s`): string {
  return `${count(value)} ${value === 1 ? one : more}`;
}

// "…/inc/Menu/Item.php:66", where a whole path would push everything else aside.
export function shortPath(path: string, length = 40): string {
  if (path.length <= length) return path;
  const at = path.indexOf('/', path.length - length);
  return `…${path.slice(at < 0 ? path.length - length : at)}`;
}

// "…\Lexer\ParallelRegex::split": of a long name the end, from the begin of a part.
export function shortName(name: string, length = 44): string {
  if (name.length <= length) return name;
  const at = name.slice(name.length - length).search(/[\\/]/);
  const member = name.lastIndexOf('::');
  return at < 0
    ? member > 0 && name.length - member < length
      ? `…${name.slice(member)}`
      : name
    : `…${name.slice(name.length - length + at)}`;
}
