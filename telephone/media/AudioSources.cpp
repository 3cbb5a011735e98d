#include "AudioSources.h"

#include "ToneSource.h"

namespace telephone {

AudioSources::AudioSources(const std::string& name)
    : tone_(name == "tone")
{
    if (!tone_ && name != "silence")
        samples_ = loadSamples(name);
}

std::unique_ptr<sip::AudioSource> AudioSources::make() const
{
    if (tone_)
        return std::make_unique<ToneSource>();
    if (samples_)
        return std::make_unique<WavSource>(samples_);
    return nullptr;
}

}  // namespace telephone
