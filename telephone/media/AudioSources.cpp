#include "telephone/media/AudioSources.h"

#include <utility>

#include "telephone/media/ToneSource.h"

namespace telephone {

AudioSources::AudioSources(AudioSettings const& settings, SoundCard::Report report)
    : tone_(settings.source == "tone")
{
    if (settings.source == "device") {
        card_ = std::make_unique<SoundCard>(settings.microphone, settings.loudspeaker, std::move(report));
    } else if (!tone_ && settings.source != "silence") {
        samples_ = loadSamples(settings.source);
    }
}

void AudioSources::rest() const
{
    if (card_) {
        card_->rest();
    }
}

std::unique_ptr<sip::AudioSource> AudioSources::make() const
{
    if (tone_) {
        return std::make_unique<ToneSource>();
    }
    if (card_) {
        return card_->makeMicrophone();
    }
    if (samples_) {
        return std::make_unique<WavSource>(samples_);
    }
    return nullptr;
}

}  // namespace telephone
