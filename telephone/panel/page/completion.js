// What may follow in the request box: names of requests and commands, parameters, and values from the state.
import {freeCall} from './softkeys.js';
import {isLive, nameOf} from './words.js';

const MOST = 60;

/** Values of a parameter that the telephone has at this moment: [text, meaning]. */
function valuesOf(parameter, context) {
  const {state, description, numbers} = context;
  const calls = state.calls.map((call) => [String(call.id), `${call.state}, ${nameOf(call.party)}`]);
  const places = state.lines.flatMap((line) => [[line.id, line.state], ...line.appearances.map((each) => [each.id, each.state])]);
  if (parameter.form === 'line id') return places;
  if (parameter.form?.startsWith('call id')) {
    const isNew = parameter.meaning.includes('new call');
    return isNew ? [[String(freeCall(state)), 'free']] : state.calls.some(isLive) || calls.length ? calls : [];
  }
  if (parameter.form === 'number or SIP address') return numbers.map((each) => [each.number, each.does]);
  if (parameter.kind === 'flag') return [['1', 'yes'], ['0', 'no']];
  const enumeration = description.enumerations.find((each) => each.name === parameter.enumeration);
  return (enumeration?.values ?? []).map((value) => [String(value.number ?? value.name), value.name]);
}

/** {from, choices: [{text, about}], title, meaning} for what stands before the cursor. */
export function complete(text, context) {
  const words = text.split(/\s+/);
  const last = words.at(-1);
  const {description} = context;
  const from = text.length - last.length;
  if (words.length === 1) return {from, ...completeName(last, description)};
  const request = description.requests.find((each) => each.name.toLowerCase() === words[0].toLowerCase());
  return request ? completeParameter(last, from, words, request, context) : completeCommand(text, context);
}

function completeName(begin, description) {
  const small = begin.toLowerCase();
  const all = [...description.requests.map((each) => ({text: `${each.name} `, name: each.name, about: each.meaning})),
    ...description.commands.map((each) => ({text: `${each.name} `, name: each.name, about: each.help}))];
  const fits = (each) => each.name.toLowerCase().startsWith(small);
  const has = (each) => !fits(each) && each.name.toLowerCase().includes(small);
  const choices = begin ? [...all.filter(fits), ...all.filter(has)].slice(0, MOST) : [];
  return {choices, title: 'Request or command', meaning: 'A request goes to the service, a command to the telephone itself.'};
}

function completeParameter(last, from, words, request, context) {
  const tag = /^([^=]*)=/.exec(last)?.[1];
  const parameter = request.parameters.find((each) => each.tag.toLowerCase() === (tag ?? '').toLowerCase());
  if (tag !== undefined) {
    const begin = last.slice(tag.length + 1).toLowerCase();
    const values = parameter ? valuesOf(parameter, context).filter(([value]) => value.toLowerCase().startsWith(begin)) : [];
    return {from: from + tag.length + 1, choices: values.slice(0, MOST).map(([value, about]) => ({text: `${value} `, name: value, about})),
      title: tag, meaning: parameter ? `${parameter.meaning}${parameter.missing?.effect ? ` Missing: ${parameter.missing.effect}.` : ''}` : `${request.name} has no parameter ${tag}`};
  }
  const given = new Set(words.slice(1, -1).map((word) => word.split('=')[0].toLowerCase()));
  const open = request.parameters.filter((each) => !given.has(each.tag.toLowerCase()) && each.tag.toLowerCase().startsWith(last.toLowerCase()));
  return {from, choices: open.map((each) => ({text: `${each.tag}=`, name: `${each.tag}=`, about: `${each.need === 'required' ? 'required: ' : ''}${each.meaning}`})), title: request.name, meaning: request.meaning};
}

function completeCommand(text, {description, state}) {
  const small = text.toLowerCase();
  const command = [...description.commands].reverse().find((each) => small.startsWith(`${each.name} `));
  const longer = description.commands.filter((each) => each.name.startsWith(small) && each.name !== small.trim());
  const last = /\S*$/.exec(small)[0];
  const words = (command?.arguments.match(/^[a-z]+(\|[a-z]+)+/)?.[0] ?? '').split('|').filter(Boolean).map((word) => [word, '']);
  const values = command?.arguments.startsWith('KEY') ? state.keys.filter((key) => key.number).map((key) => [String(key.number), key.label ?? key.function])
    : command?.arguments.startsWith('LINE') ? state.lines.map((line) => [line.id, line.state]) : words;
  const isFirst = command && small.slice(command.name.length + 1).trim().split(/\s+/).length <= 1 && !small.slice(command.name.length + 1).trim().includes(' ');
  const choices = longer.map((each) => ({text: `${each.name} `, name: each.name, about: each.help, whole: true}))
    .concat(isFirst ? values.filter(([value]) => value.startsWith(last)).map(([value, about]) => ({text: `${value} `, name: value, about})) : []);
  return {from: longer.length ? 0 : text.length - last.length, choices, title: command ? `${command.name} ${command.arguments}` : 'Command', meaning: command?.help ?? ''};
}

/** What is known to be wrong before it is sent; empty if nothing. */
export function objection(text, {description, state}) {
  const words = text.trim().split(/\s+/);
  const request = description.requests.find((each) => each.name.toLowerCase() === words[0].toLowerCase());
  if (!request || words.length < 2) return '';
  const line = /^line=(.+)$/i.exec(words.find((word) => /^line=./i.test(word)) ?? '')?.[1];
  const isLine = state.lines.some((each) => each.id === line || each.appearances.some((place) => place.id === line));
  if (line && !isLine) return `there is no line ${line}; the lines are ${state.lines.map((each) => each.id).join(' and ')}`;
  const unknown = words.slice(1).map((word) => word.split('=')).find(([tag, value]) => value !== undefined && !request.parameters.some((each) => each.tag.toLowerCase() === tag.toLowerCase()));
  return unknown ? `${request.name} has no parameter ${unknown[0]}` : '';
}
