// Beside the calls: call-backs, waiting messages, those who watch the lines, and the call server.
#include <algorithm>
#include <utility>

#include "telephone/calls/CallEngineImpl.h"

namespace telephone {

namespace {

// Calls that can be called back when they are over: the latest ones.
constexpr std::size_t kRemembered = 32;

}  // namespace

void CallEngine::Impl::remember(Call const& call, CallSnapshot const& before)
{
    CallSnapshot const& now = call.snapshot();
    if (now.incoming || call.target().empty()) {
        return;
    }
    endedCalls_[now.callID] = {now.line.lineNumber, call.target(), now.state == sfiCallStateBusy,
                               before.state == sfiCallStateRemoteRinging};
    std::erase(endedOrder_, now.callID);
    endedOrder_.push_back(now.callID);
    if (endedOrder_.size() <= kRemembered) {
        return;
    }
    endedCalls_.erase(endedOrder_.front());
    endedOrder_.pop_front();
}

sfiResult CallEngine::Impl::callBack(int callID, sfiCallCompletionType type)
{
    const std::string what = "call-back for call " + std::to_string(callID) + ": ";
    bool const onBusy = type == sfiCallCompletionOnBusy;
    EndedCall wanted;
    if (Call const* call = find(callID)) {
        wanted = {call->line().lineNumber, call->target(), false, call->state() == sfiCallStateRemoteRinging};
    } else if (auto const ended = endedCalls_.find(callID); ended != endedCalls_.end()) {
        wanted = ended->second;
    } else {
        refused(what + "there is no such call");
        return sfiFailureCallBackNoCallInfo;
    }
    if (onBusy ? !wanted.busy : !wanted.rang || wanted.busy) {
        refused(what + (onBusy ? "its party is not busy" : "its party does not ring"));
        return sfiFailureCallBackInvalidState;
    }
    auto const line = accountOf(wanted.lineNumber);
    if (!active_ || !line) {
        return refused(what + "the telephone is not active");
    }
    return callBacks_->set({callID, *line, wanted.target, type});
}

sfiResult CallEngine::Impl::cancelCallBacks(int callID, std::string const& target, sfiCancelCallBackType type,
                                            bool displayOutcome)
{
    std::string uri;
    if (!target.empty()) {
        auto const line = lineNamed({});
        uri = line ? targetOf(target, line->account).value_or(target) : target;
    }
    // A target names the call-back whatever call asked for it.
    const sfiResult result = callBacks_->cancel(uri.empty() ? std::max(callID, 0) : 0, uri, type, displayOutcome);
    if (result != sfiSuccess) {
        refused("cancel call-back: there is none for call " + std::to_string(callID) + " \"" + target + '"');
    }
    return result;
}

// By its identifier or the user of its address; the first line for an empty name.
std::optional<LineAccount> CallEngine::Impl::lineNamed(std::string const& name) const
{
    const std::string user = sip::userOf(name);
    for (LineAccount& line : lines_.accounts()) {
        if (name.empty() || line.lineURI == name || line.account.user == name ||
            (!user.empty() && line.account.user == user)) {
            return std::move(line);
        }
    }
    return std::nullopt;
}

std::optional<sfiMessageWaitingRecord> CallEngine::Impl::messageWaiting(std::string const& phoneNumber) const
{
    auto const line = lineNamed(phoneNumber);
    return line ? messages_->of(line->lineNumber) : std::nullopt;
}

sfiResult CallEngine::Impl::sendCsta(std::string const& lineURI, std::string const& body)
{
    auto const line = lineNamed(lineURI);
    if (!line) {
        return refused("CSTA: no line " + lineURI);
    }
    if (!active_) {
        return refused("CSTA: the telephone is not active");
    }
    return body.empty() ? refused("CSTA: there is no body to send") : server_->send(*line, body);
}

sfiResult CallEngine::Impl::serverFeatures(std::string const& lineURI, bool initialize)
{
    auto const line = lineNamed(lineURI);
    if (!line) {
        return refused("server features: no line " + lineURI);
    }
    return active_ ? server_->serverFeatures(*line, initialize)
                   : refused("server features: the telephone is not active");
}

void CallEngine::Impl::tellAgentState(std::string const& lineURI, std::string const& state)
{
    auto const line = lineNamed(lineURI);
    if (line && active_) {
        server_->tellAgentState(*line, state);
    }
}

void CallEngine::Impl::registrationChanged(LineAccount const& line, bool registered)
{
    if (registered && configuration_.messageWaiting) {
        messages_->subscribe(line);
    }
    for (CallObserver* observer : std::vector(observers_)) {
        observer->registrationChanged(line.lineNumber, registered);
    }
}

void CallEngine::Impl::onSubscribe(std::unique_ptr<sip::Notifier> notifier)
{
    auto const number = lines_.lineOfUser(sip::userOf(notifier->requestUri()));
    auto const line = number ? accountOf(*number) : std::nullopt;
    if (!line || !active_) {
        notifier->reject(line ? 480 : 404, line ? "Temporarily Unavailable" : "Not Found");
    } else if (notifier->event() != sip::kDialogEvent) {
        notifier->reject(489, "Bad Event", {{"Allow-Events", "dialog, refer"}});
    } else {
        publisher_->add(*line, std::move(notifier));
    }
}

void CallEngine::Impl::onUnsolicitedNotify(sip::NameAddr const&, sip::NameAddr const& to,
                                           sip::Notification const& notification)
{
    auto const number = lines_.lineOfUser(to.uri.user);
    auto const line = number ? accountOf(*number) : std::nullopt;
    if (line && active_ && notification.event == sip::kMessageSummaryEvent) {
        messages_->told(*line, notification.content.body);
    } else {
        log(sip::LogLevel::kInfo, "a notice of " + notification.event + " for " + to.uri.user + " is not for us");
    }
}

void CallEngine::Impl::onRequest(std::unique_ptr<sip::IncomingRequest>& request)
{
    auto const number = lines_.lineOfUser(sip::userOf(request->requestUri()));
    auto const line = number ? accountOf(*number) : std::nullopt;
    if (request->method() != "INFO") {
        return;
    }
    if (!line) {
        request->reply(404, "Not Found");
    } else if (server_->receive(line->lineURI, request->content())) {
        request->reply(200, "OK");
    } else {
        request->reply(415, "Unsupported Media Type", {{"Accept", "application/csta+xml"}});
    }
    request.reset();
}

}  // namespace telephone
