#include "telephone/recording/CallRecording.h"

#include <cerrno>
#include <cstring>
#include <stdexcept>
#include <utility>

#include <fcntl.h>
#include <sndfile.h>
#include <spdlog/fmt/fmt.h>
#include <unistd.h>

namespace telephone {

namespace {

constexpr int kChannels = 2;

// A file that exists is never written over.
int openNew(std::string const& path)
{
    int const descriptor = ::open(path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
    if (descriptor < 0) {
        throw std::runtime_error(fmt::format("\"{}\" can't be made: {}", path, std::strerror(errno)));
    }
    return descriptor;
}

}  // namespace

void CallRecording::FileCloser::operator()(sf_private_tag* file) const
{
    sf_close(file);
}

CallRecording::CallRecording(CallSnapshot call, std::string path)
    : call_(std::move(call))
    , path_(std::move(path))
{
    SF_INFO format{};
    format.samplerate = static_cast<int>(sip::kSampleRate);
    format.channels = kChannels;
    format.format = SF_FORMAT_WAV | SF_FORMAT_PCM_16;
    file_.reset(sf_open_fd(openNew(path_), SFM_WRITE, &format, SF_TRUE));
    if (file_ == nullptr) {
        ::unlink(path_.c_str());
        throw std::runtime_error(fmt::format("\"{}\" can't be written: {}", path_, sf_strerror(nullptr)));
    }
    // An end of the telephone in the middle leaves a file that can be played.
    sf_command(file_.get(), SFC_SET_UPDATE_HEADER_AUTO, nullptr, SF_TRUE);
}

CallRecording::~CallRecording() = default;

void CallRecording::onFrame(sip::AudioFrame const& heard, sip::AudioFrame const& sent)
{
    std::lock_guard const guard(mutex_);
    if (finished_ || overrun_) {
        return;
    }
    if (queued_.size() >= kMostQueuedSamples) {
        overrun_ = true;
        return;
    }
    for (std::size_t i = 0; i < heard.size(); ++i) {
        queued_.push_back(heard[i]);
        queued_.push_back(sent[i]);
    }
}

bool CallRecording::write()
{
    bool const last = finished_;
    std::vector<std::int16_t> samples;
    {
        std::lock_guard const guard(mutex_);
        samples.swap(queued_);
        if (overrun_) {
            failure_ = "the disk does not keep up";
        }
    }
    auto const frames = static_cast<sf_count_t>(samples.size() / kChannels);
    if (failure_.empty() && frames > 0 && sf_writef_short(file_.get(), samples.data(), frames) != frames) {
        failure_ = fmt::format("\"{}\" can't be written: {}", path_, std::strerror(errno));
    }
    return failure_.empty() && !last;
}

void CallRecording::discard()
{
    close();
    ::unlink(path_.c_str());
}

void CallRecording::close()
{
    file_.reset();
}

}  // namespace telephone
