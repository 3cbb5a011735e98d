// What the softkeys offer: a row for each situation, the likeliest action first. A request's parameters and meaning come
// from the description, its values from the state.
import {byId, keep, make, set, setText, shown} from './dom.js';
import {byAttention, isLive, nameOf} from './words.js';

/** The smallest id that no call has. */
export function freeCall(state) {
  const used = new Set(state.calls.filter(isLive).map((call) => call.id));
  let id = 1;
  while (used.has(id)) ++id;
  return id;
}

/** The line for the next call: the seized one, else the primary one. */
export const lineOf = (state) => state.lines.find((line) => line.selected) ?? state.lines.find((line) => line.primary) ?? state.lines[0];

const parties = (call) => ({...call, label: nameOf(call.party)});

// label, request, values. A value that is missing is asked for in the request box; null makes a gap.
const CALL = ['Call…', 'OutgoingCallMakeRequest', (x) => ({Line: x.line, CallID: x.free, Destination: x.dialled})];
const END = ['End', 'CallClearRequest', (x) => ({Line: x.call.place, CallID: x.call.id})];
const HOLD = ['Hold', 'HoldCall', (x) => ({Line: x.call.place, CallID: x.call.id})];
const CONSULT = ['Consult…', 'Consult', (x) => ({Line: x.call.line, CallID: x.free, Destination: x.dialled})];
const BLIND = ['Transfer…', 'BlindTransfer', (x) => ({Line: x.call.place, CallID: x.call.id, Destination: x.dialled})];
const both = (x) => ({Line: x.call.place, activeCall: x.call.id, heldCall: x.held.id});

const ROWS = {
  none: [CALL,
    ['Redial', 'OutgoingCallMakeRequest', (x) => x.redial && {Line: x.line, CallID: x.free, Destination: x.redial}],
    ['Forward…', 'setForwardingConfiguration', (x) => ({Line: x.line, fwType: 0, status: 1, uri: x.dialled})],
    ['Pick up', 'GroupPickupCall', (x) => ({Line: x.line, CallID: x.free})]],
  ringing: [
    ['Answer', 'AnswerCall', (x) => ({Line: x.call.place, CallID: x.call.id}), 'wide'],
    ['Refuse', 'RefuseCall', (x) => ({Line: x.call.place, CallID: x.call.id, RefuseCallReason: x.refusal})],
    ['Deflect…', 'DeflectCall', (x) => ({Line: x.call.place, CallID: x.call.id, Destination: x.dialled})]],
  dialling: [null, null, null, END],
  'remote ringing': [
    ['Call back', 'ActivateCallbackRinging', (x) => x.call.call_back_possible && {Line: x.call.place, CallID: x.call.id}], null, null, END],
  connected: [HOLD, CONSULT, BLIND, END],
  held: [['Retrieve', 'RetrieveCall', (x) => ({Line: x.call.place, CallID: x.call.id})], CONSULT, BLIND, END],
  two: [
    ['Swap', 'AlternateCalls', (x) => ({Line: x.call.place})],
    ['Join', 'ConferenceCall', both], ['Transfer', 'AttendedTransfer', both], END],
  conference: [HOLD,
    ['Drop first', 'CallClearRequest', (x) => x.members[0] && {Line: x.members[0].place, CallID: x.members[0].id}, '', (x) => x.members[0] && `Drop ${x.members[0].label}`],
    ['Drop second', 'CallClearRequest', (x) => x.members[1] && {Line: x.members[1].place, CallID: x.members[1].id}, '', (x) => x.members[1] && `Drop ${x.members[1].label}`],
    null],
  over: [
    ['Call back', 'ActivateCallbackBusy', (x) => ({Line: x.call.place, CallID: x.call.id})],
    ['Redial', 'OutgoingCallMakeRequest', (x) => x.redial && {Line: x.line, CallID: x.free, Destination: x.redial}],
    null, CALL],
};
const SAME = {incoming: 'ringing', proceeding: 'dialling', transferring: 'dialling', clearing: 'dialling', 'held by both': 'held', 'remotely held': 'connected'};

function situationOf(call, held) {
  if (!call) return 'none';
  if (call.over) return 'over';
  if (held && ['connected', 'remotely held'].includes(call.state)) return 'two';
  return ROWS[call.state] ? call.state : SAME[call.state] ?? 'dialling';
}

const plain = (value) => (/^[^\s"'\\]+$/.test(value) ? value : `"${String(value).replace(/["\\]/g, '\\$&')}"`);

/** The text of a request; what is missing stands at its end, to be filled in. */
function requestText(name, values) {
  const given = Object.entries(values).filter(([, value]) => value !== '' && value !== undefined);
  const open = Object.entries(values).filter(([, value]) => value === '' || value === undefined);
  return [name, ...given.map(([tag, value]) => `${tag}=${plain(value)}`), ...open.map(([tag]) => `${tag}=`)].join(' ');
}

/** What can be sent for a call, or without one: [{label, text, isOpen, meaning, style}]; null is an empty place. */
export function actionsFor(state, description, chosen, dialled, redial) {
  const calls = byAttention(state.calls);
  const call = calls.find((each) => each.id === chosen) ?? calls[0];
  const held = call && calls.find((each) => each !== call && isLive(each) && each.held_here && each.line === call.line);
  const refusal = description.enumerations.find((each) => each.name === 'RefuseCall')?.values[0].number;
  const members = call ? state.calls.filter((each) => each.in_conference && isLive(each)).map(parties) : [];
  const facts = {call, held, members, dialled, redial, refusal, free: freeCall(state), line: lineOf(state)?.id};
  return ROWS[situationOf(call, held)].map((row) => {
    if (!row) return null;
    const [label, name, valuesOf, style, labelOf] = row;
    const request = description.requests.find((each) => each.name === name);
    const values = request && valuesOf(facts);
    if (!values) return {label: (labelOf && labelOf(facts)) || label, key: label, text: '', meaning: 'not possible now'};
    const isOpen = Object.values(values).includes('');
    const word = label.endsWith('…') && !isOpen ? label.slice(0, -1) : label;
    return {label: (labelOf && labelOf(facts)) || word, key: label, text: requestText(name, values), isOpen, meaning: request.meaning, style};
  });
}

/** Below the softkeys: what the key under the pointer or focus would send. */
export function hint(lead, text) {
  const element = byId('hint');
  if (!element.firstChild) element.append(make('span'), make('code'));
  setText(element.firstChild, lead);
  setText(element.lastChild, shown(text));
}

let hinted = null; // place whose request is shown

export function drawSoftkeys(actions, isLost, press) {
  const tell = (place) => {
    const action = byId('soft').children[place]?.action;
    if (action) hint(action.text ? 'sends' : '', action.text || action.meaning);
  };
  const point = (place) => () => { hinted = place; tell(place); };
  const places = actions.map((action, place) => ({action, place}));
  keep(byId('soft'), places, (each) => each.place,
    ({place}) => make('button', {type: 'button', click: (event) => press(event.currentTarget.action), mouseenter: point(place), focus: point(place)}),
    (button, {action, place}) => {
      button.action = action;
      setText(button, action ? shown(action.label) : '');
      const wide = action?.style === 'wide' ? ' wide' : '';
      set(button, {class: `${place === 0 && action?.text ? 'main' : ''}${wide}`, 'aria-disabled': isLost || !action?.text ? 'true' : null,
        title: action?.meaning ?? null, 'aria-hidden': action ? null : 'true', 'data-action': action?.key ?? null});
    });
  if (!byId('soft').contains(document.activeElement) && !byId('soft').matches(':hover')) hinted = 0;
  if (hinted !== null) tell(hinted);
}
