// The state as a tree. It stays as it was unfolded; what has changed since the last request is marked.
import {byId, keep, make, set, setText, shown} from './dom.js';
import {nameOf} from './words.js';

const OPEN = new Set(['calls', 'lines']);
const MEMBERS = (value) => (Array.isArray(value) ? value.map((each, place) => [keyOf(each, place), each]) : Object.entries(value));
const NAMES = ['label', 'name', 'state', 'mode', 'address'];

function keyOf(each, place) {
  if (each === null || typeof each !== 'object') return String(place + 1);
  return String(each.id ?? each.number ?? each.function ?? each.name ?? place + 1);
}

const isBranch = (value) => value !== null && typeof value === 'object' && Object.keys(value).length > 0;

/** Beside a branch: what it is, or how many it has. */
function summary(value) {
  if (Array.isArray(value)) return String(value.length);
  const words = NAMES.map((name) => value[name]).filter((each) => typeof each === 'string');
  if (value.party) words.push(nameOf(value.party));
  if (value.lamp && value.lamp.mode !== 'off') words.push(`${value.lamp.mode} ${value.lamp.colour}`);
  return words.filter(Boolean).join(' ');
}

function leafText(value) {
  if (value === null) return 'none';
  if (value === true) return 'yes';
  if (value === false) return 'no';
  return typeof value === 'object' ? 'none' : String(value);
}

export class StateTree {
  constructor() {
    this.open = new Set(OPEN);
    this.before = new Map(); // values at the last request, by path
    this.present = new Map();
    this.title = make('h2', {}, 'State', make('small'));
    this.root = make('ul.tree', {role: 'tree', 'aria-label': 'State', tabindex: '-1'});
    byId('state').append(this.title, make('p.lead', {}, 'Marked: what has changed since the last request.'), this.root);
    this.root.addEventListener('click', (event) => this.clicked(event));
    this.root.addEventListener('keydown', (event) => this.move(event));
  }

  /** From now on, changes are those of a new request. */
  mark() { this.before = new Map(this.present); }

  show(state) {
    this.state = state;
    const {time, ...rest} = state;
    this.present = new Map();
    collect('', rest, this.present);
    if (this.before.size === 0) this.mark();
    if (byId('state').hidden) return;
    setText(this.title.lastChild, `true at event ${state.event}`);
    this.draw(this.root, '', rest);
    if (!this.root.querySelector('[tabindex="0"]')) this.root.querySelector('[role=treeitem]')?.setAttribute('tabindex', '0');
  }

  draw(list, path, value) {
    const items = MEMBERS(value).map(([name, member]) => ({name, member, path: path ? `${path}/${name}` : name}));
    keep(list, items, (item) => item.path, (item) => this.make(item), (element, item) => this.fill(element, item));
  }

  make({name}) {
    return make('li', {role: 'treeitem', tabindex: '-1'}, make('div', {}, make('span.twist', {'aria-hidden': 'true'}), make('span.name', {}, shown(name.replaceAll('_', ' '))), make('span.value'), make('span.about')));
  }

  fill(element, {member, path}) {
    const isOpen = this.open.has(path);
    const branch = isBranch(member);
    const [twist, , value, about] = element.firstChild.children;
    setText(twist, branch ? (isOpen ? '▾' : '▸') : '');
    setText(value, branch ? '' : shown(leafText(member)));
    setText(about, branch ? shown(summary(member)) : '');
    const changed = branch ? !isOpen && this.hasChanged(path) : this.before.get(path) !== this.present.get(path);
    set(element.firstChild, {class: changed ? 'changed' : null});
    set(element, {'aria-expanded': branch ? String(isOpen) : null});
    const list = element.children[1];
    if (branch && isOpen) this.draw(list ?? element.appendChild(make('ul', {role: 'group'})), path, member);
    else list?.remove();
  }

  hasChanged(path) {
    const begin = `${path}/`;
    const differs = (one, other) => [...one].some(([key, value]) => key.startsWith(begin) && other.get(key) !== value);
    return differs(this.present, this.before) || differs(this.before, this.present);
  }

  toggle(item) {
    if (!item.hasAttribute('aria-expanded')) return;
    const path = item.dataset.key;
    if (!this.open.delete(path)) this.open.add(path);
    this.show(this.state);
  }

  clicked(event) {
    const item = event.target.closest('[role=treeitem]');
    if (item) { this.focus(item); this.toggle(item); }
  }

  focus(item) {
    for (const each of this.root.querySelectorAll('[tabindex="0"]')) each.setAttribute('tabindex', '-1');
    item.setAttribute('tabindex', '0');
    item.focus();
  }

  move(event) {
    const all = [...this.root.querySelectorAll('[role=treeitem]')];
    const item = event.target.closest('[role=treeitem]');
    const at = all.indexOf(item);
    const isOpen = item?.getAttribute('aria-expanded');
    const to = {ArrowDown: all[at + 1], ArrowUp: all[at - 1], Home: all[0], End: all.at(-1)}[event.key];
    if (to) this.focus(to);
    else if (['Enter', ' '].includes(event.key) || (event.key === 'ArrowRight' && isOpen === 'false') || (event.key === 'ArrowLeft' && isOpen === 'true')) this.toggle(item);
    else if (event.key === 'ArrowRight' && isOpen) this.focus(item.querySelector('[role=treeitem]'));
    else if (event.key === 'ArrowLeft') { const up = item.parentNode.closest('[role=treeitem]'); if (up) this.focus(up); }
    else return;
    event.preventDefault();
  }
}

function collect(path, value, into) {
  for (const [name, member] of MEMBERS(value)) {
    const here = path ? `${path}/${name}` : name;
    if (isBranch(member)) collect(here, member, into);
    else into.set(here, leafText(member));
  }
}
