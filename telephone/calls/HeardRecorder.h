// Writes everything that the telephone hears to one WAV file; calls heard at the same time are mixed. Owned by
// CallList; called with the phone lock held.
#pragma once

#include <map>
#include <memory>
#include <string>

#include "telephone/calls/AudioTap.h"
#include "telephone/media/FrameQueue.h"
#include "telephone/media/WavWriter.h"

namespace telephone {

class HeardRecorder
{
public:
    // Throws std::runtime_error when the file cannot be written.
    explicit HeardRecorder(std::string const& path);

    // The tap for one call, which lives until it is removed.
    AudioTap& add(int callID);
    void remove(int callID);

private:
    struct Ear final : AudioTap
    {
        Ear(HeardRecorder& owner, int id)
            : recorder(owner)
            , callID(id)
        {}
        void onFrame(sip::AudioFrame const& heard, sip::AudioFrame const&) override { recorder.hear(*this, heard); }

        HeardRecorder& recorder;
        int callID;
        FrameQueue frames;
    };

    void hear(Ear& ear, sip::AudioFrame const& heard);

    WavWriter file_;
    std::map<int, std::unique_ptr<Ear>> ears_;  // by call id
    int leader_ = 0;                            // the call whose frames set the pace
};

}  // namespace telephone
