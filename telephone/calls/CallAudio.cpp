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
    if (own == voice_ && others == others_) {
        return;
    }
    catchUp();
    voice_ = own;
    others_ = others;
}

void CallAudio::join(CallAudio& left, CallAudio& right)
{
    left.leave();
    right.leave();
    left.other_ = &right;
    right.other_ = &left;
}

void CallAudio::leave()
{
    catchUp();
    if (other_ != nullptr) {
        other_->other_ = nullptr;
        other_->fromOther_.clear();
    }
    other_ = nullptr;
    fromOther_.clear();
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
    sip::AudioFrame voice{};
    if (fromOther_.pop(voice) && others_) {
        mixInto(mix, voice);
        sound = true;
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
    fromOther_.drop(count);
}

void CallAudio::writeFrame(sip::AudioFrame const& frame)
{
    if (other_ != nullptr) {
        other_->fromOther_.push(frame);
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

void CallAudio::tell(sip::AudioFrame const& heard, sip::AudioFrame const& sent)
{
    auto const taps = taps_;
    for (AudioTap* tap : taps) {
        tap->onFrame(heard, sent);
    }
}

}  // namespace telephone
