#include "telephone/exchange/ExchangeCall.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <string_view>

#include "telephone/exchange/ExchangeAgent.h"
#include "telephone/exchange/ReasonPhrases.h"

namespace telephone::exchange {

using std::chrono::milliseconds;

namespace {

// Of a digit and the pause behind it.
constexpr milliseconds kDigitTime{100};
constexpr milliseconds kDigitBeat{250};

// RFC 4411 section 5.1.
constexpr char const* kPreemption = "preemption;cause=1;text=\"UA Preemption\"";

// No datagram of these is a SIP message: noise, a response without its headers, and one whose length is wrong.
constexpr auto kGarbage = std::to_array<std::string_view>({
    std::string_view("\x00\xff\x01garbage\r\n\r\n", 14),
    "SIP/2.0 200\r\n\r\n",
    "SIP/2.0 999 Nonsense\r\nVia: SIP/2.0/UDP\r\nCSeq: x\r\nContent-Length: -1\r\n\r\n<",
});

// Without the steps that needed the call that has ended.
Steps afterTheCall(Steps steps)
{
    auto const last =
        std::ranges::find_if(steps, [](Step const& step) { return rowOf(step.kind).then == CallPhase::kNoCall; });
    steps.erase(steps.begin(), last == steps.end() ? last : last + 1);
    return steps;
}

std::string nextId()
{
    static std::atomic<unsigned> last{0};
    return "call-" + std::to_string(++last);
}

}  // namespace

ExchangeCall::ExchangeCall(sip::UserAgent& agent, ExchangeCallObserver& observer, ExchangeNumber number,
                           milliseconds longestRinging, std::string lastParty)
    : agent_(agent)
    , observer_(observer)
    , number_(std::move(number))
    , longestRinging_(longestRinging)
    , lastParty_(std::move(lastParty))
    , id_(nextId())
    , player_(agent.loop(), [this](Step const& step) { return perform(step); })
    , noReply_(agent.loop())
    , soundEnd_(agent.loop())
{}

ExchangeCall::~ExchangeCall()
{
    stopSound();
    disconnect();
}

void ExchangeCall::adopt(std::unique_ptr<sip::Session> session)
{
    session_ = std::move(session);
    session_->setObserver(this);
    session_->audio().setEcho(true);
}

// --- beginnings

void ExchangeCall::take(std::unique_ptr<sip::Session> session)
{
    adopt(std::move(session));
    NumberForwarding const& forwarding = number_.forwarding;
    if (!forwarding.onNoReply.empty()) {
        noReply_.start(forwarding.noReplyAfter, [this] { redirect(number_.forwarding.onNoReply, "no-answer"); });
    }
    player_.play(number_.steps);
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
    (void)ringing.player_.stop();
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

void ExchangeCall::join(std::unique_ptr<sip::Session> session, ExchangeCall& established)
{
    adopt(std::move(session));
    joins_ = true;
    appearance_ = established.appearance_;
    connect(established);
    answer();
}

Outcome<> ExchangeCall::dial(Dialling dialling)
{
    if (!dialling.displayName.empty()) {
        number_.name = std::move(dialling.displayName);
    }
    transfer_ = std::move(dialling.requestedBy);
    sip::CallRequest request;
    request.account = accountOf(agent_, number());
    request.account.displayName = number_.name;
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
    noReply_.start(longestRinging_, [this] { giveUp(); });
    announce();
    return {};
}

Outcome<> ExchangeCall::play(Steps steps)
{
    stopSound();
    // The caller may know of the answer before its ACK has arrived here.
    bool const isAnswering = session_ && session_->state() == sip::SessionState::kAnswering;
    if (isAnswering) {
        player_.playAfterwards(std::move(steps));
    } else {
        player_.play(std::move(steps));
    }
    return refusal_ ? Outcome<>(tl::unexpected(*refusal_)) : Outcome<>();
}

// --- steps

ExchangeCall::Pause ExchangeCall::perform(Step const& step)
{
    switch (step.kind) {
    case StepKind::kRing:
    case StepKind::kEarlyMedia:
    case StepKind::kReliable:
    case StepKind::kAnswer:
    case StepKind::kRedirect:
    case StepKind::kBusy:
    case StepKind::kRefuse:
        return performUnanswered(step);
    case StepKind::kSay:
        return say(step);
    case StepKind::kDigits:
        report(session_->sendDigits(step.text, kDigitTime));
        return kDigitBeat * static_cast<int>(step.text.size());
    case StepKind::kHold:
        return pendingIf(session_->modify(sip::Direction::kSendOnly));
    case StepKind::kRetrieve:
        return pendingIf(session_->modify(sip::Direction::kSendReceive));
    case StepKind::kRefresh:
        report(session_->refresh());
        break;
    case StepKind::kTransfer:
        return pendingIf(session_->transfer(accountOf(agent_, step.text).addressOfRecord()));
    case StepKind::kHangUp:
        hangUp(player_.stop());
        break;
    case StepKind::kPreempt:
        hangUp(player_.stop(), kPreemption);
        break;
    case StepKind::kCall:
        return call(step);
    case StepKind::kSilent:
        fallSilent();
        break;
    case StepKind::kGarbage:
        sendGarbage();
        break;
    case StepKind::kSeize:
        seize();
        break;
    case StepKind::kRelease:
        end(player_.stop());
        break;
    case StepKind::kPrivate:
    case StepKind::kPublic:
        setPrivate(step.kind == StepKind::kPrivate);
        break;
    case StepKind::kWait:
        break;
    }
    return step.time;
}

ExchangeCall::Pause ExchangeCall::performUnanswered(Step const& step)
{
    if (step.kind == StepKind::kAnswer) {
        answer();
        return std::nullopt;
    }
    if (step.kind == StepKind::kReliable) {
        session_->makeReliable();
    } else if (step.kind == StepKind::kRing) {
        report(session_->ring(identity()));
        announce();
    } else if (step.kind == StepKind::kEarlyMedia) {
        early_ = true;
        report(session_->progress(identity()));
        announce();
    } else if (step.kind == StepKind::kRedirect) {
        redirect(step.text, {});
    } else if (step.kind == StepKind::kBusy && !number_.forwarding.onBusy.empty()) {
        redirect(number_.forwarding.onBusy, "user-busy");
    } else {
        refuseCall(step.kind == StepKind::kBusy ? 486 : step.status);
    }
    return step.time;
}

ExchangeCall::Pause ExchangeCall::say(Step const& step)
{
    stopSound();
    sound_ = std::make_unique<WavSource>(step.sound);
    session_->audio().setEcho(false);
    session_->audio().setSource(sound_.get());
    auto const length = milliseconds(step.sound->size() * 1000 / sip::kSampleRate);
    soundEnd_.start(length, [this] {
        stopSound();
        player_.resume();
    });
    return std::nullopt;
}

void ExchangeCall::stopSound()
{
    soundEnd_.cancel();
    if (sound_) {
        session_->audio().setSource(nullptr);
        session_->audio().setEcho(true);
        sound_.reset();
    }
}

bool ExchangeCall::takeAppearance()
{
    auto const taken = observer_.takeAppearance(*this);
    if (!taken) {
        abandon(taken.error());
        return false;
    }
    appearance_ = *taken;
    return true;
}

void ExchangeCall::abandon(Refusal refusal)
{
    report(tl::unexpected(refusal));
    refusal_ = std::move(refusal);
    (void)player_.stop();
    ended_ = true;
    if (announced_) {
        observer_.callChanged(*this);
    }
    observer_.callEnded(*this);
}

void ExchangeCall::seize()
{
    seized_ = takeAppearance();
    if (seized_) {
        announce();
    }
}

void ExchangeCall::setPrivate(bool isPrivate)
{
    private_ = isPrivate;
    announce();
}

ExchangeCall::Pause ExchangeCall::call(Step const& step)
{
    if (!takeAppearance()) {
        return step.time;
    }
    std::string const target = step.text == kCaller ? lastParty_ : observer_.uriOf(step.text);
    auto const dialled = target.empty() ? Outcome<>(refuse(RefusalKind::kWrongState, "nobody has called yet"))
                                        : dial({.target = target});
    if (!dialled) {
        abandon(dialled.error());
        return step.time;
    }
    if (step.limit > milliseconds(0)) {
        noReply_.start(step.limit, [this] { giveUp(); });
    }
    return std::nullopt;
}

void ExchangeCall::fallSilent()
{
    silent_ = true;
    noReply_.cancel();
    report(session_->fallSilent());
}

void ExchangeCall::sendGarbage()
{
    for (auto const datagram : kGarbage) {
        report(agent_.sendDatagram(session_->remoteContact(), datagram));
    }
}

ExchangeCall::Pause ExchangeCall::pendingIf(Outcome<> const& begun)
{
    report(begun);
    return begun ? std::nullopt : Pause(0);
}

void ExchangeCall::report(Outcome<> const& result) const
{
    logRefusal(agent_, "number " + number(), result);
}

// RFC 3325: the name is that of the number, not what the caller dialled.
sip::Headers ExchangeCall::identity() const
{
    if (number_.name.empty()) {
        return {};
    }
    sip::NameAddr party;
    party.displayName = number_.name;
    party.uri = sip::Uri::parse(accountOf(agent_, number()).addressOfRecord()).value_or(sip::Uri{});
    return {{"P-Asserted-Identity", party.format()}};
}

void ExchangeCall::announce()
{
    announced_ = true;
    observer_.callChanged(*this);
}

void ExchangeCall::answer()
{
    answered_ = true;
    noReply_.cancel();
    report(session_->answer(identity()));
}

void ExchangeCall::refuseCall(int status)
{
    session_->reject(status, reasonPhrase(status));
    end(player_.stop());
}

void ExchangeCall::redirect(std::string const& number, std::string const& diversionReason)
{
    report(session_->redirect(accountOf(agent_, number).addressOfRecord(), diversionReason));
    end(player_.stop());
}

// --- the end

// Nobody has answered. SIP itself sets no limit once the far end rings.
void ExchangeCall::giveUp()
{
    agent_.log(sip::LogLevel::kInfo, "call from " + number() + " is not answered");
    notifyTransfer(408, "Request Timeout");
    hangUp(afterTheCall(player_.stop()));
}

void ExchangeCall::hangUp(Steps left, std::string const& reason)
{
    if (ended_) {
        return;
    }
    session_->hangUp(reason);
    end(std::move(left));
}

void ExchangeCall::end(Steps left)
{
    if (ended_) {
        return;
    }
    stopSound();
    ended_ = true;
    noReply_.cancel();
    ExchangeCall* partner = partner_;
    disconnect();
    if (partner && joins_) {
        partner->session_->audio().setEcho(true);
    } else if (partner) {
        partner->hangUp({});
    }
    if (!left.empty()) {
        observer_.stepsLeft(*this, std::move(left), session_ ? observer_.contactOf(*session_) : std::string());
    }
    if (announced_) {
        observer_.callChanged(*this);
    }
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

CallPhase ExchangeCall::phase() const
{
    if (ended_ || !session_) {
        return seized_ && !ended_ ? CallPhase::kSeized : CallPhase::kNoCall;
    }
    if (silent_) {
        return CallPhase::kSilent;
    }
    if (answered_) {
        return session_->localDirection() == sip::Direction::kSendOnly ? CallPhase::kHeld : CallPhase::kConnected;
    }
    if (session_->isOutgoing()) {
        return CallPhase::kCalling;
    }
    return early_ ? CallPhase::kEarly : CallPhase::kOffered;
}

bool ExchangeCall::matches(sip::Replaces const& wanted) const
{
    return !ended_ && session_ && session_->dialogId().matches(wanted);
}

sip::DialogState ExchangeCall::dialogState() const
{
    if (ended_) {
        return sip::DialogState::kTerminated;
    }
    if (!session_ || session_->state() == sip::SessionState::kCalling) {
        return sip::DialogState::kTrying;
    }
    bool const isAnswered =
        session_->state() == sip::SessionState::kEstablished || session_->state() == sip::SessionState::kAnswering;
    return isAnswered ? sip::DialogState::kConfirmed : sip::DialogState::kEarly;
}

sip::DialogEntry ExchangeCall::dialogEntry() const
{
    sip::DialogEntry entry;
    entry.id = id_;
    entry.state = dialogState();
    entry.appearance = appearance_;
    entry.exclusive = private_;
    entry.local.identity = accountOf(agent_, number()).addressOfRecord();
    entry.local.displayName = number_.name;
    if (!session_) {
        return entry;
    }
    entry.dialog = session_->dialogId();
    entry.recipient = !session_->isOutgoing();
    entry.local.target = session_->localContact();
    entry.local.rendering = session_->localDirection() != sip::Direction::kSendOnly;
    sip::NameAddr const remote = session_->remoteParty();
    entry.remote = {remote.uri.formatAddressOfRecord(), remote.displayName, session_->remoteContact()};
    return entry;
}

void ExchangeCall::onProgress(sip::Session&, sip::Response const& response, bool)
{
    notifyTransfer(response.status, response.reason);
    announce();
}

void ExchangeCall::onEstablished(sip::Session&)
{
    answered_ = true;
    noReply_.cancel();
    notifyTransfer(200, "OK");
    announce();
    if (auto const replaced = replaced_.lock()) {
        (*replaced)->hangUp(afterTheCall((*replaced)->player_.stop()));
    }
    if (waitsForPartner_ && partner_) {
        waitsForPartner_ = false;
        partner_->answer();
    }
    player_.resume();
}

void ExchangeCall::onModified(sip::Session&, bool accepted, int status, std::string const& reason)
{
    if (!accepted) {
        report(refuse(RefusalKind::kUnavailable,
                      "the far end refuses the change: " + std::to_string(status) + " " + reason));
    }
    announce();
    player_.resume();
}

void ExchangeCall::onInfo(sip::Session&, sip::Content const& content)
{
    std::string_view const csta = sip::kCstaType;
    if (sip::equalsIgnoringCase(content.type.substr(0, csta.size()), csta)) {
        report(session_->sendInfo(content));
    }
}

void ExchangeCall::onTransferRequested(sip::Session&, std::unique_ptr<sip::Transfer> transfer)
{
    observer_.transferRequested(*this, std::move(transfer));
}

void ExchangeCall::onTransferProgress(sip::Session&, int status, std::string const& reason, bool ended)
{
    if (ended) {
        agent_.log(sip::LogLevel::kInfo,
                   "number " + number() + ": its transfer ended with " + std::to_string(status) + " " + reason);
        player_.resume();
    }
}

void ExchangeCall::onClosed(sip::Session&, sip::Closing const& closing)
{
    if (!answered_) {
        notifyTransfer(closing.status >= 300 ? closing.status : 487, closing.text);
    }
    end(afterTheCall(player_.stop()));
}

}  // namespace telephone::exchange
