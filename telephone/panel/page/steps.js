// Steps of the trace as rows: what the service asks of the call engine, and the SIP messages of calls.

const NO_CALL = ['REGISTER', 'SUBSCRIBE', 'NOTIFY', 'PUBLISH', 'OPTIONS']; // unless they are in the dialog of a call
const MOST_WAITING = 200;

export class Steps {
  constructor() { this.restart(); }

  restart() {
    this.calls = new Map(); // by dialog
    this.waiting = []; // rows whose call is not known yet: an INVITE is sent before its call has a dialog
  }

  /** Nothing for a step that is no row. */
  rowOf(step) {
    if (step.step === 'engine') return this.learn(step);
    if (step.step === 'platform') return this.operationRow(step);
    return step.step === 'sip' ? this.messageRow(step) : null;
  }

  learn({dialog, call}) {
    if (dialog && this.calls.get(dialog) !== call) {
      this.calls.set(dialog, call);
      for (const row of this.waiting.filter((each) => each.data.dialog === dialog)) Object.assign(row, {call, version: (row.version ?? 0) + 1});
      this.waiting = this.waiting.filter((row) => !row.call);
    }
    return null;
  }

  operationRow(step) {
    const {call, feature, destination} = step.arguments;
    const details = [typeof feature === 'string' ? feature.replace(/^sfiFeature/, '') : '', destination].filter(Boolean);
    return {kind: 'operation', seq: step.seq, time: Date.parse(step.time), line: step.arguments.lineURI ?? '', call: call?.call ?? step.arguments.callID ?? '',
      what: step.name.replace(/^.*::/, ''), details, data: {...step, raw: JSON.stringify(step, null, 1)}};
  }

  messageRow(step) {
    const call = this.calls.get(step.dialog) ?? '';
    if (!call && NO_CALL.includes(step.method)) return null;
    const audio = step.audio && step.audio !== 'sendrecv' ? [step.audio] : [];
    const row = {kind: 'sip', seq: step.seq, time: Date.parse(step.time), line: '', call, what: step.status ? `${step.status} ${step.phrase}` : step.method,
      details: [...audio, `${step.direction === 'sent' ? 'to' : 'from'} ${step.peer}`], isSent: step.direction === 'sent', data: {...step, raw: step.text}};
    if (!call) this.waiting = [...this.waiting, row].slice(-MOST_WAITING);
    return row;
  }
}
