// SPDX-License-Identifier: MIT
//
// Where the page is, as its address says after "#": the view (v), the selected node's number in the
// trace (n), and what the view shows (a). A link to a node may be "#n=812" alone.

export interface Place {
  view: string;
  node: number; // -1 none
  argument: string;
}

export function readPlace(): Place {
  const said = new URLSearchParams(location.hash.slice(1));
  const node = said.get('n');
  const number = node !== null && /^\d{1,10}$/.test(node) ? Number(node) : -1;
  return { view: said.get('v') ?? (number >= 0 ? 'tree' : ''), node: number, argument: said.get('a') ?? '' };
}

export function hashOf(place: Place): string {
  const parts = [`v=${encodeURIComponent(place.view)}`];
  if (place.node >= 0) parts.push(`n=${place.node}`);
  if (place.argument) parts.push(`a=${encodeURIComponent(place.argument)}`);
  return `#${parts.join('&')}`;
}

// Of nodes that are selected in a quick row, as with a held key, only the last is something to go back to.
const quick = 700;

export class Router {
  private at = -Infinity; // when a node was selected last
  private view = '';
  private now = '';

  constructor(private readonly moved: (place: Place) => void) {
    addEventListener('hashchange', () => {
      if (location.hash === this.now) return;
      this.now = location.hash;
      this.moved(readPlace());
    });
  }

  // Writes the address; whoever calls has brought the page there.
  write(place: Place, isFirst = false): void {
    const hash = hashOf(place);
    if (hash === this.now) return;
    this.now = hash;
    const time = performance.now();
    const isSameView = place.view === this.view;
    if (isFirst || (isSameView && time - this.at < quick)) location.replace(hash);
    else location.hash = hash;
    this.view = place.view;
    this.at = isFirst ? -Infinity : time;
  }
}
