// The page by keyboard: Tab goes from group to group, arrows move inside one, letters do what is done most.
import {byId, make} from './dom.js';

const GROUPS = '.soft, .keys, .digits, .fixed, .tabs, .segments';
const HELP = [['/', 'filter'], [':', 'request box'], ['0–9 * #', 'digits'], ['A', 'answer'], ['H', 'hold or retrieve'], ['E', 'end'], ['Esc', 'delete the digits, go back'],
  ['Tab', 'from group to group'], ['← → ↑ ↓', 'inside a group'], ['End', 'follow the events'], ['?', 'this list']];

/** One element of each group can be reached by Tab. */
export function roam() {
  for (const group of document.querySelectorAll(GROUPS)) {
    const buttons = [...group.querySelectorAll('button:not([aria-hidden=true])')];
    const first = buttons.find((button) => button.tabIndex === 0 && button === group.last) ?? buttons.find((button) => button.getAttribute('aria-selected') === 'true') ?? buttons[0];
    for (const button of group.querySelectorAll('button')) {
      const index = button === first ? 0 : -1;
      if (button.tabIndex !== index) button.tabIndex = index;
    }
  }
}

function moveInside(event, group) {
  const all = [...group.querySelectorAll('button:not([aria-hidden=true])')];
  const at = all.indexOf(event.target);
  const columns = getComputedStyle(group).gridTemplateColumns.split(' ').length;
  const to = {ArrowRight: at + 1, ArrowLeft: at - 1, ArrowDown: at + columns, ArrowUp: at - columns, Home: 0, End: all.length - 1}[event.key];
  if (to === undefined || !all[to]) return false;
  group.last = all[to];
  all[to].tabIndex = 0;
  roam();
  all[to].focus();
  return true;
}

/** `letters` has what a key outside fields does, by key in small letters. */
export function listenToKeys(letters, onDigit, onEscape) {
  const help = byId('help');
  help.append(make('h2', {}, 'Keyboard'), make('table', {}, make('tbody', {}, HELP.map(([key, what]) => make('tr', {}, make('th', {scope: 'row'}, make('kbd', {}, key)), make('td', {}, what))))),
    make('form', {method: 'dialog'}, make('button.solid', {}, 'Close')));
  byId('keyboard').addEventListener('click', () => help.showModal());
  document.addEventListener('focusin', (event) => {
    const group = event.target.closest?.(GROUPS);
    if (group && event.target.tagName === 'BUTTON') { group.last = event.target; event.target.tabIndex = 0; roam(); }
  });
  document.addEventListener('keydown', (event) => {
    const group = event.target.closest?.(GROUPS);
    if (group && moveInside(event, group)) return event.preventDefault();
    if (event.key === 'Escape') return onEscape();
    if (event.target.closest?.('input, dialog') || event.ctrlKey || event.metaKey || event.altKey) return undefined;
    const act = {'/': () => byId('filter').focus(), ':': () => byId('box').focus(), '?': () => help.showModal(), ...letters}[event.key.toLowerCase()];
    if (/^[0-9*#]$/.test(event.key)) onDigit(event.key);
    else if (!act) return undefined;
    else act();
    return event.preventDefault();
  });
}
