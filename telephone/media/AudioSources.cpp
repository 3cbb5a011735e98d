#include "telephone/media/AudioSources.h"

#include "telephone/media/ToneSource.h"

namespace telephone {

AudioSources::AudioSources(std::string const& name)
    : tone_(name == "tone")
{
    if (!tone_ && name != "silence") {
        samples_ = loadSamples(name);
    }
}

std::unique_ptr<sip::AudioSource> AudioSources::make() const
{
    if (tone_) {
        return std::make_unique<ToneSource>();
    }
    if (samples_) {
        return std::make_unique<WavSource>(samples_);
    }
    return nullptr;
}

}  // namespace telephone
