// Adding voices. Pure functions.
#pragma once

#include "telephone/sip/Audio.h"

namespace telephone {

// Adds a voice to a mix; a sum that does not fit stays at the largest or smallest sample.
void mixInto(sip::AudioFrame& mix, sip::AudioFrame const& voice);

}  // namespace telephone
