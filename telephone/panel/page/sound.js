// Ringing and digits as sound, once the user has switched it on.

const ROWS = [697, 770, 852, 941];
const COLUMNS = [1209, 1336, 1477];
const PAD = '123456789*0#';
const RING = [400, 450];
let context = null;
let ringing = null;

function play(frequencies, seconds) {
  const volume = context.createGain();
  volume.gain.value = 0.06;
  volume.connect(context.destination);
  for (const frequency of frequencies) {
    const tone = context.createOscillator();
    tone.frequency.value = frequency;
    tone.connect(volume);
    tone.start();
    tone.stop(context.currentTime + seconds);
  }
}

/** Must be called on a click, as browsers demand. */
export function switchSound(on) {
  context = on ? new AudioContext() : null;
  if (!on) ring(false);
}

export function soundDigit(digit) {
  const place = PAD.indexOf(digit);
  if (context && place >= 0) play([ROWS[Math.floor(place / 3)], COLUMNS[place % 3]], 0.12);
}

export function ring(on) {
  if (!on || !context) {
    clearInterval(ringing);
    ringing = null;
  } else if (ringing === null) {
    play(RING, 0.8);
    ringing = setInterval(() => play(RING, 0.8), 2400);
  }
}
