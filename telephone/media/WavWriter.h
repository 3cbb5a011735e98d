// Writes frames to a WAV file, 8 kHz 16 bit, mono or two channels. Used by one thread at a time. What was written can
// be read back after close() or destruction.
#pragma once

#include "sip/Audio.h"

#include <cstdint>
#include <memory>
#include <string>

namespace telephone {

class WavWriter
{
public:
    // Creates or empties the file; throws std::runtime_error saying which could not be written and why.
    WavWriter(const std::string& path, int channels);
    ~WavWriter();
    WavWriter(const WavWriter&) = delete;
    WavWriter& operator=(const WavWriter&) = delete;

    // Of a mono file. False: the disk is full or gone.
    bool write(const sip::AudioFrame& frame);
    // Of a file with two channels.
    bool write(const sip::AudioFrame& left, const sip::AudioFrame& right);
    void close();

    std::uint64_t frames() const { return frames_; }  // written so far

private:
    struct File;
    std::unique_ptr<File> file_;
    std::uint64_t frames_ = 0;
};

}  // namespace telephone
