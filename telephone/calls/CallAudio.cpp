#include "telephone/calls/CallAudio.h"

#include <algorithm>
#include <utility>

#include "telephone/media/Mixing.h"

namespace telephone {

CallAudio::CallAudio(std::unique_ptr<sip::AudioSource> ownVoice)
    : ownVoice_(std::move(ownVoice))
{}

CallAudio::~CallAudio()
{
    leave();
    attach(nullptr);
}

void CallAudio::attach(sip::AudioStream* stream)
{
    if (stream_ == stream) {
        return;
    }
    if (stream_ != nullptr) {
        stream_->setSource(nullptr);
        stream_->setSink(nullptr);
    }
    stream_ = stream;
    if (stream_ != nullptr) {
        stream_->setSource(this);
        stream_->setSink(this);
    }
}

void CallAudio::catchUp()
{
    if (stream_ != nullptr) {
        stream_->catchUp();
    }
}

void CallAudio::setVoice(bool own, bool others)
{
    if (own == voice_ && others == hearsOthers_) {
        return;
    }
    catchUp();
    voice_ = own;
    hearsOthers_ = others;
}

void CallAudio::join(CallAudio& left, CallAudio& right)
{
    left.addOther(right);
    right.addOther(left);
}

void CallAudio::addOther(CallAudio& other)
{
    if (std::ranges::find(others_, &other, &Other::call) == others_.end()) {
        catchUp();
        others_.push_back({&other, {}});
    }
}

void CallAudio::leave()
{
    catchUp();
    for (Other const& other : others_) {
        std::erase_if(other.call->others_, [this](Other const& each) { return each.call == this; });
    }
    others_.clear();
}

void CallAudio::addTap(AudioTap& tap)
{
    catchUp();
    if (std::ranges::find(taps_, &tap) == taps_.end()) {
        taps_.push_back(&tap);
    }
}

void CallAudio::removeTap(AudioTap& tap)
{
    catchUp();
    std::erase(taps_, &tap);
}

bool CallAudio::readFrame(sip::AudioFrame& frame)
{
    sip::AudioFrame mix{};
    bool sound = voice_ && ownVoice_ && ownVoice_->readFrame(mix);
    if (!sound) {
        mix.fill(0);
    }
    for (Other& other : others_) {
        sip::AudioFrame voice{};
        if (other.heard.pop(voice) && hearsOthers_) {
            mixInto(mix, voice);
            sound = true;
        }
    }
    if (!taps_.empty()) {
        sip::AudioFrame heard{};
        heard_.pop(heard);
        tell(heard, mix);
    }
    frame = mix;
    return sound;
}

void CallAudio::skipFrames(std::uint64_t count)
{
    if (voice_ && ownVoice_) {
        ownVoice_->skipFrames(count);
    }
    for (Other& other : others_) {
        other.heard.drop(count);
    }
}

void CallAudio::writeFrame(sip::AudioFrame const& frame)
{
    for (Other const& other : others_) {
        other.call->hear(*this, frame);
    }
    if (taps_.empty()) {
        return;
    }
    // A stream that sends nothing reads no frames, so the taps are served here.
    if (stream_ != nullptr && sip::sends(stream_->direction())) {
        heard_.push(frame);
    } else {
        tell(frame, sip::AudioFrame{});
    }
}

void CallAudio::hear(CallAudio const& other, sip::AudioFrame const& frame)
{
    auto const place = std::ranges::find(others_, &other, &Other::call);
    if (place != others_.end()) {
        place->heard.push(frame);
    }
}

void CallAudio::tell(sip::AudioFrame const& heard, sip::AudioFrame const& sent)
{
    auto const taps = taps_;
    for (AudioTap* tap : taps) {
        tap->onFrame(heard, sent);
    }
}

}  // namespace telephone
