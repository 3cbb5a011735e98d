// The sound of one call: what it is sent (own voice, and in a conference the other parties), and where goes what is
// heard of it (the other parties, the taps). Owned by its call; used on the loop's thread and under the phone lock.
#pragma once

#include <memory>
#include <vector>

#include "telephone/calls/AudioTap.h"
#include "telephone/media/FrameQueue.h"
#include "telephone/sip/Audio.h"

namespace telephone {

class CallAudio final : public sip::AudioSource, public sip::AudioSink
{
public:
    // ownVoice: null: silence.
    explicit CallAudio(std::unique_ptr<sip::AudioSource> ownVoice);
    ~CallAudio() override;

    // Takes the stream of a session; null lets it go. Another stream takes the place of the first.
    void attach(sip::AudioStream* stream);
    // Whether the own voice is sent (not: muted, or the call waits), and that of the others (not: the call waits).
    void setVoice(bool own, bool others)
    {
        voice_ = own;
        others_ = others;
    }

    // Both hear each other from now on.
    static void join(CallAudio& left, CallAudio& right);
    void leave();  // hears and is heard by nobody else

    void addTap(AudioTap& tap);
    void removeTap(AudioTap& tap);

    bool readFrame(sip::AudioFrame& frame) override;
    void writeFrame(sip::AudioFrame const& frame) override;

private:
    void tell(sip::AudioFrame const& heard, sip::AudioFrame const& sent);

    std::unique_ptr<sip::AudioSource> ownVoice_;
    sip::AudioStream* stream_ = nullptr;
    CallAudio* other_ = nullptr;  // in a conference
    FrameQueue fromOther_;
    FrameQueue heard_;  // for the taps
    std::vector<AudioTap*> taps_;
    bool voice_ = false;
    bool others_ = false;
};

}  // namespace telephone
