// The sound of the telephone as configured: makes the audio source of each call, "tone", "silence", "device" (the
// microphone) or the path of a sound file, and plays what is heard. Used with the phone lock held.
#pragma once

#include <memory>
#include <string>

#include "telephone/media/SoundCard.h"
#include "telephone/media/WavSource.h"
#include "telephone/sip/Audio.h"

namespace telephone {

struct AudioSettings
{
    std::string source = "tone";
    std::string microphone = {};  // of the source "device"; empty: the default
    std::string loudspeaker = {};
};

class AudioSources
{
public:
    // Loads a sound file at once; throws std::runtime_error, naming the file, if it cannot be read. `report` receives
    // what is wrong with a device.
    AudioSources(AudioSettings const& settings, SoundCard::Report report);
    // Null: silence.
    std::unique_ptr<sip::AudioSource> make() const;
    // Plays all that the telephone hears; null unless the source is "device".
    sip::AudioSink* loudspeaker() const { return card_.get(); }
    // No call is left: the devices rest until the next one.
    void rest() const;

private:
    bool tone_;
    std::unique_ptr<SoundCard> card_;
    std::shared_ptr<Samples const> samples_;
};

}  // namespace telephone
