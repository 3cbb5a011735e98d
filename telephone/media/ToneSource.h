// A continuous sine tone, the voice of a telephone without a microphone. Belongs to one call.
#pragma once

#include <cstdint>

#include "telephone/sip/Audio.h"

namespace telephone {

class ToneSource final : public sip::AudioSource
{
public:
    static constexpr double kFrequency = 440.0;   // Hz
    static constexpr double kAmplitude = 8000.0;  // of 32767; three tones mix without clipping

    explicit ToneSource(double frequency = kFrequency, double amplitude = kAmplitude);
    bool readFrame(sip::AudioFrame& frame) override;
    void skipFrames(std::uint64_t count) override { position_ += count * sip::kFrameSamples; }

private:
    double step_;  // periods per sample
    double amplitude_;
    std::uint64_t position_ = 0;  // samples
};

}  // namespace telephone
