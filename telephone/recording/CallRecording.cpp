#include "telephone/recording/CallRecording.h"

#include <cerrno>
#include <cstring>
#include <utility>

#include <fcntl.h>
#include <sndfile.h>
#include <spdlog/fmt/fmt.h>
#include <unistd.h>

namespace telephone {

namespace {

constexpr int kChannels = 2;

}  // namespace

void CallRecording::FileCloser::operator()(sf_private_tag* file) const
{
    sf_close(file);
}

CallRecording::CallRecording(CallSnapshot call, std::string path, File file)
    : call_(std::move(call))
    , path_(std::move(path))
    , file_(std::move(file))
{}

Outcome<std::shared_ptr<CallRecording>> CallRecording::create(CallSnapshot call, std::string path)
{
    int const descriptor = ::open(path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
    if (descriptor < 0) {
        return refuse(RefusalKind::kUnavailable,
                      fmt::format("\"{}\" cannot be created: {}", path, std::strerror(errno)));
    }
    SF_INFO format{};
    format.samplerate = static_cast<int>(sip::kSampleRate);
    format.channels = kChannels;
    format.format = SF_FORMAT_WAV | SF_FORMAT_PCM_16;
    File file(sf_open_fd(descriptor, SFM_WRITE, &format, SF_TRUE));
    if (file == nullptr) {
        ::unlink(path.c_str());
        return refuse(RefusalKind::kUnavailable,
                      fmt::format("\"{}\" cannot be written: {}", path, sf_strerror(nullptr)));
    }
    // If the telephone ends in the middle of a recording, the file can still be played.
    sf_command(file.get(), SFC_SET_UPDATE_HEADER_AUTO, nullptr, SF_TRUE);
    return std::shared_ptr<CallRecording>(new CallRecording(std::move(call), std::move(path), std::move(file)));
}

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
            outcome_ = refuse(RefusalKind::kUnavailable,
                              fmt::format("the recording of call {} has ended: the disk is too slow", call_.callID));
        }
    }
    auto const frames = static_cast<sf_count_t>(samples.size() / kChannels);
    if (outcome_ && frames > 0 && sf_writef_short(file_.get(), samples.data(), frames) != frames) {
        outcome_ = refuse(RefusalKind::kUnavailable, fmt::format("the recording of call {} has ended: \"{}\": {}",
                                                                 call_.callID, path_, std::strerror(errno)));
    }
    return outcome_ && !last;
}

void CallRecording::discard()
{
    close();
    ::unlink(path_.c_str());
}

}  // namespace telephone
