// A sound file played in a loop. It is loaded once, converted to 8 kHz mono, and shared by the calls that play it, each
// at its own position.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "telephone/sip/Audio.h"

namespace telephone {

using Samples = std::vector<std::int16_t>;

// Throws std::runtime_error, naming the file and the reason, if it cannot be read, has no samples or is longer than
// half an hour.
std::shared_ptr<Samples const> loadSamples(std::string const& path);

class WavSource final : public sip::AudioSource
{
public:
    explicit WavSource(std::shared_ptr<Samples const> samples);
    bool readFrame(sip::AudioFrame& frame) override;
    void skipFrames(std::uint64_t count) override;

private:
    std::shared_ptr<Samples const> samples_;
    std::size_t next_ = 0;
};

}  // namespace telephone
