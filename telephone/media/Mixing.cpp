#include "telephone/media/Mixing.h"

#include <algorithm>
#include <cstdint>
#include <limits>

namespace telephone {

void mixInto(sip::AudioFrame& mix, sip::AudioFrame const& voice)
{
    constexpr int kLowest = std::numeric_limits<std::int16_t>::min();
    constexpr int kHighest = std::numeric_limits<std::int16_t>::max();
    for (std::size_t at = 0; at < mix.size(); ++at) {
        mix[at] = static_cast<std::int16_t>(std::clamp(mix[at] + voice[at], kLowest, kHighest));
    }
}

}  // namespace telephone
