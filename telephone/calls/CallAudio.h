// The audio of one call: sends the telephone's own voice and, in a conference, those of the other calls; passes the far
// end's on to these and to the taps. Owned by its call; used with the phone lock held.
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
    // ownVoice: null for silence.
    explicit CallAudio(std::unique_ptr<sip::AudioSource> ownVoice);
    ~CallAudio() override;

    // Attaches to the stream of a session instead of the present one; null only detaches.
    void attach(sip::AudioStream* stream);
    // own: whether the telephone's voice is sent, neither muted nor on hold. others: whether those of the other calls
    // are.
    void setVoice(bool own, bool others);

    // Lets two calls hear each other, until one of them leaves. A conference of more is made pair by pair.
    static void join(CallAudio& left, CallAudio& right);
    void leave();

    void addTap(AudioTap& tap);
    void removeTap(AudioTap& tap);

    bool readFrame(sip::AudioFrame& frame) override;
    void skipFrames(std::uint64_t count) override;
    void writeFrame(sip::AudioFrame const& frame) override;
    bool isListening() const override { return !others_.empty() || !taps_.empty(); }

private:
    // Another call of the conference, and what was heard from it.
    struct Other
    {
        CallAudio* call;
        FrameQueue heard;
    };

    void addOther(CallAudio& other);
    void hear(CallAudio const& other, sip::AudioFrame const& frame);
    void catchUp();
    void tell(sip::AudioFrame const& heard, sip::AudioFrame const& sent);

    std::unique_ptr<sip::AudioSource> ownVoice_;
    sip::AudioStream* stream_ = nullptr;
    std::vector<Other> others_;  // in the order in which they joined: the mix that is too loud depends on it
    FrameQueue heard_;           // for the taps
    std::vector<AudioTap*> taps_;
    bool voice_ = false;
    bool hearsOthers_ = false;
};

}  // namespace telephone
