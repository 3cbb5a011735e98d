// The present call as arrows in time: from requests, events and the steps between service and far ends, as they come. What
// talks and what is on hold is drawn on the line of the far end.
import {byId, keep, make, makeSvg, set, setText, shown} from './dom.js';
import {chip, clockTime, hueOf, isLive, nameOf} from './words.js';

const NEAR = ['app', 'service', 'engine'];
const MOST_FAR = 3;
const STEP = 44; // between two lanes, in the units of the drawing
const PAUSE = 250; // milliseconds from which a pause is a row
const HEIGHT = 20;
const ROUTINE = ['dialling', 'proceeding', '100 Trying', 'ACK'];
const MOST_STEPS = 400;
// Kind of a row: from which lane, to which; `far` is the lane of its call.
const LANES_OF = {request: () => [0, 1], event: () => [1, 0], operation: () => [1, 2], sip: (row, far) => (row.isSent ? [2, far] : [far, 2])};
// How the far end's line is drawn from an event on.
const LIVES = {'remote ringing': 'rings', ringing: 'rings', incoming: 'rings', 'incoming call': 'rings', connected: 'talks', retrieved: 'talks', conference: 'talks',
  held: 'waits', 'remotely held': 'waits', 'held by both': 'waits', idle: '', busy: '', failed: ''};

const laneX = (lane) => STEP / 2 + lane * STEP;

/** Notes what happened, and draws the calls that are up; or, at rest, what can be called. */
export class Ladder {
  constructor({onCall, onChoose}) {
    this.onCall = onCall;
    this.onChoose = onChoose;
    this.steps = [];
    this.calls = [];
    this.unfolded = false;
    this.numbers = [];
    this.restart();
  }

  restart() {
    this.steps = [];
    this.calls = [];
    this.lives = new Map();
    byId('ladder').replaceChildren();
    this.parts = {
      title: make('h2', {}, make('span'), make('small')), lead: make('p.lead'), fold: make('button.link', {type: 'button', click: () => { this.unfolded = !this.unfolded; this.redraw(); }}),
      numbers: make('ul.numbers', {'aria-label': 'Numbers of the exchange'}), head: make('div.head'), list: make('div', {role: 'list', 'aria-label': 'Ladder, oldest first'}),
    };
    this.parts.lead.append(make('span'), ' ', this.parts.fold);
    byId('ladder').append(this.parts.title, this.parts.lead, this.parts.numbers, make('div.ladder', {}, this.parts.head, this.parts.list));
  }

  /** A row of the log. Which call a SIP message belongs to may be known later; rows that never have one are not shown. */
  note(row) {
    if ((!row.call && row.kind !== 'sip') || !LANES_OF[row.kind]) return;
    // A call of the engine is told when it has ended, after what it has done.
    let place = this.steps.length;
    while (place > 0 && this.steps[place - 1].seq > row.seq) place -= 1;
    this.steps.splice(place, 0, row);
    if (this.steps.length > 4 * MOST_STEPS) this.steps.splice(0, 2 * MOST_STEPS);
  }

  /** From the state: whose ladder it is. A call that is over stays until the next one. */
  show(state) {
    const present = state.calls.filter(isLive);
    const isRest = present.length === 0;
    const first = present[0];
    if (first) {
      const fresh = present.filter((call) => call.line === first.line || present.length <= MOST_FAR);
      const known = this.calls.filter((call) => present.some((each) => each.id === call.id && each.began === call.began));
      const isSame = known.length > 0;
      const gone = isSame ? this.calls.filter((call) => !known.includes(call)) : [];
      const added = fresh.filter((call) => !known.some((each) => each.id === call.id));
      this.calls = [...gone, ...known, ...added.map((call) => ({id: call.id, began: call.began, name: nameOf(call.party), line: call.line}))].slice(-MOST_FAR);
      for (const call of this.calls) {
        const now = fresh.find((each) => each.id === call.id);
        if (now) call.name = nameOf(now.party);
      }
    }
    this.isRest = isRest;
    this.redraw();
  }

  redraw() {
    if (byId('ladder').hidden) return;
    const {title, lead, fold, head, list} = this.parts;
    const steps = this.stepsShown();
    const routine = this.relevant().length - steps.length;
    this.drawNumbers();
    const names = this.calls.map((call) => call.id);
    setText(title.firstChild, this.isRest ? (names.length ? 'The call is over' : 'No call yet') : `${names.length > 1 ? 'Calls' : 'Call'} ${names.join(' and ')}`);
    setText(title.lastChild, this.isRest ? '' : `line ${[...new Set(this.calls.map((call) => call.line))].join(', ')}`);
    setText(lead.firstChild, this.isRest ? 'Make one, and it is drawn here as it goes.' + (this.numbers.length ? ' The exchange has these numbers:' : '') : 'Thick: they talk. Dotted: on hold.');
    set(fold, {hidden: routine > 0 || this.unfolded ? null : ''});
    setText(fold, this.unfolded ? 'Fold routine steps' : `${routine} routine ${routine === 1 ? 'step' : 'steps'} folded`);
    set(head.parentNode, {hidden: steps.length ? null : ''});
    const lanes = [...NEAR, ...this.calls.map((call) => call.name)];
    keep(head, ['s', ...lanes.map((name, lane) => `${lane} ${name}`)], (name) => name, (name) => make('span', {title: shown(name.replace(/^\d+ /, ''))}, shown(name.replace(/^\d+ /, ''))));
    this.drawSteps(list, steps, lanes.length);
  }

  relevant() {
    return this.steps.filter((row) => this.calls.some((call) => String(call.id) === String(row.call) && row.time >= Date.parse(call.began) - 1000));
  }

  stepsShown() {
    return this.relevant().filter((row) => this.unfolded || !ROUTINE.includes(row.what)).slice(-MOST_STEPS);
  }

  drawSteps(list, steps, lanes) {
    const begin = steps[0]?.time ?? 0;
    const lives = new Map();
    const items = [];
    let last = null;
    for (const row of steps) {
      const pause = last === null ? 0 : row.time - last;
      if (pause > PAUSE) items.push({key: `pause ${row.id}`, pause, lives: this.livesOf(lives)});
      const before = this.livesOf(lives);
      if (row.kind === 'event' && row.what in LIVES) lives.set(String(row.call), LIVES[row.what]);
      items.push({key: row.id, row, stamp: last === row.time ? '' : ((row.time - begin) / 1000).toFixed(3), before, lives: this.livesOf(lives)});
      last = row.time;
    }
    const view = byId('ladder');
    const isAtEnd = view.scrollTop + view.clientHeight >= view.scrollHeight - 30;
    keep(list, items, (item) => item.key, (item) => this.makeStep(item), (element, item) => this.drawStep(element, item, lanes));
    if (isAtEnd && !this.isRest) view.scrollTop = view.scrollHeight;
  }

  livesOf(lives) { return this.calls.map((call) => lives.get(String(call.id)) ?? ''); }

  makeStep({row}) {
    const words = make('span');
    const more = row?.kind === 'operation' ? row.details : row?.kind === 'sip' ? row.details.slice(0, -1) : [];
    if (row) words.append(chip(row.call), ' ', make('b', {}, shown(row.what)), shown(more.map((each) => ` ${each}`).join('')));
    const element = make(row ? `div.step.${row.kind}.hue${hueOf(row.call)}${row.ok === false ? '.failed' : ''}` : 'div.step.pause', {role: 'listitem'}, make('time'), makeSvg('svg', {'aria-hidden': 'true'}), words);
    if (row) element.addEventListener('click', () => this.onChoose(row.id));
    return element;
  }

  drawStep(element, item, lanes) {
    const [time, drawing, words] = element.children;
    setText(time, item.row ? item.stamp : '');
    if (!item.row) setText(words, `${(item.pause / 1000).toFixed(1)} s`);
    else if (item.row.ok === false) element.classList.add('failed');
    const far = NEAR.length + this.calls.findIndex((call) => String(call.id) === String(item.row?.call));
    const shape = JSON.stringify([lanes, item.lives, item.before, item.row?.ok, far]);
    if (element.shape === shape) return;
    element.shape = shape;
    const width = lanes * STEP;
    set(drawing, {viewBox: `0 0 ${width} ${HEIGHT}`, width, height: HEIGHT});
    drawing.replaceChildren(...this.lifelines(item, lanes), ...(item.row ? arrow(LANES_OF[item.row.kind](item.row, far)) : []));
    if (item.row) set(element, {title: `${clockTime(item.row.time)} ${item.row.kind}: ${shown(item.row.what)}`});
  }

  lifelines(item, lanes) {
    return Array.from({length: lanes}, (_, lane) => {
      const far = lane - NEAR.length;
      const line = (from, to, life) => makeSvg('line', {x1: laneX(lane), x2: laneX(lane), y1: from, y2: to, class: far < 0 ? 'life' : `life ${life} hue${hueOf(this.calls[far].id)}`});
      const before = (item.before ?? item.lives)[far] ?? '';
      return [line(0, HEIGHT / 2, before), line(HEIGHT / 2, HEIGHT, item.lives[far] ?? '')];
    }).flat();
  }

  drawNumbers() {
    keep(this.parts.numbers, this.isRest ? this.numbers : [], (each) => each.number,
      (each) => make('li', {}, make('code', {}, shown(each.number)), make('span', {}, shown(each.does)),
        make('button', {type: 'button', 'aria-label': `Call ${shown(each.number)}`, click: () => this.onCall(each.number)}, 'Call')));
  }
}

function arrow(lanes) {
  const [from, to] = lanes.map(laneX);
  const way = Math.sign(to - from);
  const middle = HEIGHT / 2;
  return [makeSvg('line', {x1: from, x2: to - 3 * way, y1: middle, y2: middle, class: 'arrow'}),
    makeSvg('polygon', {points: `${to},${middle} ${to - 6 * way},${middle - 3} ${to - 6 * way},${middle + 3}`, class: 'head-of-arrow'})];
}
