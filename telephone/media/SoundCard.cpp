#include "telephone/media/SoundCard.h"

#include <algorithm>
#include <utility>

#include <fcntl.h>
#include <portaudio.h>
#include <spdlog/fmt/fmt.h>
#include <unistd.h>

namespace telephone {

namespace {

constexpr long kFrame = static_cast<long>(sip::kFrameSamples);
// A card that is faster than the telephone's clock fills its buffer; what is older than 100 ms is skipped.
constexpr long kMostWaiting = 5 * kFrame;
constexpr PaTime kLatency = 0.06;  // seconds: three frames

// PortAudio's sound systems write to standard error what they do not find.
class QuietStandardError
{
public:
    QuietStandardError()
        : kept_(dup(STDERR_FILENO))
    {
        int const nothing = open("/dev/null", O_WRONLY | O_CLOEXEC);
        if (kept_ >= 0 && nothing >= 0) {
            dup2(nothing, STDERR_FILENO);
        }
        close(nothing);
    }
    ~QuietStandardError()
    {
        if (kept_ >= 0) {
            dup2(kept_, STDERR_FILENO);
            close(kept_);
        }
    }
    QuietStandardError(QuietStandardError const&) = delete;
    QuietStandardError& operator=(QuietStandardError const&) = delete;

private:
    int const kept_;
};

}  // namespace

// PortAudio, while it is in use.
class SoundCard::Library
{
public:
    Library()
    {
        QuietStandardError const quiet;
        error_ = Pa_Initialize();
    }
    ~Library()
    {
        if (error_ == paNoError) {
            Pa_Terminate();
        }
    }
    Library(Library const&) = delete;
    Library& operator=(Library const&) = delete;

    // No devices when it failed.
    static std::vector<SoundDevice> devices()
    {
        std::vector<SoundDevice> devices;
        for (PaDeviceIndex index = 0; index < Pa_GetDeviceCount(); ++index) {
            auto const* info = Pa_GetDeviceInfo(index);
            devices.push_back({info->name, info->maxInputChannels > 0, info->maxOutputChannels > 0,
                               index == Pa_GetDefaultInputDevice(), index == Pa_GetDefaultOutputDevice()});
        }
        return devices;
    }

private:
    PaError error_;
};

// One direction of one device.
class SoundCard::Device
{
public:
    enum class Kind
    {
        kMicrophone,
        kLoudspeaker
    };

    // name: empty: the default. Null, and a report, if there is none or it does not open.
    static std::unique_ptr<Device> open(Kind kind, std::string const& name, Report const& report)
    {
        bool const isMicrophone = kind == Kind::kMicrophone;
        std::string const what = fmt::format("{}{}", isMicrophone ? "microphone" : "loudspeaker",
                                             name.empty() ? "" : fmt::format(" \"{}\"", name));
        PaStreamParameters const parameters{indexOf(kind, name), 1, paInt16, kLatency, nullptr};
        if (parameters.device == paNoDevice) {
            report(fmt::format("there is no {}: \"telephone devices\" lists what there is", what));
            return nullptr;
        }
        QuietStandardError const quiet;
        PaStream* stream = nullptr;
        PaError const error =
            Pa_OpenStream(&stream, isMicrophone ? &parameters : nullptr, isMicrophone ? nullptr : &parameters,
                          sip::kSampleRate, sip::kFrameSamples, paNoFlag, nullptr, nullptr);
        if (error != paNoError) {
            report(fmt::format("the {} cannot be used: {}", what, Pa_GetErrorText(error)));
            return nullptr;
        }
        return std::unique_ptr<Device>(new Device(stream, what));
    }

    ~Device() { Pa_CloseStream(stream_); }
    Device(Device const&) = delete;
    Device& operator=(Device const&) = delete;

    std::string const& what() const { return what_; }
    // The error of the last operation; an overflow or underflow is none.
    PaError error() const { return error_; }

    bool read(sip::AudioFrame& frame)
    {
        start();
        long waiting = check(Pa_GetStreamReadAvailable(stream_));
        if (waiting < kFrame) {
            return false;
        }
        for (; waiting > kMostWaiting; waiting -= kFrame) {
            check(Pa_ReadStream(stream_, frame.data(), sip::kFrameSamples));
        }
        check(Pa_ReadStream(stream_, frame.data(), sip::kFrameSamples));
        return error_ == paNoError;
    }

    void write(sip::AudioFrame const& frame)
    {
        start();
        if (check(Pa_GetStreamWriteAvailable(stream_)) >= kFrame) {
            check(Pa_WriteStream(stream_, frame.data(), sip::kFrameSamples));
        }
    }

    void rest()
    {
        if (isRunning_) {
            Pa_AbortStream(stream_);
            isRunning_ = false;
        }
    }

private:
    Device(PaStream* stream, std::string what)
        : stream_(stream)
        , what_(std::move(what))
    {}

    static PaDeviceIndex indexOf(Kind kind, std::string const& name)
    {
        bool const isMicrophone = kind == Kind::kMicrophone;
        if (name.empty()) {
            return isMicrophone ? Pa_GetDefaultInputDevice() : Pa_GetDefaultOutputDevice();
        }
        auto const devices = Library::devices();
        auto const found = std::ranges::find_if(devices, [&](SoundDevice const& device) {
            return device.name == name && (isMicrophone ? device.hasMicrophone : device.hasLoudspeaker);
        });
        return found == devices.end() ? paNoDevice : static_cast<PaDeviceIndex>(found - devices.begin());
    }

    void start()
    {
        if (!isRunning_) {
            isRunning_ = true;
            check(Pa_StartStream(stream_));
        }
    }

    // The result, of which a negative one is an error.
    long check(long result)
    {
        bool const isLate = result == paInputOverflowed || result == paOutputUnderflowed;
        if (result < 0 && !isLate) {
            error_ = static_cast<PaError>(result);
        }
        return result;
    }

    PaStream* const stream_;
    std::string const what_;
    bool isRunning_ = false;
    PaError error_ = paNoError;
};

// One call's place in what the microphone delivers.
class SoundCard::Reader final : public sip::AudioSource
{
public:
    explicit Reader(SoundCard& card)
        : card_(card)
    {}

    bool readFrame(sip::AudioFrame& frame) override
    {
        if (read_ == card_.count_ && !card_.readFrame(card_.newest_)) {
            return false;
        }
        read_ = card_.count_;
        frame = card_.newest_;
        return true;
    }

private:
    SoundCard& card_;
    std::uint64_t read_ = card_.count_;  // the newest frame that this call has had
};

std::vector<SoundDevice> soundDevices()
{
    SoundCard::Library const library;
    return SoundCard::Library::devices();
}

SoundCard::SoundCard(std::string const& microphone, std::string const& loudspeaker, Report report)
    : report_(std::move(report))
    , library_(std::make_unique<Library>())
    , microphone_(Device::open(Device::Kind::kMicrophone, microphone, report_))
    , loudspeaker_(Device::open(Device::Kind::kLoudspeaker, loudspeaker, report_))
{}

SoundCard::~SoundCard() = default;

std::unique_ptr<sip::AudioSource> SoundCard::makeMicrophone()
{
    return std::make_unique<Reader>(*this);
}

bool SoundCard::readFrame(sip::AudioFrame& frame)
{
    if (!microphone_ || !microphone_->read(frame)) {
        closeIfFailed(microphone_);
        return false;
    }
    ++count_;
    return true;
}

void SoundCard::writeFrame(sip::AudioFrame const& frame)
{
    if (loudspeaker_) {
        loudspeaker_->write(frame);
        closeIfFailed(loudspeaker_);
    }
}

void SoundCard::closeIfFailed(std::unique_ptr<Device>& device)
{
    if (device && device->error() != paNoError) {
        report_(fmt::format("the {} has failed: {}", device->what(), Pa_GetErrorText(device->error())));
        device.reset();
    }
}

void SoundCard::rest()
{
    for (auto* device : {microphone_.get(), loudspeaker_.get()}) {
        if (device != nullptr) {
            device->rest();
        }
    }
}

}  // namespace telephone
