// The rows of what happened: requests with their answers, events, reasons. Only the rows in sight are elements, so that a
// flood of events costs one drawing a frame.
import {byId, isolated, keep, make, set, setText, shown} from './dom.js';
import {chip, clockTime} from './words.js';

const MOST = 10000;
const KINDS = [['request', 'Requests'], ['event', 'Events'], ['reason', 'Reasons'], ['sip', 'SIP'], ['operation', 'Engine']];
const HIDDEN = ['sip', 'operation']; // at first
const FLOOD = 50; // rows a second from which their rate is shown
const MARKS = {request: '→', event: '·', reason: '└', sip: '≈', operation: '»', gap: ''};

export class Log {
  constructor({onChoose}) {
    this.rows = [];
    this.seen = [];
    this.hidden = new Set(HIDDEN);
    this.words = [];
    this.follows = true;
    this.fresh = 0;
    this.chosen = null;
    this.next = 0;
    this.times = [];
    this.onChoose = onChoose;
    this.element = byId('log');
    this.listen();
  }

  listen() {
    byId('kinds').append(...KINDS.map(([kind, label]) => make('button', {type: 'button', 'aria-pressed': String(!HIDDEN.includes(kind)), click: (event) => this.toggle(kind, event.currentTarget)}, label)));
    byId('filter').addEventListener('input', () => this.refilter());
    byId('clear').addEventListener('click', () => { this.rows = []; this.refilter(); });
    byId('follow').addEventListener('click', () => this.follow(!this.follows));
    this.element.addEventListener('scroll', () => this.scrolled());
    this.element.addEventListener('click', (event) => { const row = event.target.closest('.row'); if (row) this.choose(Number(row.dataset.key), event.target.closest('.call')); });
    this.element.addEventListener('keydown', (event) => this.move(event));
    new ResizeObserver(() => this.draw()).observe(this.element);
  }

  get height() { return matchMedia('(max-width: 759px)').matches ? 44 : 24; }

  /** Appends rows; each gets an id. A row: {kind, time, line, call, what, party, details, ok, answer, took, data}. */
  add(rows) {
    for (const row of rows) Object.assign(row, {id: ++this.next, version: 0});
    this.rows.push(...rows);
    if (this.rows.length > MOST) this.rows.splice(0, this.rows.length - MOST);
    const matching = rows.filter((row) => this.matches(row));
    this.seen.push(...matching);
    if (this.seen.length > MOST) this.seen.splice(0, this.seen.length - MOST);
    if (!this.follows) this.fresh += matching.length;
    this.times.push([performance.now(), matching.length]);
    this.later();
  }

  /** A row whose content has changed, or rows in other places. */
  later() {
    if (this.waits) return;
    this.waits = true;
    requestAnimationFrame(() => { this.waits = false; this.draw(); });
  }

  toggle(kind, button) {
    const isOn = this.hidden.delete(kind);
    if (!isOn) this.hidden.add(kind);
    set(button, {'aria-pressed': String(isOn)});
    this.refilter();
  }

  /** "line:4711 call:2 kind:event held": all must apply; a line includes its appearances. */
  matches(row) {
    if (this.hidden.has(row.kind)) return false;
    return this.words.every(([key, value]) => {
      if (key === 'line') return row.line === value || (row.line ?? '').startsWith(`${value}#`);
      if (key === 'call') return String(row.call ?? '') === value;
      if (key === 'kind') return row.kind.startsWith(value);
      if (key === 'event') return row.number > Number(value.replace('>', ''));
      return textOf(row).includes(value);
    });
  }

  refilter() {
    this.words = byId('filter').value.toLowerCase().split(/\s+/).filter(Boolean).map((word) => {
      const [, key, value] = /^(line|call|kind|event):?(.*)$/.exec(word) ?? [];
      return key && value && word.includes(':') ? [key, value] : ['', word];
    });
    this.seen = this.rows.filter((row) => this.matches(row));
    this.fresh = 0;
    this.later();
  }

  follow(on) {
    this.follows = on;
    if (on) this.fresh = 0;
    this.later();
  }

  scrolled() {
    if (this.placing) { this.placing = false; return; }
    const isAtEnd = this.element.scrollTop + this.element.clientHeight >= this.element.scrollHeight - 4;
    if (isAtEnd !== this.follows) this.follow(isAtEnd);
    this.later();
  }

  move(event) {
    const at = this.seen.findIndex((row) => row.id === this.chosen);
    const page = Math.floor(this.element.clientHeight / this.height);
    const to = {ArrowDown: at + 1, ArrowUp: at < 0 ? this.seen.length - 1 : at - 1, PageDown: at + page, PageUp: at - page, Home: 0, End: this.seen.length - 1}[event.key];
    if (event.key === 'End') this.follow(true);
    if (to === undefined || !this.seen.length) return;
    event.preventDefault();
    const place = Math.max(0, Math.min(this.seen.length - 1, to));
    this.reveal(place);
    this.choose(this.seen[place].id);
  }

  reveal(place) {
    const top = place * this.height;
    if (place < this.seen.length - 1) this.follows = false;
    if (top < this.element.scrollTop) this.element.scrollTop = top;
    else if (top + this.height > this.element.scrollTop + this.element.clientHeight) this.element.scrollTop = top + this.height - this.element.clientHeight;
  }

  choose(id, byCall = null) {
    const row = this.rows.find((each) => each.id === id);
    if (!row) return;
    if (byCall) { byId('filter').value = `call:${row.call}`; this.refilter(); }
    this.chosen = id;
    this.onChoose(row);
    this.later();
  }

  get rate() {
    const since = performance.now() - 1000;
    while (this.times.length && this.times[0][0] < since) this.times.shift();
    return this.times.reduce((sum, [, count]) => sum + count, 0);
  }

  drawFollow() {
    const rate = this.rate;
    const words = this.follows ? (rate > FLOOD ? `${rate} a second` : 'Follow') : this.fresh ? `${this.fresh} new` : 'Follow';
    setText(byId('follow'), words);
    set(byId('follow'), {'aria-pressed': String(this.follows)});
    if (rate > FLOOD) setTimeout(() => this.later(), 500);
  }

  draw() {
    const height = this.height;
    const rows = byId('rows');
    this.drawFollow();
    rows.style.height = `${this.seen.length * height}px`;
    if (this.follows) {
      const end = this.element.scrollHeight - this.element.clientHeight;
      if (Math.abs(this.element.scrollTop - end) > 1) { this.placing = true; this.element.scrollTop = end; }
    }
    const first = Math.max(0, Math.floor(this.element.scrollTop / height) - 4);
    const count = Math.ceil(this.element.clientHeight / height) + 8;
    const items = this.seen.slice(first, first + count).map((row, place) => ({row, place: first + place}));
    keep(rows, items, (item) => item.row.id, ({row}) => makeRow(row), (element, {row, place}) => {
      element.style.top = `${place * height}px`;
      if (element.drawn !== row.version) fillRow(element, row);
      const above = this.seen[place - 1];
      set(element, {'aria-selected': String(row.id === this.chosen), 'aria-posinset': place + 1, 'aria-setsize': this.seen.length});
      element.firstChild.classList.toggle('same', above !== undefined && above.clock === row.clock);
    });
    set(this.element, {'aria-activedescendant': this.chosen !== null && byId(`row${this.chosen}`) ? `row${this.chosen}` : null});
  }
}

/** All of a row in small letters, for the filter. */
function textOf(row) {
  row.text ??= [row.what, row.party, ...(row.details ?? []), row.answer, row.line, row.call, row.data?.name].filter(Boolean).join(' ').toLowerCase();
  return row.text;
}

function makeRow(row) {
  row.clock ??= row.kind === 'reason' ? '' : clockTime(row.time);
  return make(`div.row.${row.kind}`, {role: 'option', id: `row${row.id}`},
    make('time', {}, row.clock), make('span.mark', {'aria-hidden': 'true'}, MARKS[row.kind]), make('span.line', {}, shown(row.line ?? '')),
    make('span.which', {}, row.call ? chip(row.call) : ''), make('span.what'), make('span.more'), make('span.result'));
}

function fillRow(element, row) {
  const [what, more, result] = [...element.children].slice(4);
  setText(what, shown(row.what));
  const details = (row.details ?? []).flatMap((text, place) => [place || row.party ? make('i', {}, row.kind === 'event' ? ', ' : '  ') : '', isolated(text, 'span')]);
  more.replaceChildren(...[row.party ? make('b', {}, isolated(row.party)) : '', ...details].filter((part) => part !== ''));
  set(more, {title: more.textContent || null});
  if (row.kind === 'reason') set(what, {title: shown(row.what)});
  if (row.answer !== undefined) {
    const sign = row.ok ? (row.isDoubtful ? '∅' : '✓') : '✕';
    result.replaceChildren(make(row.ok && !row.isDoubtful ? 'span.ok' : 'span.bad', {}, `${sign} ${shown(row.answer)}`), make('i', {}, row.took < 1 ? '<1 ms' : `${Math.round(row.took)} ms`));
  }
  element.drawn = row.version;
}
