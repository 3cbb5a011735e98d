// Elements. Every text from the telephone enters the page as a text node, never as markup.

export const byId = (id) => document.getElementById(id);

/** An element of class names after dots: make('span.chip', {title: 'x'}, 'text', child). */
export function make(tag, attributes = {}, ...children) {
  const [name, ...classes] = tag.split('.');
  const element = document.createElement(name);
  if (classes.length) element.className = classes.join(' ');
  set(element, attributes);
  element.append(...children.flat(3).filter((child) => child !== null && child !== undefined && child !== ''));
  return element;
}

export function makeSvg(tag, attributes = {}) {
  const element = document.createElementNS('http://www.w3.org/2000/svg', tag);
  set(element, attributes);
  return element;
}

/** Sets attributes and, of a function, the listener of an event; changes nothing that is so already. */
export function set(element, attributes) {
  for (const [name, value] of Object.entries(attributes)) {
    if (typeof value === 'function') element.addEventListener(name, value);
    else if (value === null || value === undefined || value === false) element.removeAttribute(name);
    else if (element.getAttribute(name) !== String(value)) element.setAttribute(name, value);
  }
}

/** Changes a text only if it is another one, so that a selection in it and a screen reader are left alone. */
export function setText(element, text) {
  if (element.textContent !== text) element.textContent = text;
}

/**
 * Brings the children of an element in line with items: keeps those whose key is still there, so that focus survives.
 * `create` makes the element of an item, `update` fills it in.
 */
export function keep(parent, items, keyOf, create, update = () => {}) {
  const present = new Map([...parent.children].map((child) => [child.dataset.key, child]));
  let place = parent.firstElementChild;
  for (const item of items) {
    const key = String(keyOf(item));
    const element = present.get(key) ?? create(item);
    present.delete(key);
    element.dataset.key = key;
    update(element, item);
    if (element === place) place = place.nextElementSibling;
    else parent.insertBefore(element, place);
  }
  for (const element of present.values()) element.remove();
}

const HIDDEN = /[\u200b-\u200f\u2028\u2029\u202a-\u202e\u2066-\u2069\ufeff]/g;

/** A text of the telephone with visible signs for what would control, hide or turn it. */
export function shown(text) {
  return String(text)
    .replace(/[\u0000-\u001f\u007f]/g, (sign) => String.fromCodePoint(sign === '\u007f' ? 0x2421 : 0x2400 + sign.codePointAt(0)))
    .replace(HIDDEN, (sign) => `⟨U+${sign.codePointAt(0).toString(16).toUpperCase().padStart(4, '0')}⟩`);
}

/** A text of the telephone, kept apart from the direction of the text around it. */
export const isolated = (text, tag = 'bdi') => make(tag, {}, shown(text));

/** Tells a screen reader: at once, or when it has finished speaking. */
export function say(text, atOnce = false) {
  byId(atOnce ? 'alarm' : 'said').textContent = shown(text);
}
