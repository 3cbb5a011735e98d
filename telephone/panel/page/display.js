// The display: the call that needs attention large, the others in a row each.
import {byId, keep, make, set, setText, shown} from './dom.js';
import {byAttention, chip, isLive, lasting, nameOf, numberOf, setIsolated, stateWords} from './words.js';

const MOST_ROWS = 2;
let parts = null;

function build() {
  parts = {
    line: make('span'), flags: make('span.flags'), clock: make('span.clock'),
    chips: make('span.chips'), what: make('span'), lasting: make('span.clock'),
    who: make('div.who'), more: make('div.sub'), others: make('div.others'),
  };
  byId('screen').append(
    make('div.screen-bar', {}, parts.line, make('span.space'), parts.flags, parts.clock),
    make('div.now', {}, make('div.eyebrow', {}, parts.chips, parts.what, parts.lasting), parts.who, parts.more),
    parts.others);
}

const chips = (element, calls) => keep(element, calls, (call) => call.id, (call) => chip(call.id));

function flagsOf(state) {
  const held = state.calls.filter((call) => isLive(call) && call.held_here).length;
  const messages = state.lines.reduce((sum, line) => sum + (line.messages?.new ?? 0), 0);
  const isWaiting = state.lines.some((line) => line.messages?.waiting);
  return [
    held && `${held} HELD`,
    isWaiting && `✉ ${messages || ''}`.trim(),
    state.muted && 'MUTED',
    state.locked && 'LOCKED',
    state.lines.some((line) => line.do_not_disturb) && 'DO NOT DISTURB',
    state.calls.some((call) => isLive(call) && call.recording) && 'RECORDING',
  ].filter(Boolean);
}

function readiness(state) {
  const of = (word) => state.lines.filter((line) => line.registration === word).map((line) => line.id);
  const absent = of('not registered');
  const present = of('registered');
  const list = (ids) => ids.join(' and ');
  if (absent.length) return `${list(absent)} not registered`;
  return present.length ? `${list(present)} ${present.length > 1 ? 'are' : 'is'} registered` : 'calls by address';
}

/** What stands large: {calls, what, since, who, more, others}. */
function contentOf(state, chosen, dialled) {
  const calls = byAttention(state.calls);
  const first = calls.find((call) => call.id === chosen) ?? calls[0];
  if (dialled && first?.state !== 'ringing') return {calls: [], what: 'Dial', who: dialled, more: 'Call sends it; Esc deletes it', others: calls};
  if (!first) {
    const seized = state.lines.find((line) => line.selected);
    return {calls: [], what: seized ? `Line ${seized.id} is seized` : 'No calls', who: state.ready ? 'Ready' : 'Starting', more: readiness(state), others: []};
  }
  if (first.state === 'conference') {
    const members = calls.filter((call) => call.state === 'conference');
    return {calls: members, what: 'conference', since: first.began, who: `Conference of ${members.length + 1}`,
      more: [first.line, ...members.map((call) => nameOf(call.party))].join(', '), others: calls};
  }
  const number = numberOf(first.party.address);
  const place = state.lines.length > 1 ? ` on ${first.place}` : '';
  return {calls: [first], what: `${stateWords(first)}${place}${first.over && first.reason !== 'normal' ? `, ${first.reason}` : ''}`,
    since: first.over ? null : first.since, who: nameOf(first.party), more: first.party.name ? number : '', others: calls.filter((call) => call !== first)};
}

function drawOthers(calls, now, onChoose, onMore) {
  const rows = calls.slice(0, calls.length > MOST_ROWS + 1 ? MOST_ROWS : MOST_ROWS + 1);
  const more = calls.length - rows.length;
  const items = rows.map((call) => ({key: call.id, call}));
  if (more > 0) items.push({key: 'more', more});
  keep(parts.others, items, (item) => item.key,
    (item) => (item.call
      ? make('button', {type: 'button', click: () => onChoose(item.call.id)}, chip(item.call.id), make('b'), make('span'), make('span.clock'))
      : make('button', {type: 'button', click: onMore}, make('span'))),
    (button, item) => {
      if (!item.call) return setText(button.firstChild, `${item.more} more`);
      const [, name, what, time] = button.children;
      const words = item.call.state === 'conference' ? 'talking' : `${stateWords(item.call)} on ${item.call.place}`;
      setIsolated(name, nameOf(item.call.party));
      setText(what, words);
      setText(time, item.call.over ? '' : lasting(item.call.since, now));
      return set(button, {'aria-label': `Call ${item.call.id}, ${shown(nameOf(item.call.party))}, ${words}`});
    });
}

export function drawDisplay(state, now, {chosen, dialled, onChoose, onMore}) {
  if (!parts) build();
  const content = contentOf(state, chosen, dialled);
  const line = content.calls[0]?.line ?? (state.lines.find((each) => each.selected) ?? state.lines.find((each) => each.primary))?.id;
  setText(parts.line, line ? `Line ${line}` : '');
  keep(parts.flags, flagsOf(state), (flag) => flag, (flag) => make('span.flag', {}, flag));
  setText(parts.clock, new Date(now).toTimeString().slice(0, 5));
  chips(parts.chips, content.calls);
  setText(parts.what, content.what);
  setText(parts.lasting, content.since ? lasting(content.since, now) : '');
  setIsolated(parts.who, content.who);
  set(parts.who, {class: content.who.length > 18 ? 'who small' : 'who'});
  setIsolated(parts.more, content.more);
  drawOthers(content.others, now, onChoose, onMore);
}
