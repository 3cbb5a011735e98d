// The box that sends any request or command, with completion and what was sent before.
import {byId, keep, make, set, setText, shown} from './dom.js';
import {complete, objection} from './completion.js';

const MOST_KEPT = 100;

export class RequestBox {
  constructor({contextOf, onSend}) {
    this.contextOf = contextOf; // {description, state, numbers}, or null
    this.onSend = onSend;
    this.sent = [];
    this.back = 0;
    this.place = -1;
    this.found = {choices: [], from: 0};
    this.input = byId('box');
    this.input.addEventListener('input', () => { this.back = 0; this.suggest(); });
    this.input.addEventListener('keydown', (event) => this.key(event));
    this.input.addEventListener('blur', () => this.close());
    byId('form').addEventListener('submit', (event) => { event.preventDefault(); this.submit(); });
    byId('choices').addEventListener('mousedown', (event) => { event.preventDefault(); const item = event.target.closest('li'); if (item) this.take(Number(item.dataset.key)); });
    this.rest();
  }

  rest(reason = '') {
    const note = byId('note');
    set(note, {class: reason ? 'note bad' : 'note', role: reason ? 'alert' : null});
    if (reason) return note.replaceChildren(`✕ ${shown(reason)}`);
    const keys = this.isOpen ? [['Tab', 'takes it'], ['↑ ↓', 'chooses'], ['Esc', 'closes']] : [['Tab', 'completes'], ['↑', 'what was sent before'], [':', 'comes here']];
    return note.replaceChildren(...keys.map(([key, what]) => make('span', {}, make('kbd', {}, key), ` ${what}`)));
  }

  get isOpen() { return !byId('completions').hidden; }

  /** Puts a request into the box, to be completed there. */
  put(text) {
    this.input.value = text;
    this.input.focus();
    this.input.setSelectionRange(text.length, text.length);
    this.suggest();
  }

  suggest() {
    const context = this.contextOf();
    if (!context || !this.input.value) return this.close();
    this.found = complete(this.input.value.slice(0, this.input.selectionStart), context);
    this.place = this.found.choices.length ? 0 : -1;
    this.draw();
    return this.rest(objection(this.input.value, context));
  }

  draw() {
    const {choices, title, meaning} = this.found;
    byId('completions').hidden = choices.length === 0;
    set(this.input, {'aria-expanded': String(choices.length > 0), 'aria-activedescendant': this.place >= 0 ? `choice${this.place}` : null});
    keep(byId('choices'), choices.map((choice, place) => ({...choice, place})), (choice) => choice.place,
      (choice) => make('li', {role: 'option', id: `choice${choice.place}`}, make('b'), make('span')),
      (element, choice) => {
        setText(element.firstChild, shown(choice.name));
        setText(element.lastChild, shown(choice.about ?? ''));
        set(element, {'aria-selected': String(choice.place === this.place)});
      });
    byId('meaning').replaceChildren(make('b', {}, shown(title ?? '')), make('p', {}, shown(meaning ?? '')), make('p', {}, shown(choices[this.place]?.about ?? '')));
    byId('choices').children[this.place]?.scrollIntoView({block: 'nearest'});
  }

  close() {
    this.found = {choices: [], from: 0};
    this.place = -1;
    this.draw();
    this.rest();
  }

  take(place) {
    const choice = this.found.choices[place];
    const cursor = this.input.selectionStart;
    const begin = this.input.value.slice(0, this.found.from) + choice.text;
    this.input.value = begin + this.input.value.slice(cursor).trimStart();
    this.input.setSelectionRange(begin.length, begin.length);
    this.suggest();
  }

  key(event) {
    const count = this.found.choices.length;
    if (event.key === 'Escape') {
      event.stopPropagation();
      if (this.isOpen) this.close();
      else { this.input.value = ''; this.input.blur(); }
    } else if (event.key === 'Tab' && !event.shiftKey && this.place >= 0) {
      event.preventDefault();
      this.take(this.place);
    } else if (count && ['ArrowDown', 'ArrowUp'].includes(event.key)) {
      event.preventDefault();
      this.place = (this.place + (event.key === 'ArrowDown' ? 1 : count - 1)) % count;
      this.draw();
    } else if (event.key === 'ArrowUp' || (event.key === 'ArrowDown' && this.back > 0)) {
      event.preventDefault();
      this.recall(event.key === 'ArrowUp' ? 1 : -1);
    }
  }

  recall(step) {
    this.back = Math.max(0, Math.min(this.sent.length, this.back + step));
    this.input.value = this.back ? this.sent.at(-this.back) : '';
  }

  async submit() {
    const text = this.input.value.trim();
    if (!text) return;
    this.sent.push(text);
    this.sent.splice(0, this.sent.length - MOST_KEPT);
    this.back = 0;
    this.close();
    const reply = await this.onSend(text);
    const reason = reply.error ?? reply.reasons?.[0];
    if (!reply.error) this.input.value = '';
    this.rest(reason ?? '');
  }
}
