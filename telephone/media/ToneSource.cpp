#include "telephone/media/ToneSource.h"

#include <cmath>
#include <cstdint>
#include <numbers>

namespace telephone {

namespace {
constexpr double kTurn = 2.0 * std::numbers::pi;
}

ToneSource::ToneSource(double frequency, double amplitude)
    : step_(kTurn * frequency / sip::kSampleRate)
    , amplitude_(amplitude)
{}

bool ToneSource::readFrame(sip::AudioFrame& frame)
{
    for (auto& sample : frame) {
        sample = static_cast<std::int16_t>(std::lround(amplitude_ * std::sin(phase_)));
        phase_ = std::fmod(phase_ + step_, kTurn);
    }
    return true;
}

}  // namespace telephone
