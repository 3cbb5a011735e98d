#include "telephone/media/ToneSource.h"

#include <cmath>
#include <numbers>

namespace telephone {

namespace {
constexpr double kTurn = 2.0 * std::numbers::pi;
}

ToneSource::ToneSource(double frequency, double amplitude)
    : step_(frequency / sip::kSampleRate)
    , amplitude_(amplitude)
{}

bool ToneSource::readFrame(sip::AudioFrame& frame)
{
    for (auto& sample : frame) {
        double const periods = step_ * static_cast<double>(position_++);
        double const phase = kTurn * (periods - std::floor(periods));
        sample = static_cast<std::int16_t>(std::lround(amplitude_ * std::sin(phase)));
    }
    return true;
}

}  // namespace telephone
