#include "telephone/calls/HeardRecorder.h"

#include "telephone/media/Mixing.h"

namespace telephone {

HeardRecorder::HeardRecorder(std::string const& path)
    : file_(path, 1)
{}

AudioTap& HeardRecorder::add(int callID)
{
    auto& ear = ears_[callID];
    ear = std::make_unique<Ear>(*this, callID);
    return *ear;
}

void HeardRecorder::remove(int callID)
{
    ears_.erase(callID);
}

void HeardRecorder::hear(Ear& ear, sip::AudioFrame const& heard)
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
    file_.write(mix);
}

}  // namespace telephone
