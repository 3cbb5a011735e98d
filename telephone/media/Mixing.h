// Mixing of voices. Pure functions.
#pragma once

#include "telephone/sip/Audio.h"

namespace telephone {

// Adds a voice to a mix. Sums out of range become the largest or smallest sample.
void mixInto(sip::AudioFrame& mix, sip::AudioFrame const& voice);

}  // namespace telephone
