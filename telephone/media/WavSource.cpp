#include "telephone/media/WavSource.h"

#include <stdexcept>
#include <utility>

#include <sndfile.h>

namespace telephone {

namespace {

struct SoundFileCloser
{
    void operator()(SNDFILE* file) const { sf_close(file); }
};

// Half an hour at 48 kHz.
constexpr sf_count_t kLongestFile = sf_count_t{48000} * 60 * 30;

Samples toMono(Samples const& interleaved, std::size_t channels)
{
    Samples mono(interleaved.size() / channels);
    for (std::size_t at = 0; at < mono.size(); ++at) {
        int sum = 0;
        for (std::size_t channel = 0; channel < channels; ++channel) {
            sum += interleaved[at * channels + channel];
        }
        mono[at] = static_cast<std::int16_t>(sum / static_cast<int>(channels));
    }
    return mono;
}

// Linear interpolation suffices for speech in the telephone band.
Samples toTelephoneRate(Samples const& samples, double rate)
{
    double const ratio = rate / sip::kSampleRate;
    Samples converted(static_cast<std::size_t>(static_cast<double>(samples.size()) / ratio));
    for (std::size_t at = 0; at < converted.size(); ++at) {
        double const place = static_cast<double>(at) * ratio;
        auto const left = static_cast<std::size_t>(place);
        std::size_t const right = left + 1 < samples.size() ? left + 1 : left;
        double const share = place - static_cast<double>(left);
        converted[at] = static_cast<std::int16_t>(samples[left] * (1.0 - share) + samples[right] * share);
    }
    return converted;
}

}  // namespace

std::shared_ptr<Samples const> loadSamples(std::string const& path)
{
    SF_INFO info{};
    std::unique_ptr<SNDFILE, SoundFileCloser> const file(sf_open(path.c_str(), SFM_READ, &info));
    if (!file) {
        throw std::runtime_error("audio file " + path + ": " + sf_strerror(nullptr));
    }
    if (info.frames <= 0 || info.frames > kLongestFile || info.channels < 1 || info.samplerate < 1) {
        throw std::runtime_error("audio file " + path + ": it has no sound or more than half an hour");
    }
    auto const channels = static_cast<std::size_t>(info.channels);
    Samples interleaved(static_cast<std::size_t>(info.frames) * channels);
    sf_count_t const read = sf_readf_short(file.get(), interleaved.data(), info.frames);
    interleaved.resize(static_cast<std::size_t>(read) * channels);
    Samples samples = toMono(interleaved, channels);
    if (info.samplerate != static_cast<int>(sip::kSampleRate)) {
        samples = toTelephoneRate(samples, info.samplerate);
    }
    if (samples.empty()) {
        throw std::runtime_error("audio file " + path + ": it has no sound");
    }
    return std::make_shared<Samples const>(std::move(samples));
}

WavSource::WavSource(std::shared_ptr<Samples const> samples)
    : samples_(std::move(samples))
{}

bool WavSource::readFrame(sip::AudioFrame& frame)
{
    for (auto& sample : frame) {
        sample = (*samples_)[next_];
        next_ = (next_ + 1) % samples_->size();
    }
    return true;
}

void WavSource::skipFrames(std::uint64_t count)
{
    next_ = (next_ + count * sip::kFrameSamples) % samples_->size();
}

}  // namespace telephone
