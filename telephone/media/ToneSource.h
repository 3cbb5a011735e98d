// A continuous sine tone, the voice of a telephone without a microphone. Belongs to one call.
#pragma once

#include "telephone/sip/Audio.h"

namespace telephone {

class ToneSource final : public sip::AudioSource
{
public:
    static constexpr double kFrequency = 440.0;   // Hz
    static constexpr double kAmplitude = 8000.0;  // of 32767; three tones mix without clipping

    explicit ToneSource(double frequency = kFrequency, double amplitude = kAmplitude);
    bool readFrame(sip::AudioFrame& frame) override;

private:
    double step_;  // radians per sample
    double amplitude_;
    double phase_ = 0.0;
};

}  // namespace telephone
