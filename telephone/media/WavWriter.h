// Writes frames to a WAV file, 8 kHz, 16 bit, mono or two channels. Used by one thread at a time. The file is complete
// after close() or destruction.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "telephone/sip/Audio.h"

namespace telephone {

class WavWriter final : public sip::AudioSink
{
public:
    // Creates or empties the file; throws std::runtime_error, naming the file and the reason, if it cannot.
    WavWriter(std::string const& path, int channels);
    ~WavWriter() override;
    WavWriter(WavWriter const&) = delete;
    WavWriter& operator=(WavWriter const&) = delete;

    // To a mono file. False if the disk is full or gone, or the file is closed.
    bool write(sip::AudioFrame const& frame);
    // The same; a frame that does not fit is lost.
    void writeFrame(sip::AudioFrame const& frame) override { static_cast<void>(write(frame)); }
    // To a file with two channels.
    bool write(sip::AudioFrame const& left, sip::AudioFrame const& right);
    void close();

    std::uint64_t frames() const { return frames_; }  // written so far

private:
    struct File;
    std::unique_ptr<File> file_;
    std::uint64_t frames_ = 0;
};

}  // namespace telephone
