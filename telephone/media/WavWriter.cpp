#include "telephone/media/WavWriter.h"

#include <array>
#include <stdexcept>

#include <sndfile.h>

#include "telephone/base/OwnerOnly.h"

namespace telephone {

struct WavWriter::File
{
    explicit File(SNDFILE* opened)
        : handle(opened)
    {}
    ~File() { sf_close(handle); }
    File(File const&) = delete;
    File& operator=(File const&) = delete;

    SNDFILE* handle;
};

WavWriter::WavWriter(std::string const& path, int channels)
{
    if (auto const closed = makeOwnerOnly(path); !closed) {
        throw std::runtime_error("audio file: " + closed.error().reason);
    }
    SF_INFO info{};
    info.samplerate = static_cast<int>(sip::kSampleRate);
    info.channels = channels;
    info.format = SF_FORMAT_WAV | SF_FORMAT_PCM_16;
    SNDFILE* opened = sf_open(path.c_str(), SFM_WRITE, &info);
    if (opened == nullptr) {
        throw std::runtime_error("audio file " + path + ": " + sf_strerror(nullptr));
    }
    file_ = std::make_unique<File>(opened);
}

WavWriter::~WavWriter() = default;

bool WavWriter::write(sip::AudioFrame const& frame)
{
    constexpr auto kSamples = static_cast<sf_count_t>(sip::kFrameSamples);
    if (!file_ || sf_write_short(file_->handle, frame.data(), kSamples) != kSamples) {
        return false;
    }
    ++frames_;
    return true;
}

bool WavWriter::write(sip::AudioFrame const& left, sip::AudioFrame const& right)
{
    std::array<std::int16_t, 2 * sip::kFrameSamples> both{};
    for (std::size_t at = 0; at < sip::kFrameSamples; ++at) {
        both[2 * at] = left[at];
        both[2 * at + 1] = right[at];
    }
    constexpr auto kSamples = static_cast<sf_count_t>(both.size());
    if (!file_ || sf_write_short(file_->handle, both.data(), kSamples) != kSamples) {
        return false;
    }
    ++frames_;
    return true;
}

void WavWriter::close()
{
    file_.reset();
}

}  // namespace telephone
