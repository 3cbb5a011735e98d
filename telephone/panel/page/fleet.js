// The page of a fleet: a tile for each telephone, drawn from what the fleet knows at the moment. A click on a tile opens
// the panel of the telephone.
import {byId, keep, make, say, set, setText, shown} from './dom.js';
import {beatTogether, drawLamp, lampWords, makeLamp} from './lamps.js';
import {startTheme} from './theme.js';
import {byAttention, lasting, nameOf, setDomain, setIsolated, stateWords} from './words.js';

const POLL = 1000; // milliseconds
const OFF = {mode: 'off', colour: 'none'};
// Label, and which telephones it leaves.
const KINDS = [
  ['All', () => true],
  ['In a call', (each) => each.calls?.length > 0],
  ['Not registered', (each) => each.registration !== 'registered'],
  ['Ended', (each) => each.process === null],
];

let telephones = [];
let kind = KINDS[0];
let isLost = true;

async function ask(path, body) {
  const options = body === undefined ? {} : {method: 'POST', body};
  const response = await fetch(path, {...options, credentials: 'same-origin', cache: 'no-store', signal: AbortSignal.timeout(15000)})
    .catch(() => { throw new Error('It cannot be reached'); });
  const answer = await response.json();
  if (response.status === 401) throw new Error('This browser is not admitted: open the address that the fleet has printed');
  return answer;
}

/** What it does, in a word and in more of them. */
function wordsOf(each) {
  if (each.condition !== 'running') return {does: each.condition === 'waiting' ? 'ended' : each.condition, more: each.condition === 'waiting' ? `${each.reason}, is started again` : ''};
  if (each.calls === null) return {does: 'does not answer', more: ''};
  setDomain(each.domain);
  const [call, ...others] = byAttention(each.calls);
  if (!call) return {does: each.registration === 'registered' ? each.state : each.registration, more: ''};
  const more = others.length ? `, ${others.length} more` : '';
  return {does: stateWords(call), more: `${nameOf(call.party)}, ${lasting(call.since, Date.parse(each.time))}${more}`};
}

const useOf = (each) => (each.process === null ? '' : `${(each.memory / 1e6).toFixed(1)} MB, ${each.processor.toFixed(1)} s${each.starts > 1 ? `, ${each.starts} starts` : ''}`);

function makeTile(each) {
  return make('li.tile', {}, make('a', {href: `/telephones/${each.number}`, target: '_blank', rel: 'noopener'}, makeLamp(), make('b', {}, String(each.number)), make('span.does'), make('small')));
}

function drawTile(tile, each) {
  const link = tile.firstElementChild;
  const [lamp, , does, more] = link.children;
  const words = wordsOf(each);
  tile.classList.toggle('ended', each.process === null);
  drawLamp(lamp, each.lamp ?? OFF);
  setText(does, words.does);
  setIsolated(more, words.more || `${each.line ?? ''}  ${useOf(each)}`);
  const name = [`Telephone ${each.number}`, each.line && `line ${each.line}`, words.does, words.more, lampWords(each.lamp ?? OFF), useOf(each)];
  set(link, {'aria-label': shown(name.filter(Boolean).join(', ')), title: shown(name.slice(1).filter(Boolean).join('\n'))});
}

/** Every word of the filter stands somewhere in the tile. */
function isWanted(each) {
  const words = wordsOf(each);
  const text = `${each.number} ${each.line} ${words.does} ${words.more} ${each.registration}`.toLowerCase();
  return kind[1](each) && byId('filter').value.toLowerCase().split(/\s+/).every((word) => text.includes(word));
}

function draw() {
  const wanted = telephones.filter(isWanted);
  keep(byId('telephones'), wanted, (each) => each.number, makeTile, drawTile);
  const sum = (what) => telephones.reduce((total, each) => total + what(each), 0);
  setText(byId('registered'), `${sum((each) => each.registration === 'registered')} of ${telephones.length}`);
  setText(byId('calling'), String(sum((each) => each.calls?.length > 0)));
  setText(byId('memory'), `${(sum((each) => each.memory) / 1e6).toFixed(1)} MB`);
  setText(byId('processor'), `${sum((each) => each.processor).toFixed(1)} s`);
  for (const [place, [label, isOfIt]] of KINDS.entries()) {
    const button = byId('kinds').children[place];
    setText(button, `${label} ${telephones.filter(isOfIt).length}`);
    set(button, {'aria-pressed': String(kind === KINDS[place])});
  }
  beatTogether();
}

/** Speaks of telephones that have ended or run again; not of calls, which are many. */
function tellChanges(next) {
  const before = new Map(telephones.map((each) => [each.number, each.condition]));
  const changed = next.filter((each) => before.has(each.number) && before.get(each.number) !== each.condition);
  if (changed.length) say(changed.map((each) => `Telephone ${each.number} ${wordsOf(each).does === 'ended' ? each.reason : each.condition}`).join('; '));
}

async function refresh() {
  try {
    const next = (await ask('/telephones')).telephones;
    tellChanges(next);
    telephones = next;
    if (isLost) setLost(false, '');
    draw();
  } catch (error) {
    if (!isLost) say('The fleet does not answer', true);
    setLost(true, `${error.message}. It is tried every second.`);
  }
}

function setLost(isNow, why) {
  isLost = isNow;
  document.body.classList.toggle('lost', isLost);
  setText(byId('connection'), isLost ? 'reconnecting' : 'connected');
  byId('banner').hidden = !isLost;
  setText(byId('banner-more'), why);
}

async function send(event) {
  event.preventDefault();
  const box = byId('box');
  const text = box.value.trim();
  if (!text) return;
  const answer = await ask('/commands', text).catch((error) => ({error: error.message}));
  const words = (answer.error ?? (answer.result || 'done')).split('\n').map(shown).join('\n');
  byId('note').classList.toggle('bad', answer.error !== undefined);
  setText(byId('note'), words);
  if (answer.error === undefined) box.value = '';
  refresh();
}

function start() {
  startTheme();
  byId('kinds').append(...KINDS.map((each) => make('button', {type: 'button', click: () => { kind = each; draw(); }}, each[0])));
  byId('filter').addEventListener('input', draw);
  byId('form').addEventListener('submit', send);
  // Each time after the last answer: a fleet that is slow is not asked more often.
  const next = () => setTimeout(async () => { if (!document.hidden) await refresh(); next(); }, POLL);
  refresh().then(next);
}

start();
