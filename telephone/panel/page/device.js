// The keys with their lamps, the digits, the handset and what is plugged in. All of it is drawn from the state alone.
import {byId, keep, make, set, setText, shown} from './dom.js';
import {beatTogether, drawLamp, lampWords, makeLamp} from './lamps.js';
import {hint} from './softkeys.js';

const DIGITS = [['1', ''], ['2', 'ABC'], ['3', 'DEF'], ['4', 'GHI'], ['5', 'JKL'], ['6', 'MNO'], ['7', 'PQRS'], ['8', 'TUV'], ['9', 'WXYZ'], ['*', ''], ['0', '+'], ['#', '']];
const NAMES = {'*': 'star', '#': 'hash'};
const PEOPLE = ['line', 'dss', 'blf'];
// Label, words when off and on, whether it is on, command for the other position.
const FIXED = [
  ['Handset', 'on hook', 'lifted', (state) => state.hook_up, (on) => `hook ${on ? 'up' : 'down'}`],
  ['Headset', 'out', 'plugged in', (state) => state.plugged.includes('headset'), (on) => `${on ? 'plug' : 'unplug'} headset`],
  ['Lock', 'open', 'locked', (state) => state.locked, (on) => (on ? 'lock' : 'unlock')],
];
const LAMPS_OUTSIDE = {SecondAlert: 'Second alert', MessageWaiting: 'Messages'};

/** What the key is about, in a word. */
function wordOf(key, state) {
  if (key.function === 'line' || key.function === 'dss') {
    const [id, appearance] = (key.target ?? '').split('#');
    const line = state.lines.find((each) => each.id === id);
    const place = appearance ? line?.appearances.find((each) => each.id === key.target) : line;
    if (line?.registration === 'not registered') return 'not registered';
    return place?.selected && place.state === 'idle' ? 'seized' : place?.state ?? '';
  }
  if (key.function === 'blf') return key.lamp.mode === 'off' ? 'free' : key.lamp.mode === 'flashing' ? 'ringing' : 'busy';
  return '';
}

function describeKey(key, state) {
  const label = shown(key.label ?? key.target ?? key.function);
  const word = wordOf(key, state);
  const lit = key.lamp.mode === 'off' ? '' : `${key.lamp.mode} ${key.lamp.colour}`;
  const name = [`Key ${key.number}`, key.function, label, word, lampWords(key.lamp)].filter(Boolean).join(', ');
  return {label, word, lit, name};
}

function makeKey(key, onPress) {
  const tell = (event) => hint(`key ${event.currentTarget.key.number}`, event.currentTarget.said);
  return make('button.key', {type: 'button', click: (event) => onPress(event.currentTarget.key), mouseenter: tell, focus: tell},
    makeLamp(), make('b'), make('small', {}, make('span'), make('em'), make('span')));
}

function drawKey(button, key, state, isLost) {
  const {label, word, lit, name} = describeKey(key, state);
  button.key = key;
  button.said = key.shows_only ? `${lampWords(key.lamp)}; it only shows` : `press ${key.number}; ${lampWords(key.lamp)}`;
  const [lamp, title, words] = button.children;
  drawLamp(lamp, key.lamp);
  setText(title, label);
  setText(words.children[0], String(key.number));
  setText(words.children[1], word);
  setText(words.children[2], lit || (word ? '' : 'off'));
  set(button, {'aria-label': name, 'aria-disabled': isLost || key.shows_only ? 'true' : null, title: label});
}

function buildPad({onDigit, onSend}) {
  byId('digits').append(...DIGITS.map(([digit, letters]) => make('button', {type: 'button', 'aria-label': NAMES[digit] ?? digit, 'data-key': digit, click: () => onDigit(digit)},
    digit, letters && make('small', {'aria-hidden': 'true'}, letters))));
  byId('fixed').append(...FIXED.map(([label, , , isOn, command]) => make('button', {type: 'button', 'data-key': label, click: (event) => onSend(command(!isOn(event.currentTarget.state)))}, label, make('span'))));
}

function drawFixed(state, isLost) {
  for (const [place, [, off, on, isOn]] of FIXED.entries()) {
    const button = byId('fixed').children[place];
    button.state = state;
    setText(button.lastChild, isOn(state) ? on : off);
    set(button, {'aria-pressed': String(isOn(state)), 'aria-disabled': isLost ? 'true' : null});
  }
  for (const button of byId('digits').children) set(button, {'aria-disabled': isLost ? 'true' : null});
}

/** Lamps that belong to no key, beside the handset. */
function drawLights(state) {
  const lights = state.keys.filter((key) => key.number === null);
  const fixed = [...byId('fixed').children].slice(0, FIXED.length).map((element) => ({element, key: element.dataset.key}));
  const items = [...fixed, ...lights.map((lamp) => ({lamp, key: `lamp ${lamp.function}`}))];
  keep(byId('fixed'), items, (item) => item.key,
    (item) => make('div.light', {role: 'img'}, make('span', {}, LAMPS_OUTSIDE[item.lamp.function] ?? shown(item.lamp.label ?? item.lamp.function)), makeLamp()),
    (element, item) => {
      if (!item.lamp) return;
      drawLamp(element.lastChild, item.lamp.lamp);
      set(element, {'aria-label': `${element.firstChild.textContent}, ${lampWords(item.lamp.lamp)}`});
    });
}

let isBuilt = false;

export function drawDevice(state, isLost, actions) {
  if (!isBuilt) buildPad(actions);
  isBuilt = true;
  const keys = state.keys.filter((key) => key.number !== null);
  const draw = (id, list) => keep(byId(id), list, (key) => key.number, (key) => makeKey(key, actions.onPress), (button, key) => drawKey(button, key, state, isLost));
  draw('people', keys.filter((key) => PEOPLE.includes(key.function)));
  draw('functions', keys.filter((key) => !PEOPLE.includes(key.function)));
  drawFixed(state, isLost);
  drawLights(state);
  beatTogether();
}
