#include "telephone/calls/CallEngineImpl.h"

#include <algorithm>
#include <mutex>
#include <utility>

#include <malloc.h>

namespace telephone {

using sip::LogLevel;

namespace {

constexpr int kFirstCallID = 1001;
// Call ids of calls on a Bluetooth device.
constexpr int kFirstBluetoothID = 10000;
constexpr int kLastBluetoothID = 10500;
constexpr int kLastCallID = 999999;
// What the stack keeps of an ended call is gone after that: 64 times T1 (RFC 3261, table 4), and some seconds.
constexpr std::chrono::seconds kTransactionsOver{38};

}  // namespace

CallEngine::Impl::Impl(sip::EventLoop& loop, EngineConfiguration configuration, LineDirectory& lines,
                       CallPolicy& policy, EventPoster post)
    : loop_(loop)
    , configuration_(std::move(configuration))
    , lines_(lines)
    , policy_(policy)
    , post_(std::move(post))
    , sources_(configuration_.audioSource)
    , burial_(loop)
    , quiet_(loop)
    , lastCallID_(kFirstCallID - 1)
{
    agent_ = std::make_unique<sip::UserAgent>(loop_, configuration_.agent, *this);
    registrations_ = std::make_unique<Registrations>(
        *this, *agent_, [this](LineAccount const& line, bool registered) { registrationChanged(line, registered); });
    messages_ = std::make_unique<MessageWaiting>(*this, *agent_, configuration_.voiceMail,
                                                 [this](int lineNumber, sfiMessageWaitingRecord const& record) {
                                                     for (CallObserver* observer : std::vector(observers_)) {
                                                         observer->messageWaitingChanged(lineNumber, record);
                                                     }
                                                 });
    const CallBacks::Limits limits{configuration_.callBacks, configuration_.callBackTime, configuration_.settlingTime};
    callBacks_ = std::make_unique<CallBacks>(*this, *agent_, limits);
    publisher_ = std::make_unique<DialogPublisher>(loop_, [this](int lineNumber) {
        std::vector<const Call*> onLine;
        for (const auto& call : calls_) {
            if (call->line().lineNumber == lineNumber) {
                onLine.push_back(call.get());
            }
        }
        return onLine;
    });
    server_ = std::make_unique<ServerLink>(*this, *agent_);
    if (!configuration_.heardFile.empty()) {
        heard_ = std::make_unique<HeardRecorder>(configuration_.heardFile);
    }
}

// The agent waits for the answers to what it still sends, which come only while nobody holds the lock.
CallEngine::Impl::~Impl()
{
    {
        const std::lock_guard guard(loop_);
        deactivate();
        burial_.cancel();
        quiet_.cancel();
        bury();
        server_.reset();
        publisher_.reset();
        callBacks_.reset();
        messages_.reset();
        registrations_.reset();
    }
    agent_.reset();
}

void CallEngine::Impl::log(LogLevel level, std::string const& text)
{
    if (configuration_.agent.log) {
        configuration_.agent.log(level, text);
    }
}

sfiResult CallEngine::Impl::refused(std::string const& reason)
{
    log(LogLevel::kWarning, reason);
    return sfiFailure;
}

sfiResult CallEngine::Impl::activate()
{
    active_ = true;
    registrations_->refresh(lines_.accounts());
    return sfiSuccess;
}

sfiResult CallEngine::Impl::deactivate()
{
    active_ = false;
    while (!calls_.empty()) {
        calls_.back()->clear(CSTAEventCauseNormalClearing);
    }
    pickups_.clear();
    callBacks_->clear();
    messages_->clear();
    publisher_->clear();
    registrations_->clear();
    return sfiSuccess;
}

Call* CallEngine::Impl::find(int callID) const
{
    auto const found =
        std::find_if(calls_.begin(), calls_.end(), [callID](auto const& call) { return call->id() == callID; });
    return found == calls_.end() ? nullptr : found->get();
}

Call* CallEngine::Impl::require(int callID, char const* operation)
{
    Call* call = find(callID);
    if (call == nullptr) {
        refused(std::string(operation) + ": there is no call " + std::to_string(callID));
    }
    return call;
}

std::optional<LineAccount> CallEngine::Impl::accountOf(int lineNumber) const
{
    for (LineAccount& line : lines_.accounts()) {
        if (line.lineNumber == lineNumber) {
            return std::move(line);
        }
    }
    return std::nullopt;
}

std::optional<LineAddress> CallEngine::Impl::requireLine(int recordLine, int appearance, char const* operation)
{
    auto line = lines_.addressOf(recordLine, appearance);
    if (!line) {
        refused(std::string(operation) + ": no line " + std::to_string(recordLine));
    }
    return line;
}

int CallEngine::Impl::freeCallID()
{
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

bool CallEngine::Impl::isLimitReached() const
{
    return static_cast<int>(calls_.size()) >= configuration_.maximumCalls;
}

std::unique_ptr<Call> CallEngine::Impl::newCall(int callID, LineAddress const& line, bool incoming)
{
    auto call = std::make_unique<Call>(*this, callID, line, incoming, sources_.make());
    call->setMuted(muted_);
    return call;
}

Call& CallEngine::Impl::add(std::unique_ptr<Call> call)
{
    calls_.push_back(std::move(call));
    if (heard_) {
        calls_.back()->audio().addTap(heard_->add(calls_.back()->id()));
    }
    return *calls_.back();
}

void CallEngine::Impl::bury()
{
    over_.clear();
    oldPickups_.clear();
}

void CallEngine::Impl::callChanged(Call& call, CallSnapshot const& before)
{
    const CallSnapshot now = call.snapshot();
    if (!now.alerting()) {
        noReplyTimers_.erase(now.callID);
    }
    if (now.held != before.held) {
        std::erase(holdOrder_, now.callID);
        if (now.held) {
            holdOrder_.push_back(now.callID);
        }
    }
    if (now.ended()) {
        auto const place =
            std::find_if(calls_.begin(), calls_.end(), [&call](auto const& each) { return each.get() == &call; });
        if (place != calls_.end()) {
            over_.push_back(std::move(*place));
            calls_.erase(place);
            burial_.start(std::chrono::milliseconds(0), [this] { bury(); });
            // The allocator would keep what thousands of calls took, for small pieces that live between them.
            quiet_.start(kTransactionsOver, [] { (void)malloc_trim(0); });
        }
        std::erase(holdOrder_, now.callID);
        pickups_.erase(now.callID);
        if (heard_) {
            heard_->remove(now.callID);
        }
        remember(call, before);
    }
    publisher_->lineChanged(now.line.lineNumber);
    bool const isNew = before.state == sfiCallStateIdle;
    for (CallObserver* observer : std::vector(observers_)) {
        observer->callChanged(now, isNew ? nullptr : &before);
    }
}

void CallEngine::Impl::callEnded(Call& call)
{
    endConferenceOfOne();
    auto const peer = transferPeers_.find(call.id());
    if (peer == transferPeers_.end()) {
        return;
    }
    Call* other = find(peer->second);
    transferPeers_.erase(peer);
    if (other != nullptr) {
        other->endTransferring();
    }
}

bool CallEngine::Impl::callBackPossible(Call const& call) const
{
    CallSnapshot const& now = call.snapshot();
    bool const inState = now.state == sfiCallStateRemoteRinging || now.state == sfiCallStateBusy;
    return !now.incoming && inState && callBacks_->isPossible(call.target());
}

void CallEngine::Impl::infoReceived(Call& call, sip::Content const& content)
{
    if (!server_->receive(call.line().lineURI, content)) {
        log(LogLevel::kInfo, "call " + std::to_string(call.id()) + ": INFO with " + content.type + " is not for it");
    }
}

}  // namespace telephone
