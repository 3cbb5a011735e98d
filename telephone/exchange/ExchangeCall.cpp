#include "telephone/exchange/ExchangeCall.h"

#include <atomic>

#include "telephone/exchange/ExchangeAgent.h"

namespace telephone::exchange {

namespace {

std::string nextId()
{
    static std::atomic<unsigned> last{0};
    return "call-" + std::to_string(++last);
}

}  // namespace

ExchangeCall::ExchangeCall(sip::UserAgent& agent, ExchangeCallObserver& observer, std::string number,
                           NumberBehaviour const& behaviour, milliseconds longestRinging)
    : agent_(agent)
    , observer_(observer)
    , number_(std::move(number))
    , behaviour_(behaviour)
    , longestRinging_(longestRinging)
    , id_(nextId())
    , step_(agent.loop())
    , hangUpTimer_(agent.loop())
{}

ExchangeCall::~ExchangeCall()
{
    disconnect();
}

void ExchangeCall::adopt(std::unique_ptr<sip::Session> session)
{
    session_ = std::move(session);
    session_->setObserver(this);
    session_->audio().setEcho(true);
}

void ExchangeCall::take(std::unique_ptr<sip::Session> session)
{
    adopt(std::move(session));
    logRefusal(agent_, "number " + number_, session_->ring());
    observer_.callChanged(*this);
    if (behaviour_.answerAfter == milliseconds(0)) {
        answer();
    } else if (behaviour_.answerAfter != kNever) {
        step_.start(behaviour_.answerAfter, [this] { answer(); });
    }
}

void ExchangeCall::takeInsteadOf(std::unique_ptr<sip::Session> session, ExchangeCall& replaced)
{
    adopt(std::move(session));
    replaced_ = replaced.self_;
    answer();
}

void ExchangeCall::pickUp(std::unique_ptr<sip::Session> session, ExchangeCall& ringing)
{
    adopt(std::move(session));
    ringing.step_.cancel();
    ringing.behaviour_ = kAnswering;
    connect(ringing);
    ringing.answer();
    answer();
}

void ExchangeCall::takeFor(std::unique_ptr<sip::Session> session, ExchangeCall& outgoing)
{
    adopt(std::move(session));
    connect(outgoing);
    outgoing.waitsForPartner_ = true;
}

Outcome<> ExchangeCall::dial(Dialling dialling)
{
    displayName_ = std::move(dialling.displayName);
    transfer_ = std::move(dialling.requestedBy);
    sip::CallRequest request;
    request.account = accountOf(agent_, number_);
    request.account.displayName = displayName_;
    request.target = std::move(dialling.target);
    request.replaces = std::move(dialling.replaces);
    request.referredBy = std::move(dialling.referredBy);
    auto session = agent_.call(request, *this);
    if (!session) {
        notifyTransfer(503, "Service Unavailable");
        ended_ = true;
        return tl::unexpected(session.error());
    }
    session_ = std::move(*session);
    session_->audio().setEcho(true);
    step_.start(longestRinging_, [this] { giveUp(); });
    observer_.callChanged(*this);
    return {};
}

void ExchangeCall::answer()
{
    answered_ = true;
    logRefusal(agent_, "number " + number_, session_->answer());
}

void ExchangeCall::modify(sip::Direction direction)
{
    logRefusal(agent_, "number " + number_, session_->modify(direction));
}

// The steps of the number after the answer.
void ExchangeCall::proceed()
{
    if (behaviour_.hangUpAfter > milliseconds(0)) {
        hangUpTimer_.start(behaviour_.hangUpAfter, [this] { hangUp(); });
    }
    if (behaviour_.holdAfter > milliseconds(0)) {
        step_.start(behaviour_.holdAfter, [this] { modify(sip::Direction::kSendOnly); });
    }
}

// Nobody has answered. SIP itself sets no limit once the far end rings.
void ExchangeCall::giveUp()
{
    agent_.log(sip::LogLevel::kInfo, "call from " + number_ + " is not answered");
    notifyTransfer(408, "Request Timeout");
    hangUp();
}

void ExchangeCall::hangUp()
{
    if (ended_) {
        return;
    }
    session_->hangUp();
    end();
}

void ExchangeCall::end()
{
    if (ended_) {
        return;
    }
    ended_ = true;
    step_.cancel();
    hangUpTimer_.cancel();
    ExchangeCall* partner = partner_;
    disconnect();
    if (partner) {
        partner->hangUp();
    }
    if (answered_ && behaviour_.callBack && !session_->isOutgoing()) {
        observer_.callBackRequested(number_, session_->remoteParty(), session_->remoteContact());
    }
    observer_.callChanged(*this);
    observer_.callEnded(*this);
}

void ExchangeCall::connect(ExchangeCall& other)
{
    partner_ = &other;
    other.partner_ = this;
    for (ExchangeCall* call : {this, &other}) {
        call->session_->audio().setEcho(false);
        call->session_->audio().setSink(&call->heard_);
        call->session_->audio().setSource(&call->partner_->heard_);
    }
}

void ExchangeCall::disconnect()
{
    if (!partner_) {
        return;
    }
    for (ExchangeCall* call : {this, partner_}) {
        call->session_->audio().setSink(nullptr);
        call->session_->audio().setSource(nullptr);
    }
    partner_->partner_ = nullptr;
    partner_ = nullptr;
}

void ExchangeCall::notifyTransfer(int status, std::string const& reason)
{
    if (!transfer_) {
        return;
    }
    transfer_->notify(status, reason);
    if (status >= 200) {
        transfer_.reset();
    }
}

bool ExchangeCall::isRinging() const
{
    return !ended_ && !partner_ && session_ && !session_->isOutgoing() && !answered_;
}

bool ExchangeCall::matches(sip::Replaces const& wanted) const
{
    return !ended_ && session_ && session_->dialogId().matches(wanted);
}

sip::DialogEntry ExchangeCall::dialogEntry() const
{
    using sip::DialogState;
    sip::DialogEntry entry;
    entry.id = id_;
    entry.dialog = session_->dialogId();
    entry.recipient = !session_->isOutgoing();
    entry.state = DialogState::kEarly;
    if (ended_) {
        entry.state = DialogState::kTerminated;
    } else if (session_->state() == sip::SessionState::kCalling) {
        entry.state = DialogState::kTrying;
    } else if (session_->state() == sip::SessionState::kEstablished ||
               session_->state() == sip::SessionState::kAnswering) {
        entry.state = DialogState::kConfirmed;
    }
    entry.local.identity = accountOf(agent_, number_).addressOfRecord();
    entry.local.target = session_->localContact();
    sip::NameAddr const remote = session_->remoteParty();
    entry.remote = {remote.uri.formatAddressOfRecord(), remote.displayName, session_->remoteContact()};
    return entry;
}

void ExchangeCall::onProgress(sip::Session&, sip::Response const& response, bool)
{
    notifyTransfer(response.status, response.reason);
    observer_.callChanged(*this);
}

void ExchangeCall::onEstablished(sip::Session&)
{
    answered_ = true;
    step_.cancel();
    notifyTransfer(200, "OK");
    observer_.callChanged(*this);
    if (auto const replaced = replaced_.lock()) {
        (*replaced)->hangUp();
    }
    if (waitsForPartner_ && partner_) {
        waitsForPartner_ = false;
        partner_->answer();
    }
    proceed();
}

void ExchangeCall::onModified(sip::Session&, bool accepted, int, std::string const&)
{
    bool const holding = session_->localDirection() == sip::Direction::kSendOnly;
    if (accepted && holding && behaviour_.retrieveAfter > milliseconds(0)) {
        step_.start(behaviour_.retrieveAfter, [this] { modify(sip::Direction::kSendReceive); });
    }
}

void ExchangeCall::onInfo(sip::Session&, sip::Content const& content)
{
    std::string_view const csta = sip::kCstaType;
    if (sip::equalsIgnoringCase(content.type.substr(0, csta.size()), csta)) {
        logRefusal(agent_, "number " + number_, session_->sendInfo(content));
    }
}

void ExchangeCall::onTransferRequested(sip::Session&, std::unique_ptr<sip::Transfer> transfer)
{
    observer_.transferRequested(*this, std::move(transfer));
}

void ExchangeCall::onClosed(sip::Session&, sip::Closing const& closing)
{
    if (!answered_) {
        notifyTransfer(closing.status >= 300 ? closing.status : 487, closing.text);
    }
    end();
}

}  // namespace telephone::exchange
