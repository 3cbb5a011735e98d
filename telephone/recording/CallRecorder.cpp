#include "telephone/recording/CallRecorder.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <ctime>
#include <iterator>
#include <utility>

#include <sys/stat.h>
#include <unistd.h>

#include "CommunicationsServiceEventIfc.h"
#include "platform/framework/SvcRTEContext.h"
#include "platform/management/LocalMgmtIfc.h"
#include "platform/recording/RecordingConfigManager.h"
#include "telephone/framework/Log.h"
#include "telephone/framework/Refusals.h"
#include "telephone/management/SettingRows.h"

namespace telephone {

namespace {

constexpr std::string_view kComponent = "recording";
constexpr std::chrono::milliseconds kWriteInterval{200};

// Whether the call has audio, or had it before a hold.
bool hasAudio(CallSnapshot const& call)
{
    return call.active() || call.state == sfiCallStateHeld || call.state == sfiCallStateHeldByBoth;
}

// The line as part of a file name.
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

// The recording service of a telephone without a recorder.
class NoRecorder : public MediaRecordingService
{
public:
    virtual ~NoRecorder() = default;

    void init(Context&, Executable*, MgmtAgentIfc*, RecordingConfigManager* configuration) override
    {
        configuration_.reset(configuration);
    }
    void init(Context&, Executable*, MgmtAgentIfc*) override {}
    bool activateRecording(std::string const&) override { return report(); }
    bool deactivateRecording(std::string const&) override { return report(); }
    void dataChangedEvent(ManageableData&) override {}

private:
    static bool report()
    {
        reportRefusal(kComponent, {RefusalKind::kNotSupported, "this telephone has no recorder"});
        return false;
    }

    std::unique_ptr<RecordingConfigManager> configuration_;
};

}  // namespace

CallRecorder::CallRecorder(RecordingConfiguration configuration, RecordableCalls calls, EventPoster post)
    : settings_(std::move(configuration))
    , calls_(std::move(calls))
    , post_(std::move(post))
    , thread_("recordings", [this] { run(); })
{}

CallRecorder::~CallRecorder()
{
    end([](auto const&) { return true; });
    {
        std::lock_guard const guard(mutex_);
        ends_ = true;
    }
    changed_.notifyAll();
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

Outcome<> CallRecorder::mayRecord() const
{
    {
        std::lock_guard const guard(mutex_);
        if (configuration_ != nullptr && !configuration_->isRecordingEnabled()) {
            return refuse(RefusalKind::kNotPermitted, "the setting recording-enabled is false");
        }
    }
    auto const& folder = settings_.folder;
    if (folder.empty()) {
        return refuse(RefusalKind::kNotSupported, "the configuration names no folder in recording.folder");
    }
    struct stat status = {};
    if (::stat(folder.c_str(), &status) != 0 || !S_ISDIR(status.st_mode) || ::access(folder.c_str(), W_OK) != 0) {
        return refuse(RefusalKind::kUnavailable,
                      fmt::format("the recording folder \"{}\" does not exist or is not writable", folder));
    }
    return {};
}

bool CallRecorder::activateRecording(std::string const& lineURI)
{
    std::vector<CallSnapshot> calls = calls_.calls();
    std::erase_if(calls, [&lineURI](auto const& call) { return call.line.lineURI != lineURI || !hasAudio(call); });
    if (calls.empty()) {
        reportRefusal(kComponent,
                      {RefusalKind::kWrongState, fmt::format("line \"{}\" has no call with audio to record", lineURI)});
        return false;
    }
    bool const allowed = !reportIfRefused(kComponent, mayRecord());
    bool recorded = false;
    for (auto const& call : calls) {
        if (allowed) {
            recorded = !reportIfRefused(kComponent, start(call)) || recorded;
        } else {
            sendNotRecorded(call);
        }
    }
    return recorded;
}

void CallRecorder::sendNotRecorded(CallSnapshot const& call)
{
    std::lock_guard const guard(mutex_);
    sendStatus(call, false);
}

Outcome<> CallRecorder::start(CallSnapshot const& call)
{
    auto const created = CallRecording::create(call, pathFor(call));
    if (!created) {
        sendNotRecorded(call);
        return tl::unexpected(created.error());
    }
    auto const& recording = *created;
    // In the list first: the call may end as soon as it has its tap.
    if (!list(recording)) {
        recording->discard();
        return {};
    }
    bool const tapped = calls_.addTap(call.callID, *recording);
    if (!tapped) {
        end([&recording](auto const& one) { return &one == recording.get(); });
    } else if (recording->isFinished()) {  // the call has ended since, and another call may have its id already
        calls_.removeTap(call.callID, *recording);
    }
    if (recording->isFinished()) {
        return refuse(RefusalKind::kNotFound,
                      fmt::format("call {} has ended before it could be recorded", call.callID));
    }
    log(kLogInfo, kComponent, "call {} on line {} is being recorded in \"{}\"", call.callID, call.line.lineURI,
        recording->path());
    return {};
}

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
    sendStatus(recording->call(), true);
    changed_.notifyAll();
    return true;
}

bool CallRecorder::deactivateRecording(std::string const& lineURI)
{
    bool const ended = end([&lineURI](auto const& recording) { return recording.call().line.lineURI == lineURI; });
    if (!ended) {
        reportRefusal(kComponent,
                      {RefusalKind::kWrongState, fmt::format("no call of line \"{}\" is being recorded", lineURI)});
    }
    return ended;
}

// The thread completes the files, then posts the event.
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
    changed_.notifyAll();
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

std::vector<int> CallRecorder::recordedCalls() const
{
    std::lock_guard const guard(mutex_);
    std::vector<int> ids;
    std::ranges::transform(listed(), std::back_inserter(ids), &CallSnapshot::callID);
    return ids;
}

void CallRecorder::sendStatus(CallSnapshot const& call, bool recorded)
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
    std::tm const now = localCalendar(wallTime());
    std::array<char, 32> time{};
    std::strftime(time.data(), time.size(), "%Y%m%d-%H%M%S", &now);
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
            changed_.waitFor(guard, kWriteInterval, [] { return false; });
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
    if (!reportIfRefused(kComponent, recording->outcome())) {
        log(kLogInfo, kComponent, "the recording of call {} is complete: \"{}\"", call.callID, recording->path());
    }
    std::lock_guard const guard(mutex_);
    std::erase(recordings_, recording);
    sendStatus(call, false);
}

}  // namespace telephone

MediaRecordingService* MediaRecordingService::GetInstance()
{
    static telephone::NoRecorder none;
    MediaRecordingService* const recorder = telephone::OnlyObject<telephone::CallRecorder>::get();
    return recorder == nullptr ? &none : recorder;
}
