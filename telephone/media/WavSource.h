// A sound file played over and over: loaded once, converted to 8 kHz mono, shared by the calls that play it, each from
// its own place.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "telephone/sip/Audio.h"

namespace telephone {

using Samples = std::vector<std::int16_t>;

// Throws std::runtime_error saying which file could not be read and why; a file without a sample is one.
std::shared_ptr<Samples const> loadSamples(std::string const& path);

class WavSource final : public sip::AudioSource
{
public:
    explicit WavSource(std::shared_ptr<Samples const> samples);
    bool readFrame(sip::AudioFrame& frame) override;

private:
    std::shared_ptr<Samples const> samples_;
    std::size_t next_ = 0;
};

}  // namespace telephone
