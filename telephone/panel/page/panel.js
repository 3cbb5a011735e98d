// The panel: the telephone as a page. Two sources, one truth: the rows are events, the device is drawn from the state.
import {RequestBox} from './box.js';
import {Connection} from './connection.js';
import {drawDetail} from './detail.js';
import {drawDevice} from './device.js';
import {drawDisplay} from './display.js';
import {byId, make, say, set, setText, shown} from './dom.js';
import {listenToKeys, roam} from './keyboard.js';
import {Ladder} from './ladder.js';
import {beatTogether} from './lamps.js';
import {Log} from './log.js';
import {actionsFor, drawSoftkeys} from './softkeys.js';
import {ring, soundDigit, switchSound} from './sound.js';
import {StateTree} from './state.js';
import {Steps} from './steps.js';
import {startTheme} from './theme.js';
import {byAttention, clockTime, isLive, lasting, nameOf, setDomain, stateWords} from './words.js';

const TABS = [['ladder', 'Ladder'], ['state', 'State'], ['detail', 'Detail']];
const VIEWS = [['device', 'Telephone'], ['stream', 'Events'], ['inspect', 'Ladder and state']];
const DIGITS_TO_CALL = ['connected', 'conference', 'remotely held'];
const LATER = 10000; // milliseconds for which a call that is over stays on the display

let state = null; // of the telephone, as last read
let isLost = true;
let dialled = '';
let redial = '';
let chosenCall = null;
let chosenRow = null;
let numbers = [];
let tab = 'ladder';

const connection = new Connection({state: take, happened: note, gap: noteGap, missed: noteMissed, lost: lose, back: comeBack});
const log = new Log({onChoose: chooseRow});
const ladder = new Ladder({onCall: call, onChoose: (id) => { log.choose(id); }});
const tree = new StateTree();
const steps = new Steps();
const box = new RequestBox({contextOf: () => state && {description: connection.description, state: visible(), numbers}, onSend: send});

/** The state without calls that have long been over. */
function visible() {
  const now = connection.now();
  return {...state, calls: state.calls.filter((each) => isLive(each) || now - Date.parse(each.since) < LATER)};
}

const actions = () => actionsFor(visible(), connection.description, chosenCall, dialled, redial);

// --- drawing

function draw() {
  if (!state) return;
  const now = connection.now();
  const shownState = visible();
  if (!shownState.calls.some((each) => each.id === chosenCall)) chosenCall = null;
  drawDisplay(shownState, now, {chosen: chosenCall, dialled, onChoose: (id) => { chosenCall = id; draw(); }, onMore: () => showTab('state')});
  drawSoftkeys(actions(), isLost, press);
  drawDevice(state, isLost, {onPress: pressKey, onDigit: digit, onSend: send});
  setText(byId('service'), isLost ? 'unknown' : state.service);
  setText(byId('domain'), shown(state.domain ?? ''));
  setText(byId('number'), String(state.event));
  drawTitle(shownState);
  roam();
}

function drawTitle(shownState) {
  const isRinging = shownState.calls.some((each) => each.state === 'ringing');
  document.title = isLost ? 'reconnecting: Telephone' : isRinging ? '☎ ringing: Telephone' : 'Telephone';
  ring(isRinging && !isLost);
}

function take(next) {
  const before = state;
  state = next;
  setDomain(next.domain);
  tellChanges(before, next);
  draw();
  tree.show(next);
  ladder.show(next);
}

/** Speaks of own calls that have entered another state; of an incoming one at once. */
function tellChanges(before, next) {
  const old = new Map((before?.calls ?? []).filter(isLive).map((each) => [each.id, each]));
  for (const each of next.calls.filter(isLive)) {
    const last = old.get(each.id);
    old.delete(each.id);
    if (!before || last?.state === each.state) continue;
    if (each.state === 'ringing') say(`Call on line ${each.line} from ${nameOf(each.party)}`, true);
    else say(`Call ${each.id}, ${nameOf(each.party)}: ${stateWords(each)}`);
  }
  for (const [id, each] of old) say(`Call ${id}, ${nameOf(each.party)}: over`);
}

// --- what happens

const eventRow = (event) => ({kind: 'event', time: Date.parse(event.time), number: event.event, seq: event.seq, line: event.line ?? '', call: event.call || '',
  what: event.words?.what ?? event.name ?? 'unknown', party: event.words?.party, details: event.words?.details ?? [], data: event});

function note(happened) {
  const rows = happened.map(({event, step}) => (event ? eventRow(event) : steps.rowOf(step))).filter(Boolean);
  log.add(rows);
  rows.forEach((row) => ladder.note(row));
}

function noteMissed(count) {
  log.add([{kind: 'gap', time: connection.now(), what: `${count} steps between service and far ends came too fast to be shown`}]);
}

function noteGap(words) {
  log.add([{kind: 'gap', time: connection.now(), what: `events were missed and are no longer kept (${words}); the state is up to date`}]);
}

/** Sends, and shows, a request or a command. */
async function send(text) {
  const isRequest = connection.isRequest(text);
  const row = requestRow(text, isRequest);
  log.add([row]);
  ladder.note(row);
  if (isRequest) tree.mark();
  const reply = await connection.send(text);
  const isRefused = reply.error !== undefined || /^sfiFailure/.test(reply.answer ?? '');
  Object.assign(row, {ok: !isRefused, isDoubtful: !isRefused && reply.reasons?.length > 0, answer: answerWords(reply), took: reply.took, version: row.version + 1, text: undefined});
  row.data.answer = reply.answer ?? reply.error ?? (typeof reply.result === 'string' ? reply.result : JSON.stringify(reply.result));
  const reasons = reply.error !== undefined ? [reply.error] : reply.reasons ?? [];
  log.add(reasons.map((reason) => ({kind: 'reason', time: row.time, line: '', call: '', what: reason, data: {text, isRequest}})));
  if (reasons.length) say(reasons.join('; '));
  log.later();
  if (chosenRow === row) drawDetails();
  return reply;
}

function answerWords(reply) {
  if (reply.error !== undefined) return 'refused';
  if (reply.answer === undefined) return 'done';
  return reply.answer === null ? 'no answer' : reply.answer.replace(/^sfi(Success|Failure)$/, (_, word) => word.toLowerCase());
}

function requestRow(text, isRequest) {
  const words = text.match(/(?:[^\s"]|"(?:[^"\\]|\\.)*")+/g) ?? [''];
  const row = {kind: 'request', time: connection.now(), line: '', call: '', what: text, details: [], data: {text, isRequest}};
  if (!isRequest || text.startsWith('<')) return row;
  row.what = words[0];
  for (const [tag, ...rest] of words.slice(1).map((word) => word.split('='))) {
    const value = rest.join('=').replace(/^"|"$/g, '');
    if (tag === 'Line') row.line = value;
    else if (tag === 'CallID' || tag === 'activeCall') row.call = value;
    else if (tag === 'Destination') row.party = value;
    else row.details.push(`${tag}=${value}`);
  }
  if (row.what === 'OutgoingCallMakeRequest') redial = row.party ?? redial;
  return row;
}

// --- what the user does

function refuseLost() {
  if (isLost) say('There is no connection to the telephone', true);
  return isLost;
}

function press(action) {
  if (refuseLost() || !action) return;
  if (!action.text) { say(`${action.label}: not possible now`); return; }
  if (action.isOpen) { showView('stream'); box.put(action.text); return; }
  dialled = '';
  send(action.text);
  draw();
}

async function pressKey(key) {
  if (refuseLost()) return;
  if (key.shows_only) { say('This key only shows'); return; }
  await send(`press ${key.number}`);
  await send(`release ${key.number}`);
}

function digit(sign) {
  if (refuseLost()) return;
  soundDigit(sign);
  const talking = byAttention(state.calls).find((each) => DIGITS_TO_CALL.includes(each.state));
  if (talking && !dialled) { send(`GenerateDigits Line=${talking.place} activeCall=${talking.id} digits=${sign}`); return; }
  dialled += sign;
  draw();
}

function call(number) {
  if (refuseLost()) return;
  dialled = number;
  press(actions().find((each) => each?.text.startsWith('OutgoingCallMakeRequest')));
}

/** The first of the softkeys with one of these requests. */
const byRequest = (...names) => () => press(state && actions().find((each) => names.some((name) => each?.text.startsWith(`${name} `))));

// --- connection

function comeBack(isRestarted) {
  isLost = false;
  byId('banner').hidden = true;
  document.body.classList.remove('lost');
  setText(byId('connection'), 'connected');
  if (isRestarted) {
    log.add([{kind: 'gap', time: Date.now(), what: 'the telephone was restarted: its calls are over, and its events begin again with 1'}]);
    ladder.restart();
    steps.restart();
    say('The telephone was restarted', true);
  } else if (state) say('Connected again');
  fetchNumbers();
}

async function fetchNumbers() {
  const reply = await connection.send('exchange numbers');
  const rows = typeof reply.result === 'string' ? reply.result.split('\n') : [];
  numbers = rows.map((row) => /^(\S+)\s+(.*)$/.exec(row)).filter(Boolean).map(([, number, does]) => ({number, does})).filter((each) => !/telephone/.test(each.does));
  ladder.numbers = numbers;
  ladder.redraw();
}

function lose(reason) {
  if (!isLost && state) {
    log.add([{kind: 'gap', time: Date.now(), what: `no connection since ${clockTime(Date.now()).slice(0, 8)}`}]);
    say('The telephone does not answer', true);
  }
  isLost = true;
  document.body.classList.add('lost');
  setText(byId('connection'), 'reconnecting');
  byId('banner').hidden = false;
  setText(byId('banner-what'), 'The telephone does not answer.');
  const when = state ? `Last heard of at event ${connection.number}, ${lasting(new Date(connection.since).toISOString(), Date.now())} ago. ` : '';
  setText(byId('banner-more'), `${when}${reason[0].toUpperCase()}${reason.slice(1)}. It is tried every second; what was missed is fetched then.`);
  setText(byId('as-of'), state ? `As it was at event ${state.event}` : '');
  draw();
}

// --- page

function chooseRow(row) {
  chosenRow = row;
  drawDetails();
  if (tab !== 'detail') showTab('detail');
}

function drawDetails() {
  const of = chosenRow?.call && state ? actionsFor({...visible(), calls: visible().calls}, connection.description, Number(chosenRow.call), '', '') : [];
  drawDetail(chosenRow, connection.description ?? {events: [], requests: [], commands: []}, of, (text) => { showView('stream'); box.put(text); });
}

function showTab(id) {
  tab = id;
  for (const [name] of TABS) {
    byId(name).hidden = name !== id;
    set(byId(`tab-${name}`), {'aria-selected': String(name === id)});
  }
  if (!state) return;
  if (id === 'state') tree.show(state);
  if (id === 'ladder') ladder.redraw();
  if (id === 'detail') drawDetails();
}

function showView(id) {
  document.body.dataset.view = id;
  for (const button of byId('views').children) set(button, {'aria-current': button.dataset.view === id ? 'page' : null});
  log.later();
}

function start() {
  startTheme();
  byId('sound').addEventListener('click', (event) => {
    const isOn = event.currentTarget.getAttribute('aria-pressed') !== 'true';
    set(event.currentTarget, {'aria-pressed': String(isOn)});
    switchSound(isOn);
    draw();
  });
  byId('retry').addEventListener('click', () => connection.open());
  byId('tabs').append(...TABS.map(([id, label]) => make('button', {type: 'button', role: 'tab', id: `tab-${id}`, 'aria-controls': id, click: () => showTab(id)}, label)));
  byId('views').append(...VIEWS.map(([id, label]) => make('button', {type: 'button', 'data-view': id, click: () => showView(id)}, label)));
  listenToKeys({a: byRequest('AnswerCall'), h: byRequest('HoldCall', 'RetrieveCall'), e: byRequest('CallClearRequest', 'RefuseCall')}, digit, () => {
    if (dialled) { dialled = dialled.slice(0, -1); draw(); } else document.activeElement.blur();
  });
  showTab('ladder');
  showView('device');
  setInterval(draw, 1000);
  matchMedia('(prefers-reduced-motion: reduce)').addEventListener('change', beatTogether);
  connection.open();
}

start();
