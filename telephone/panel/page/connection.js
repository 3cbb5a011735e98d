// The telephone behind the page: its state, its events in order, and what is sent to it. Reconnects by itself, and then
// fetches what it has missed.

const RETRY = 1000; // milliseconds between two attempts
const POLL = 500; // not every change has an event: a hook, a lamp, another page's key

async function ask(path, body) {
  const options = body === undefined ? {} : {method: 'POST', body};
  const response = await fetch(path, {...options, credentials: 'same-origin', cache: 'no-store', signal: AbortSignal.timeout(5000)})
    .catch(() => { throw new Error('it cannot be reached'); });
  const answer = await response.json();
  if (response.status === 401) throw new Error('this browser is not admitted: open the address that the telephone has printed');
  if (response.status >= 500) throw new Error(answer.error);
  return answer;
}

export class Connection {
  /** `on` has state(state), happened(list of {event} or {step}), gap(words), missed(count of steps), lost(reason), back(isRestarted). */
  constructor(on) {
    this.on = on;
    this.start = null; // id of the telephone's start
    this.number = 0; // of the latest event
    this.isLost = true;
    this.state = null;
    this.arrived = [];
    this.places = new Map(); // of events among the steps, by number
  }

  async open() {
    clearTimeout(this.retry);
    try {
      const state = await ask('/state');
      const isRestarted = this.start !== null && this.start !== state.start;
      if (this.start !== state.start) this.number = 0;
      this.start = state.start;
      this.description ??= await ask('/describe');
      this.isLost = false;
      this.on.back(isRestarted);
      this.take(state);
      this.listen();
      this.poll();
    } catch (error) {
      this.lose(error.message);
    }
  }

  listen() {
    this.source?.close();
    const source = new EventSource(`/events?words&steps&after=${this.number}&start=${encodeURIComponent(this.start)}`);
    this.source = source;
    const names = this.description.events.map((event) => event.method ?? event.name);
    for (const name of [...names, 'event']) source.addEventListener(name, (message) => this.arrive(message));
    source.addEventListener('step', (message) => this.add({step: JSON.parse(message.data)}));
    source.addEventListener('steps-missed', (message) => this.on.missed(Number(message.data)));
    source.addEventListener('gap', (message) => this.on.gap(message.data));
    source.addEventListener('state', (message) => {
      this.number = Math.max(this.number, Number(message.lastEventId));
      this.take(JSON.parse(message.data));
    });
    source.onerror = () => { if (this.source === source) this.lose('its stream of events has ended'); };
  }

  arrive(message) {
    const number = Number(message.lastEventId);
    if (number <= this.number) return;
    this.number = number;
    this.add({event: JSON.parse(message.data)});
  }

  /** What happens is handed on once a frame. */
  add(happened) {
    this.arrived.push(happened);
    if (this.arrived.length === 1) {
      const flush = () => this.flush();
      if (document.hidden) setTimeout(flush, 100);
      else requestAnimationFrame(flush);
    }
  }

  flush() {
    const happened = this.arrived.splice(0);
    // The step of an event says where it stands among the others.
    for (const {step} of happened) if (step?.step === 'event') this.places.set(step.number, step.seq);
    for (const {event} of happened) if (event) { event.seq = this.places.get(event.event); this.places.delete(event.event); }
    this.on.happened(happened);
    if (happened.some(({event}) => event)) this.refresh();
  }

  take(state) {
    if (this.state && state.start === this.state.start && Date.parse(state.time) < Date.parse(this.state.time)) return;
    this.state = state;
    // The state that travelled fastest says best how far the telephone's clock is ahead.
    this.ahead = Math.max(this.ahead ?? -Infinity, Date.parse(state.time) - Date.now());
    this.on.state(state);
  }

  /** The telephone's time, as far as the page knows. */
  now() { return Date.now() + (this.ahead ?? 0); }

  /** Reads the state; several calls in a row read it once. */
  async refresh() {
    if (this.reading) { this.readAgain = true; return; }
    this.reading = true;
    const began = performance.now();
    try {
      const state = await ask('/state');
      if (this.start !== null && state.start !== this.start) this.lose('it was restarted');
      else if (!this.isLost) this.take(state);
    } catch (error) {
      this.lose(error.message);
    }
    const pause = Math.min(500, 30 + 2 * (performance.now() - began));
    setTimeout(() => {
      this.reading = false;
      if (this.readAgain) { this.readAgain = false; this.refresh(); }
    }, pause);
  }

  poll() {
    clearInterval(this.polling);
    this.polling = setInterval(() => { if (!document.hidden && !this.isLost) this.refresh(); }, POLL);
  }

  lose(reason) {
    this.source?.close();
    this.source = null;
    clearInterval(this.polling);
    if (!this.isLost || !this.since) this.since = Date.now();
    this.isLost = true;
    clearTimeout(this.retry);
    this.retry = setTimeout(() => this.open(), RETRY);
    this.on.lost(reason);
  }

  isRequest(text) {
    const name = text.trim().split(/\s/)[0].toLowerCase();
    return name.startsWith('<') || this.description.requests.some((each) => each.name.toLowerCase() === name);
  }

  /** Sends a request or a command. Gives {answer, reasons, error, result, took}. */
  async send(text) {
    if (this.isLost) return {error: 'there is no connection: nothing was sent', took: 0};
    const began = performance.now();
    try {
      const reply = await ask(this.isRequest(text) ? '/requests' : '/commands', text);
      this.refresh();
      return {...reply, took: performance.now() - began};
    } catch (error) {
      this.lose(error.message);
      return {error: `it is not known whether the telephone has done this: ${error.message}`, took: performance.now() - began};
    }
  }
}
