// Everything about the chosen row: its elements with their meaning, what can be sent now, the text as it came.
import {byId, isolated, make, say, shown} from './dom.js';
import {clockTime} from './words.js';

const plainOf = (value) => (value !== null && typeof value === 'object' ? value.value : value);
const isEmpty = (value) => ['', 0, false, null].includes(plainOf(value));

function elementRow(tag, value, meaning) {
  const plain = plainOf(value);
  const name = value !== null && typeof value === 'object' ? value.name : null;
  return make('tr', {}, make('th', {scope: 'row'}, shown(tag)),
    make('td', {}, make('code', {}, isolated(name ?? (plain === '' ? '(empty)' : plain))), make('small', {}, [name && `${plain}`, meaning].filter(Boolean).join(': '))));
}

function copies(row) {
  const data = row.data;
  const forms = [['Text', data.raw ?? data.text]];
  if (row.kind !== 'request' && row.kind !== 'reason') forms.push(['JSON', JSON.stringify(data)]);
  else forms.push(['curl', `curl -H "Authorization: Bearer $TOKEN" ${location.origin}/${data.isRequest ? 'requests' : 'commands'} -d '${data.text.replaceAll("'", "'\\''")}'`]);
  return make('span.copies', {}, forms.map(([label, text]) => make('button.link', {type: 'button', click: () => navigator.clipboard.writeText(text).then(() => say('copied'), () => say('the browser does not allow copying'))}, `Copy ${label}`)));
}

function eventPart(row, description) {
  const event = description.events.find((each) => each.method === row.data.name);
  const meaningOf = (tag) => event?.elements.find((each) => each.tag === tag)?.meaning ?? '';
  const all = Object.entries(row.data.elements ?? {});
  const filled = all.filter(([, value]) => !isEmpty(value));
  const empty = all.filter(([, value]) => isEmpty(value));
  const table = (list) => make('table', {}, make('tbody', {}, list.map(([tag, value]) => elementRow(tag, value, meaningOf(tag)))));
  return [make('p.lead', {}, `${event?.meaning ?? ''} Event ${row.number}, ${clockTime(row.time)}.`), table(filled),
    empty.length ? make('details', {}, make('summary', {}, `${empty.length} empty elements`), table(empty)) : '',
    event?.when ? make('p.lead', {}, event.when) : ''];
}

function requestPart(row, description) {
  const request = description.requests.find((each) => each.name.toLowerCase() === row.what.toLowerCase());
  const command = description.commands.find((each) => row.data.text.startsWith(each.name));
  return [make('p.lead', {}, request?.meaning ?? command?.help ?? ''), row.answer === undefined ? '' : make('p', {}, make('code', {}, shown(row.data.answer ?? row.answer))),
    request ? make('p.lead', {}, `${request.answer.promises ?? ''} ${request.answer.does_not_promise ? `It does not promise: ${request.answer.does_not_promise}` : ''}`) : ''];
}

/** `actions` can be sent now for the call of the row. */
export function drawDetail(row, description, actions, onTake) {
  const view = byId('detail');
  if (!row) return view.replaceChildren(make('h2', {}, 'Nothing chosen'), make('p.lead', {}, 'Choose a row, and everything about it is here.'));
  const possible = actions.filter((action) => action?.text);
  const name = {event: row.data?.name, reason: 'reason', sip: 'SIP message', operation: 'asked of the call engine'}[row.kind] ?? (row.data?.isRequest ? 'request' : 'command');
  const children = [make('h2', {}, shown(row.what), make('small', {}, shown(name ?? '')))];
  if (row.kind === 'event') children.push(...eventPart(row, description));
  if (row.kind === 'request') children.push(...requestPart(row, description));
  if (possible.length) {
    children.push(make('h3', {}, 'What can be sent now'),
      make('div.raw', {}, possible.map((action) => make('button.link', {type: 'button', title: action.meaning, click: () => onTake(action.text)}, shown(action.text)))));
  }
  if (row.data) children.push(make('h3', {}, 'As it was', copies(row)), make('pre.raw', {}, shown(row.data.raw ?? row.data.text)));
  return view.replaceChildren(...children.filter((child) => child !== ''));
}
