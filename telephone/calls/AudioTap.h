// Receives the audio of one call, both directions together, in frames of 20 ms (8 kHz, mono, 16 bit). Called on the
// loop's thread with the phone lock held; must be quick.
#pragma once

#include "telephone/sip/Audio.h"

namespace telephone {

class AudioTap
{
public:
    virtual ~AudioTap() = default;
    // heard: from the far end, or silence if nothing arrived. sent: to the far end.
    virtual void onFrame(sip::AudioFrame const& heard, sip::AudioFrame const& sent) = 0;
};

}  // namespace telephone
