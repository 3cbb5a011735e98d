// Makes the audio source of each call as configured: "tone", "silence", or the path of a sound file.
#pragma once

#include <memory>
#include <string>

#include "telephone/media/WavSource.h"
#include "telephone/sip/Audio.h"

namespace telephone {

class AudioSources
{
public:
    // Loads a sound file at once; throws std::runtime_error, naming the file, if it cannot be read.
    explicit AudioSources(std::string const& name);
    // Null: silence.
    std::unique_ptr<sip::AudioSource> make() const;

private:
    bool tone_;
    std::shared_ptr<Samples const> samples_;
};

}  // namespace telephone
