// Writes all that the telephone hears to one WAV file, the calls of a conference mixed. Owned by the engine; called on
// the loop's thread with the phone lock held.
#pragma once

#include "AudioTap.h"
#include "media/FrameQueue.h"
#include "media/WavWriter.h"

#include <map>
#include <memory>
#include <string>

namespace telephone {

class HeardRecorder
{
public:
    // Throws std::runtime_error when the file cannot be written.
    explicit HeardRecorder(const std::string& path);

    // The ear of one call; stays until it is removed.
    AudioTap& add(int callID);
    void remove(int callID);

private:
    struct Ear final : AudioTap
    {
        Ear(HeardRecorder& owner, int id)
            : recorder(owner)
            , callID(id)
        {}
        void onFrame(const sip::AudioFrame& heard, const sip::AudioFrame&) override { recorder.hear(*this, heard); }

        HeardRecorder& recorder;
        int callID;
        FrameQueue frames;
    };

    void hear(Ear& ear, const sip::AudioFrame& heard);

    WavWriter file_;
    std::map<int, std::unique_ptr<Ear>> ears_;  // by call id
    int leader_ = 0;                            // the call whose frames set the pace
};

}  // namespace telephone
