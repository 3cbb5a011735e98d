#include "telephone/calls/CallList.h"

#include <algorithm>
#include <mutex>
#include <utility>

#include <malloc.h>
#include <spdlog/fmt/fmt.h>

#include "telephone/calls/EngineConfiguration.h"
#include "telephone/calls/LogComponent.h"
#include "telephone/framework/Log.h"
#include "telephone/sip/EventLoop.h"

namespace telephone {

namespace {

constexpr int kFirstCallID = 1001;
constexpr int kLastCallID = 999999;
constexpr int kFirstBluetoothID = 10000;
constexpr int kLastBluetoothID = 10500;
// The stack forgets an ended call after 64 times T1 (RFC 3261, table 4); some seconds are added.
constexpr std::chrono::seconds kTransactionsOver{38};

}  // namespace

tl::unexpected<Refusal> noSuchCall(int callID)
{
    return refuse(RefusalKind::kNotFound, fmt::format("there is no call {}", callID));
}

CallList::CallList(Call::Surroundings const& surroundings, EngineConfiguration const& configuration,
                   CallObservers const& observers)
    : surroundings_(surroundings)
    , observers_(observers)
    , maximum_(static_cast<std::size_t>(std::max(configuration.maximumCalls, 0)))
    , sources_(configuration.audio, [](std::string const& reason) { log(kLogWarning, kComponent, "{}", reason); })
    , burial_(surroundings.loop)
    , quiet_(surroundings.loop)
    , lastCallID_(kFirstCallID - 1)
{
    if (sources_.loudspeaker() != nullptr) {
        heard_.addListener(*sources_.loudspeaker());
    }
    if (!configuration.heardFile.empty()) {
        heardFile_ = std::make_unique<WavWriter>(configuration.heardFile, 1);
        heard_.addListener(*heardFile_);
    }
}

CallList::~CallList()
{
    std::lock_guard const guard(surroundings_.loop);
    burial_.cancel();
    quiet_.cancel();
    ended_.clear();
}

std::vector<CallSnapshot> CallList::calls() const
{
    std::lock_guard const guard(surroundings_.loop);
    std::vector<CallSnapshot> snapshots;
    for (auto const& call : calls_) {
        snapshots.push_back(call->snapshot());
    }
    return snapshots;
}

std::optional<CallSnapshot> CallList::call(int callID) const
{
    std::lock_guard const guard(surroundings_.loop);
    Call const* const found = find(callID);
    return found != nullptr ? std::optional(found->snapshot()) : std::nullopt;
}

std::optional<CallSnapshot> CallList::activeCall() const
{
    std::lock_guard const guard(surroundings_.loop);
    auto const active = speaking();
    return active.empty() ? std::nullopt : std::optional(active.front()->snapshot());
}

int CallList::freeCallID()
{
    std::lock_guard const guard(surroundings_.loop);
    do {
        ++lastCallID_;
        if (lastCallID_ == kFirstBluetoothID) {
            lastCallID_ = kLastBluetoothID + 1;
        }
        if (lastCallID_ > kLastCallID) {
            lastCallID_ = kFirstCallID;
        }
    } while (find(lastCallID_) != nullptr);
    return lastCallID_;
}

Outcome<> CallList::clear(int callID, CSTAEventCause cause)
{
    return with(callID, [cause](Call& call) {
        call.clear(cause);
        return Outcome<>();
    });
}

Outcome<> CallList::with(int callID, std::function<Outcome<>(Call&)> const& operation) const
{
    std::lock_guard const guard(surroundings_.loop);
    Call* const call = find(callID);
    return call != nullptr ? operation(*call) : noSuchCall(callID);
}

bool CallList::addTap(int callID, AudioTap& tap)
{
    std::lock_guard const guard(surroundings_.loop);
    Call* const call = find(callID);
    if (call != nullptr) {
        call->audio().addTap(tap);
    }
    return call != nullptr;
}

void CallList::removeTap(int callID, AudioTap& tap)
{
    std::lock_guard const guard(surroundings_.loop);
    if (Call* const call = find(callID)) {
        call->audio().removeTap(tap);
    }
}

void CallList::setMicrophoneMute(bool mute)
{
    std::lock_guard const guard(surroundings_.loop);
    muted_ = mute;
    for (auto const& call : calls_) {
        call->setMuted(mute);
    }
    observers_.tell([mute](CallObserver& observer) { observer.microphoneMuteChanged(mute); });
}

bool CallList::microphoneMute() const
{
    std::lock_guard const guard(surroundings_.loop);
    return muted_;
}

Call* CallList::find(int callID) const
{
    auto const found = std::ranges::find_if(calls_, [callID](auto const& call) { return call->id() == callID; });
    return found == calls_.end() ? nullptr : found->get();
}

std::vector<Call*> CallList::speaking(Call const* besides) const
{
    std::vector<Call*> speaking;
    for (auto const& call : calls_) {
        if (call.get() != besides && call->isEstablished() && !call->snapshot().held) {
            speaking.push_back(call.get());
        }
    }
    return speaking;
}

std::vector<Call*> CallList::inConference() const
{
    std::vector<Call*> joined;
    for (auto const& call : calls_) {
        if (call->snapshot().inConference) {
            joined.push_back(call.get());
        }
    }
    return joined;
}

std::vector<Call*> CallList::othersInConference(Call const& call) const
{
    std::vector<Call*> others = call.snapshot().inConference ? inConference() : std::vector<Call*>();
    std::erase(others, &call);
    return others;
}

Call* CallList::firstOnLine(int lineNumber) const
{
    auto const found =
        std::ranges::find_if(calls_, [lineNumber](auto const& call) { return call->line().lineNumber == lineNumber; });
    return found == calls_.end() ? nullptr : found->get();
}

std::unique_ptr<Call> CallList::make(int callID, LineAddress const& line, bool incoming) const
{
    auto call = std::make_unique<Call>(surroundings_, callID, line, incoming, sources_.make());
    call->setMuted(muted_);
    return call;
}

Call& CallList::add(std::unique_ptr<Call> call)
{
    calls_.push_back(std::move(call));
    if (heard_.hasListeners()) {
        calls_.back()->audio().addTap(heard_.add(calls_.back()->id()));
    }
    return *calls_.back();
}

void CallList::remove(Call const& call)
{
    heard_.remove(call.id());
    auto const place = std::ranges::find(calls_, &call, &std::unique_ptr<Call>::get);
    if (place == calls_.end()) {
        return;
    }
    ended_.push_back(std::move(*place));
    calls_.erase(place);
    if (calls_.empty()) {
        sources_.rest();
    }
    burial_.start(std::chrono::milliseconds(0), [this] { ended_.clear(); });
    // Fragmentation would otherwise keep the memory of ended calls.
    quiet_.start(kTransactionsOver, [] { (void)malloc_trim(0); });
}

void CallList::endAll()
{
    while (!calls_.empty()) {
        calls_.back()->clear(CSTAEventCauseNormalClearing);
    }
}

}  // namespace telephone
