// Makes the source of each call, as the configuration names it: "tone", "silence", or a sound file.
#pragma once

#include <memory>
#include <string>

#include "telephone/media/WavSource.h"
#include "telephone/sip/Audio.h"

namespace telephone {

class AudioSources
{
public:
    // Loads a sound file at once; throws std::runtime_error when it cannot be read.
    explicit AudioSources(std::string const& name);
    // Null: silence.
    std::unique_ptr<sip::AudioSource> make() const;

private:
    bool tone_;
    std::shared_ptr<Samples const> samples_;
};

}  // namespace telephone
