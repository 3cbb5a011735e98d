// How parts of the state are called. Events come with their words from the telephone.
import {isolated, make, set, setText, shown} from './dom.js';

const HUES = 3;
const hues = new Map(); // by id of a call; kept for its life
let domain = '';

export const setDomain = (name) => { domain = name ?? ''; };

/** "100" of a party in the telephone's own domain, else the address without its scheme. */
export function numberOf(address) {
  const plain = (address ?? '').replace(/^sips?:/, '');
  return domain && plain.endsWith(`@${domain}`) ? plain.slice(0, -domain.length - 1) : plain;
}

export const nameOf = (party) => party.name || numberOf(party.address) || 'unknown';

/** The number of one of three colours. */
export function hueOf(call) {
  const key = String(call);
  if (!hues.has(key)) {
    const used = [...hues.values()].slice(-HUES + 1);
    hues.set(key, [1, 2, 3].find((hue) => !used.includes(hue)));
  }
  return hues.get(key);
}

export function chip(call) {
  return make(`span.call.hue${hueOf(call)}`, {title: `call ${call}`}, String(call));
}

const two = (number) => String(number).padStart(2, '0');

export function clockTime(time) {
  const at = new Date(time);
  return `${two(at.getHours())}:${two(at.getMinutes())}:${two(at.getSeconds())}.${String(at.getMilliseconds()).padStart(3, '0')}`;
}

/** "1:05" since a time of the telephone. */
export function lasting(since, now) {
  const seconds = Math.max(0, Math.floor((now - Date.parse(since)) / 1000));
  const hours = Math.floor(seconds / 3600);
  const minutes = Math.floor(seconds / 60) % 60;
  return hours ? `${hours}:${two(minutes)}:${two(seconds % 60)}` : `${minutes}:${two(seconds % 60)}`;
}

export const isLive = (call) => !call.over;

/** A state as its user sees it. */
export const stateWords = (call) => (call.state === 'remote ringing' ? 'ringing there' : call.state);

const FIRST = ['ringing', 'incoming', 'connected', 'conference', 'remotely held', 'dialling', 'proceeding', 'remote ringing', 'transferring'];

/** The calls, the one that needs attention first. */
export function byAttention(calls) {
  const rank = (call) => (call.over ? 99 : FIRST.includes(call.state) ? FIRST.indexOf(call.state) : 50);
  return [...calls].sort((a, b) => rank(a) - rank(b) || Date.parse(b.since) - Date.parse(a.since));
}

/** Fills in a text of the telephone that may be anything. */
export function setIsolated(element, text) {
  const inner = element.firstElementChild?.tagName === 'BDI' ? element.firstElementChild : null;
  if (inner) setText(inner, shown(text));
  else element.replaceChildren(isolated(text));
  set(element, {title: shown(text)});
}
