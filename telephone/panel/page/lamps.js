// Lamps: a bar in one piece, two or many, which blinks accordingly.
import {make, set} from './dom.js';

export const makeLamp = () => make('span.lamp', {'aria-hidden': 'true'}, make('i'));
export const drawLamp = (element, lamp) => set(element, {'data-mode': lamp.mode, 'data-colour': lamp.colour});
export const lampWords = (lamp) => (lamp.mode === 'off' ? 'lamp off' : `lamp ${lamp.mode} ${lamp.colour}`);

/** All lamps blink in step: every animation starts at the beginning of the document's time. */
export function beatTogether() {
  for (const animation of document.getAnimations()) {
    if (animation.startTime !== 0 && animation.playState === 'running') animation.startTime = 0;
  }
}
