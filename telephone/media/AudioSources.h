// Makes the source of each call, as the configuration names it: "tone", "silence", or a sound file.
#pragma once

#include "WavSource.h"
#include "sip/Audio.h"

#include <memory>
#include <string>

namespace telephone {

class AudioSources
{
public:
    // Loads a sound file at once; throws std::runtime_error when it cannot be read.
    explicit AudioSources(const std::string& name);
    // Null: silence.
    std::unique_ptr<sip::AudioSource> make() const;

private:
    bool tone_;
    std::shared_ptr<const Samples> samples_;
};

}  // namespace telephone
