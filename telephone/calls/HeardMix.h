// Everything that the telephone hears, mixed for its listeners: the loudspeaker, a WAV file. Owned by CallList; called
// with the phone lock held.
#pragma once

#include <map>
#include <memory>
#include <vector>

#include "telephone/calls/AudioTap.h"
#include "telephone/media/FrameQueue.h"

namespace telephone {

class HeardMix
{
public:
    // Before the first call. The listener outlives the mix.
    void addListener(sip::AudioSink& listener) { listeners_.push_back(&listener); }
    bool hasListeners() const { return !listeners_.empty(); }

    // The tap for one call, which lives until it is removed.
    AudioTap& add(int callID);
    void remove(int callID);

private:
    struct Ear final : AudioTap
    {
        Ear(HeardMix& owner, int id)
            : mix(owner)
            , callID(id)
        {}
        void onFrame(sip::AudioFrame const& heard, sip::AudioFrame const&) override { mix.hear(*this, heard); }

        HeardMix& mix;
        int callID;
        FrameQueue frames;
    };

    void hear(Ear& ear, sip::AudioFrame const& heard);

    std::vector<sip::AudioSink*> listeners_;
    std::map<int, std::unique_ptr<Ear>> ears_;  // by call id
    int leader_ = 0;                            // the call whose frames set the pace
};

}  // namespace telephone
