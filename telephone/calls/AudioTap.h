// Listens in on one call: both directions, 8 kHz mono 16 bit, in frames of 20 ms that belong together. Called on the
// loop's thread with the phone lock held; must be quick.
#pragma once

#include "telephone/sip/Audio.h"

namespace telephone {

class AudioTap
{
public:
    virtual ~AudioTap() = default;
    // What the far end said (silence where nothing came) and what was sent to it.
    virtual void onFrame(sip::AudioFrame const& heard, sip::AudioFrame const& sent) = 0;
};

}  // namespace telephone
