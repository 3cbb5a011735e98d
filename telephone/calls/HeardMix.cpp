#include "telephone/calls/HeardMix.h"

#include "telephone/media/Mixing.h"

namespace telephone {

AudioTap& HeardMix::add(int callID)
{
    auto& ear = ears_[callID];
    ear = std::make_unique<Ear>(*this, callID);
    return *ear;
}

void HeardMix::remove(int callID)
{
    ears_.erase(callID);
}

void HeardMix::hear(Ear& ear, sip::AudioFrame const& heard)
{
    // With this many frames waiting, the leader has fallen silent, and another call takes the lead.
    constexpr std::size_t kPatience = 3;
    ear.frames.push(heard);
    if (leader_ != ear.callID && ears_.count(leader_) != 0 && ear.frames.size() < kPatience) {
        return;
    }
    leader_ = ear.callID;
    sip::AudioFrame mix{};
    for (auto const& each : ears_) {
        sip::AudioFrame frame{};
        if (each.second->frames.pop(frame)) {
            mixInto(mix, frame);
        }
    }
    for (sip::AudioSink* const listener : listeners_) {
        listener->writeFrame(mix);
    }
}

}  // namespace telephone
