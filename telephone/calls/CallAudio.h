// The audio of one call: sends the telephone's own voice and, in a conference, the other call's; passes the far end's
// on to the other call and to the taps. Owned by its call; used with the phone lock held.
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
    // own: whether the telephone's voice is sent, neither muted nor on hold. others: whether the other call's is.
    void setVoice(bool own, bool others);

    // Lets two calls hear each other, until one of them leaves.
    static void join(CallAudio& left, CallAudio& right);
    void leave();

    void addTap(AudioTap& tap);
    void removeTap(AudioTap& tap);

    bool readFrame(sip::AudioFrame& frame) override;
    void skipFrames(std::uint64_t count) override;
    void writeFrame(sip::AudioFrame const& frame) override;
    bool isListening() const override { return other_ != nullptr || !taps_.empty(); }

private:
    void catchUp();
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
