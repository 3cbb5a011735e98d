// The microphone and the loudspeaker of this machine, through PortAudio's blocking interface but without blocking: the
// telephone's own clock of 20 ms sets the pace, and what the card has not ready is silence or is dropped. One per
// telephone; used with the phone lock held.
//
// Both devices are opened once, when the telephone starts, and run from the first frame to rest(). A device that is
// missing or fails is reported once; from then on it is silent.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "telephone/sip/Audio.h"

namespace telephone {

// A device of this machine.
struct SoundDevice
{
    std::string name;
    bool hasMicrophone = false;
    bool hasLoudspeaker = false;
    bool isDefaultMicrophone = false;
    bool isDefaultLoudspeaker = false;
};

class SoundCard final : public sip::AudioSink
{
public:
    using Report = std::function<void(std::string const& reason)>;

    // By name; empty: the default of the system.
    SoundCard(std::string const& microphone, std::string const& loudspeaker, Report report);
    ~SoundCard() override;
    SoundCard(SoundCard const&) = delete;
    SoundCard& operator=(SoundCard const&) = delete;

    // The microphone for one more call. All calls that read in the same 20 ms hear the same. The card outlives it.
    std::unique_ptr<sip::AudioSource> makeMicrophone();
    // To the loudspeaker; a frame for which it has no room yet is dropped.
    void writeFrame(sip::AudioFrame const& frame) override;
    // Stops both until the next frame: nobody speaks or listens.
    void rest();

private:
    class Library;
    class Device;
    class Reader;

    friend std::vector<SoundDevice> soundDevices();

    bool readFrame(sip::AudioFrame& frame);
    void closeIfFailed(std::unique_ptr<Device>& device);

    Report report_;
    std::unique_ptr<Library> library_;
    std::unique_ptr<Device> microphone_;   // null: missing
    std::unique_ptr<Device> loudspeaker_;  // null: missing
    sip::AudioFrame newest_{};             // from the microphone
    std::uint64_t count_ = 0;              // of the frames from the microphone
};

// Those of this machine, in the order of the system; none when it has no sound.
std::vector<SoundDevice> soundDevices();

}  // namespace telephone
