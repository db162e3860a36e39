// SPDX-License-Identifier: MIT
//
// The frame of the page: title, tabs, the view that is open, details of the selected node.
import type { App, Hits, View } from './app';
import { Details } from './details';
import { h, replace } from './dom';
import { heading } from './heading';
import { keysDialog } from './keys';
import { Router, readPlace, type Place } from './router';
import { Search } from './search';
import { indexOf, type Trace } from './trace';
import type { Values } from './values';

export interface ViewChoice {
  key: string;
  title: string;
  many?: number; // how many things it has, where that says something
  make: (app: App) => View;
}

export class Shell implements App {
  selected = -1;
  hits: Hits | null = null;
  private readonly views = new Map<string, View>();
  private readonly tabs = new Map<string, HTMLElement>();
  private readonly main = h('main', { id: 'main' });
  private readonly status = h('p', { class: 'status', id: 'status', role: 'status', hidden: true });
  private readonly router = new Router((place) => this.apply(place));
  private readonly details: Details;
  private readonly search: Search;
  private now: Place = { view: '', node: -1, argument: '' };

  constructor(
    readonly trace: Trace,
    readonly values: Values,
    private readonly choices: ViewChoice[],
  ) {
    this.details = new Details(this);
    this.search = new Search(this);
    const keys = keysDialog();
    const body = h('div', { class: 'body' }, this.main, this.details.root);
    const top = [heading(this, this.search.root), this.tabList(keys), this.status];
    replace(document.getElementById('app')!, top, body, keys);
    addEventListener('keydown', (event) => this.key(event, keys));
    // Whatever is open, the overview is what gets printed.
    addEventListener('beforeprint', () => this.viewOf(this.choices[0]));
  }

  start(): void {
    const place = readPlace();
    this.apply(place);
    this.router.write(this.now, true);
  }

  select(index: number, how: { open?: string } = {}): void {
    this.go({
      ...this.now,
      node: index < 0 ? -1 : this.trace.id[index],
      ...(how.open && how.open !== this.now.view ? { view: how.open, argument: '' } : {}),
    });
  }

  open(key: string, argument = ''): void {
    this.go({ ...this.now, view: key, argument });
  }

  find(hits: Hits | null): void {
    this.hits = hits;
    for (const view of this.views.values()) view.found?.(hits);
  }

  private go(place: Place): void {
    this.apply(place);
    this.router.write(this.now);
  }

  private apply(place: Place): void {
    const choice = this.choices.find((each) => each.key === place.view) ?? this.choices[0];
    const index = place.node < 0 ? -1 : indexOf(this.trace, place.node);
    const before = this.views.get(this.now.view);
    const isMissing = place.node >= 0 && index < 0;
    this.status.hidden = !isMissing;
    this.status.textContent = isMissing ? `There is no node #${place.node} in this report.` : '';
    const view = this.viewOf(choice);
    this.now = { view: choice.key, node: index < 0 ? -1 : place.node, argument: place.argument };
    if (view !== before) this.showView(view, before);
    view.argument?.(place.argument);
    if (index === this.selected) return;
    this.selected = index;
    this.search.selected(index);
    void this.details.show(index);
    for (const each of this.views.values()) each.selected?.(index);
  }

  private showView(view: View, before: View | undefined): void {
    if (before) {
      before.hide();
      before.root.hidden = true;
    }
    view.root.hidden = false;
    for (const [key, tab] of this.tabs) {
      const isOpen = key === view.key;
      tab.setAttribute('aria-selected', String(isOpen));
      tab.tabIndex = isOpen ? 0 : -1;
      if (isOpen) tab.scrollIntoView({ block: 'nearest', inline: 'nearest' });
    }
    view.show();
  }

  private viewOf(choice: ViewChoice): View {
    let view = this.views.get(choice.key);
    if (view) return view;
    view = choice.make(this);
    const { root } = view;
    root.classList.add('view');
    root.id = `view-${choice.key}`;
    root.dataset.view = choice.key;
    root.setAttribute('role', 'tabpanel');
    root.setAttribute('aria-labelledby', `tab-${choice.key}`);
    root.hidden = true;
    root.tabIndex = -1;
    this.main.append(root);
    this.views.set(choice.key, view);
    if (this.hits) view.found?.(this.hits);
    if (this.selected >= 0) view.selected?.(this.selected);
    return view;
  }

  private tabList(keys: HTMLDialogElement): HTMLElement {
    const list = h('div', {
      role: 'tablist',
      class: 'tabs',
      'aria-label': 'Views',
      onkeydown: (event: KeyboardEvent) => this.tabKey(event),
    });
    for (const { key, title, many } of this.choices) {
      const tab = h(
        'button',
        {
          role: 'tab',
          id: `tab-${key}`,
          'data-view': key,
          'aria-controls': `view-${key}`,
          class: many === 0 ? 'none' : '',
          tabindex: -1,
          onclick: () => this.open(key),
        },
        title,
        many ? h('span', { class: 'many' }, ` ${many}`) : null,
      );
      this.tabs.set(key, tab);
      list.append(tab);
    }
    return h(
      'nav',
      { 'aria-label': 'Views' },
      list,
      h(
        'button',
        {
          class: 'help',
          id: 'keys',
          title: 'Keys (?)',
          'aria-label': 'Keys',
          onclick: () => keys.showModal(),
        },
        '?',
      ),
    );
  }

  private tabKey(event: KeyboardEvent): void {
    const many = this.choices.length;
    const at = this.choices.findIndex((each) => each.key === this.now.view);
    const to: Record<string, number> = {
      ArrowRight: at + 1,
      ArrowLeft: at + many - 1,
      Home: 0,
      End: many - 1,
    };
    if (!(event.key in to)) return;
    event.preventDefault();
    const { key } = this.choices[to[event.key] % many];
    this.open(key);
    this.tabs.get(key)?.focus();
  }

  private key(event: KeyboardEvent, keys: HTMLDialogElement): void {
    const target = event.target as HTMLElement;
    if (event.ctrlKey || event.metaKey || event.altKey || event.defaultPrevented || keys.open) return;
    if (event.key === 'Escape' && !target.matches('input, select, textarea')) {
      if (this.selected >= 0) this.select(-1);
      return;
    }
    if (target.matches('input, select, textarea')) return;
    if (event.key === '?') keys.showModal();
    else if (event.key === '/') this.search.focus();
    else if (event.key === 'n') this.search.step(1);
    else if (event.key === 'N') this.search.step(-1);
    else if (/^\d$/.test(event.key)) this.openByKey((+event.key + 9) % 10);
    else return;
    event.preventDefault();
  }

  private openByKey(at: number): void {
    const { key } = this.choices[at];
    this.open(key);
    const view = this.views.get(key)!;
    if (view.focus) view.focus();
    else view.root.focus();
  }
}
