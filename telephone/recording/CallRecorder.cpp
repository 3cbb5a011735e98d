#include "telephone/recording/CallRecorder.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <ctime>
#include <exception>
#include <utility>

#include <sys/stat.h>
#include <unistd.h>

#include "CommunicationsServiceEventIfc.h"
#include "platform/framework/SvcRTEContext.h"
#include "platform/management/LocalMgmtIfc.h"
#include "platform/recording/RecordingConfigManager.h"
#include "telephone/framework/Log.h"
#include "telephone/management/SettingRows.h"

namespace telephone {

namespace {

constexpr std::string_view kComponent = "recording";
constexpr std::chrono::milliseconds kWriteInterval{200};

std::atomic<MediaRecordingService*> current{nullptr};

// Whether there is anything to hear on the call.
bool speaks(CallSnapshot const& call)
{
    switch (call.state) {
    case sfiCallStateConnected:
    case sfiCallStateHeld:
    case sfiCallStateRemotelyHeld:
    case sfiCallStateHeldByBoth:
    case sfiCallStateConference:
        return true;
    case sfiCallStateIdle:
    case sfiCallStateDialling:
    case sfiCallStateProceeding:
    case sfiCallStateRemoteRinging:
    case sfiCallStateIncoming:
    case sfiCallStateRinging:
    case sfiCallStateTransferring:
    case sfiCallStateClearing:
    case sfiCallStateBusy:
    case sfiCallStateFailed:
    case sfiCallStateAccepted:
        return false;
    }
    return false;
}

// The line as a part of a file name.
std::string fileNamePart(std::string const& line)
{
    std::string part(line);
    for (auto& character : part) {
        bool const plain = (character >= '0' && character <= '9') || (character >= 'a' && character <= 'z') ||
                           (character >= 'A' && character <= 'Z') || character == '-' || character == '_';
        character = plain ? character : '_';
    }
    return part;
}

// Stands in for the recorder in a telephone that has none.
class NoRecorder : public MediaRecordingService
{
public:
    virtual ~NoRecorder() = default;

    void init(Context&, Executable*, MgmtAgentIfc*, RecordingConfigManager* configuration) override
    {
        configuration_.reset(configuration);
    }
    void init(Context&, Executable*, MgmtAgentIfc*) override {}
    bool activateRecording(std::string const&) override { return refuse(); }
    bool deactivateRecording(std::string const&) override { return refuse(); }
    void dataChangedEvent(ManageableData&) override {}

private:
    static bool refuse()
    {
        log(kLogFailure, kComponent, "refused: this telephone has no recorder");
        return false;
    }

    std::unique_ptr<RecordingConfigManager> configuration_;
};

}  // namespace

CallRecorder::CallRecorder(RecordingConfiguration configuration, RecordableCalls calls, EventPoster post)
    : settings_(std::move(configuration))
    , calls_(std::move(calls))
    , post_(std::move(post))
    , thread_([this] { run(); })
{
    current.store(this);
}

CallRecorder::~CallRecorder()
{
    MediaRecordingService* self = this;
    current.compare_exchange_strong(self, nullptr);
    end([](auto const&) { return true; });
    {
        std::lock_guard const guard(mutex_);
        ends_ = true;
    }
    changed_.notify_all();
    thread_.join();
}

void CallRecorder::init(Context& context, Executable* service, MgmtAgentIfc* agent,
                        RecordingConfigManager* configuration)
{
    {
        std::lock_guard const guard(mutex_);
        configuration_.reset(configuration);
    }
    init(context, service, agent);
}

void CallRecorder::init(Context& context, Executable* /*service*/, MgmtAgentIfc* agent)
{
    {
        std::lock_guard const guard(mutex_);
        if (std::exchange(agent_, agent) == agent) {
            return;  // registered already
        }
    }
    if (auto* const management = dynamic_cast<LocalMgmtIfc*>(context.findExecutable("LocalMgmtIfc"))) {
        management->registerForTag(agent, SettingTags::kRecording.data());
    }
}

bool CallRecorder::mayRecord(std::string const& lineURI)
{
    {
        std::lock_guard const guard(mutex_);
        if (configuration_ != nullptr && !configuration_->isRecordingEnabled()) {
            log(kLogFailure, kComponent, "line {} not recorded: the setting recording-enabled is false", lineURI);
            return false;
        }
    }
    auto const& folder = settings_.folder;
    if (folder.empty()) {
        log(kLogFailure, kComponent, "line {} not recorded: no folder is named in recording.folder", lineURI);
        return false;
    }
    struct stat status = {};
    if (::stat(folder.c_str(), &status) != 0 || !S_ISDIR(status.st_mode) || ::access(folder.c_str(), W_OK) != 0) {
        log(kLogFailure, kComponent, "line {} not recorded: the folder \"{}\" does not exist or can't be written",
            lineURI, folder);
        return false;
    }
    return true;
}

bool CallRecorder::activateRecording(std::string const& lineURI)
{
    std::vector<CallSnapshot> calls = calls_.calls();
    std::erase_if(calls, [&lineURI](auto const& call) { return call.line.lineURI != lineURI || !speaks(call); });
    if (calls.empty()) {
        log(kLogFailure, kComponent, "line {} not recorded: it has no call that speaks", lineURI);
        return false;
    }
    bool const allowed = mayRecord(lineURI);
    bool recorded = false;
    for (auto const& call : calls) {
        recorded = (allowed ? start(call) : refuse(call)) || recorded;
    }
    return recorded;
}

bool CallRecorder::refuse(CallSnapshot const& call)
{
    std::lock_guard const guard(mutex_);
    reportStatus(call, false);
    return false;
}

bool CallRecorder::start(CallSnapshot const& call)
{
    std::shared_ptr<CallRecording> recording;
    try {
        recording = std::make_shared<CallRecording>(call, pathFor(call));
    } catch (std::exception const& error) {
        log(kLogFailure, kComponent, "call {} not recorded: {}", call.callID, error.what());
        return refuse(call);
    }
    // In the list first: the call may end as soon as it has its tap.
    if (!list(recording)) {
        recording->discard();
        return true;
    }
    if (!calls_.addTap(call.callID, *recording)) {
        log(kLogFailure, kComponent, "call {} not recorded: it has ended", call.callID);
        end([&recording](auto const& one) { return &one == recording.get(); });
        return false;
    }
    if (recording->isFinished()) {  // ended meanwhile, and its id may be another call's already
        calls_.removeTap(call.callID, *recording);
        return false;
    }
    log(kLogInfo, kComponent, "call {} on line {} is recorded in \"{}\"", call.callID, call.line.lineURI,
        recording->path());
    return true;
}

// False when the call is being recorded already.
bool CallRecorder::list(std::shared_ptr<CallRecording> const& recording)
{
    std::lock_guard const guard(mutex_);
    auto const same = [&recording](auto const& one) {
        return !one->isFinished() && one->call().callID == recording->call().callID;
    };
    if (std::any_of(recordings_.begin(), recordings_.end(), same)) {
        return false;
    }
    recordings_.push_back(recording);
    reportStatus(recording->call(), true);
    changed_.notify_all();
    return true;
}

bool CallRecorder::deactivateRecording(std::string const& lineURI)
{
    bool const ended = end([&lineURI](auto const& recording) { return recording.call().line.lineURI == lineURI; });
    if (!ended) {
        log(kLogFailure, kComponent, "recording not ended: no call of line {} is recorded", lineURI);
    }
    return ended;
}

// Files are completed by the thread, which then posts the event.
bool CallRecorder::end(Choice const& choice)
{
    Recordings chosen;
    {
        std::lock_guard const guard(mutex_);
        std::copy_if(recordings_.begin(), recordings_.end(), std::back_inserter(chosen),
                     [&choice](auto const& recording) { return !recording->isFinished() && choice(*recording); });
    }
    for (auto const& recording : chosen) {
        calls_.removeTap(recording->call().callID, *recording);
        recording->finish();
    }
    changed_.notify_all();
    return !chosen.empty();
}

void CallRecorder::dataChangedEvent(ManageableData& /*data*/)
{
    {
        std::lock_guard const guard(mutex_);
        if (configuration_ == nullptr || configuration_->isRecordingEnabled()) {
            return;
        }
    }
    end([](auto const&) { return true; });
}

void CallRecorder::callChanged(CallSnapshot const& now, CallSnapshot const* /*before*/)
{
    if (now.ended()) {
        end([&now](auto const& recording) { return recording.call().callID == now.callID; });
    }
}

std::vector<CallSnapshot> CallRecorder::recordedCalls() const
{
    std::lock_guard const guard(mutex_);
    return listed();
}

std::vector<CallSnapshot> CallRecorder::listed() const
{
    std::vector<CallSnapshot> calls;
    for (auto const& recording : recordings_) {
        if (!recording->isFinished()) {
            calls.push_back(recording->call());
        }
    }
    return calls;
}

// With the lock held, so that events tell of the recordings in the order in which the list changed.
void CallRecorder::reportStatus(CallSnapshot const& call, bool recorded)
{
    post_([line = call.line.lineURI, id = call.callID, recorded](CommunicationsServiceEventIfc& events) {
        events.callRecordingStatus(line, id, recorded ? "true" : "false");
    });
    std::vector<int> ids;
    std::vector<std::string> lines;
    for (auto const& one : listed()) {
        ids.push_back(one.callID);
        lines.push_back(one.line.lineURI);
    }
    auto const security = call.secure ? sfiSecurityStatusSecure : sfiSecurityStatusPlain;
    post_([line = call.line.lineURI, id = call.callID, security, ids, lines](CommunicationsServiceEventIfc& events) {
        auto callIDs = ids;
        auto lineURIs = lines;
        events.securityStatusChanged(line, id, security, callIDs, lineURIs);
    });
}

std::string CallRecorder::pathFor(CallSnapshot const& call) const
{
    auto const now = std::chrono::system_clock::to_time_t(std::chrono::system_clock::now());
    std::tm local = {};
    localtime_r(&now, &local);
    std::array<char, 32> time{};
    std::strftime(time.data(), time.size(), "%Y%m%d-%H%M%S", &local);
    auto const stem =
        fmt::format("{}/{}-{}-{}", settings_.folder, fileNamePart(call.line.lineURI), call.callID, time.data());
    auto path = stem + ".wav";
    for (int copy = 2; ::access(path.c_str(), F_OK) == 0; ++copy) {
        path = fmt::format("{}-{}.wav", stem, copy);
    }
    return path;
}

void CallRecorder::run()
{
    std::unique_lock guard(mutex_);
    while (!ends_ || !recordings_.empty()) {
        if (recordings_.empty()) {
            changed_.wait(guard, [this] { return ends_ || !recordings_.empty(); });
        } else {
            changed_.wait_for(guard, kWriteInterval);
        }
        auto const recordings = recordings_;
        guard.unlock();
        writeAll(recordings);
        guard.lock();
    }
}

void CallRecorder::writeAll(Recordings const& recordings)
{
    for (auto const& recording : recordings) {
        if (recording->write()) {
            continue;
        }
        calls_.removeTap(recording->call().callID, *recording);
        recording->finish();
        complete(recording);
    }
}

void CallRecorder::complete(std::shared_ptr<CallRecording> const& recording)
{
    recording->close();
    auto const& call = recording->call();
    if (recording->failure().empty()) {
        log(kLogInfo, kComponent, "the recording of call {} is complete: \"{}\"", call.callID, recording->path());
    } else {
        log(kLogFailure, kComponent, "the recording of call {} has ended: {}", call.callID, recording->failure());
    }
    std::lock_guard const guard(mutex_);
    std::erase(recordings_, recording);
    reportStatus(call, false);
}

}  // namespace telephone

MediaRecordingService* MediaRecordingService::GetInstance()
{
    static telephone::NoRecorder none;
    auto* const recorder = telephone::current.load();
    return recorder == nullptr ? &none : recorder;
}
