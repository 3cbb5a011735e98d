// A sound file played over and over: loaded once, converted to 8 kHz mono, shared by the calls that play it, each from
// its own place.
#pragma once

#include "sip/Audio.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace telephone {

using Samples = std::vector<std::int16_t>;

// Throws std::runtime_error saying which file could not be read and why; a file without a sample is one.
std::shared_ptr<const Samples> loadSamples(const std::string& path);

class WavSource final : public sip::AudioSource
{
public:
    explicit WavSource(std::shared_ptr<const Samples> samples);
    bool readFrame(sip::AudioFrame& frame) override;

private:
    std::shared_ptr<const Samples> samples_;
    std::size_t next_ = 0;
};

}  // namespace telephone
