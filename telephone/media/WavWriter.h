// Writes frames to a WAV file, 8 kHz 16 bit, mono or two channels. Used by one thread at a time. What was written can
// be read back after close() or destruction.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "telephone/sip/Audio.h"

namespace telephone {

class WavWriter
{
public:
    // Creates or empties the file; throws std::runtime_error saying which could not be written and why.
    WavWriter(std::string const& path, int channels);
    ~WavWriter();
    WavWriter(WavWriter const&) = delete;
    WavWriter& operator=(WavWriter const&) = delete;

    // Of a mono file. False: the disk is full or gone.
    bool write(sip::AudioFrame const& frame);
    // Of a file with two channels.
    bool write(sip::AudioFrame const& left, sip::AudioFrame const& right);
    void close();

    std::uint64_t frames() const { return frames_; }  // written so far

private:
    struct File;
    std::unique_ptr<File> file_;
    std::uint64_t frames_ = 0;
};

}  // namespace telephone
