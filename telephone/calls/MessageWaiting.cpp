#include "telephone/calls/MessageWaiting.h"

#include <algorithm>
#include <mutex>

#include "CommunicationsServiceEventIfc.h"
#include "telephone/calls/EngineConfiguration.h"
#include "telephone/calls/LogComponent.h"
#include "telephone/framework/Log.h"
#include "telephone/framework/Refusals.h"
#include "telephone/sip/DialogInfo.h"
#include "telephone/sip/EventLoop.h"
#include "telephone/trace/TimerStep.h"

namespace telephone {

namespace {

sfiMessageWaitingRecord recordOf(sip::MessageSummary const& summary, bool hasMailbox)
{
    sfiMessageWaitingRecord record{};
    record.type = sfiMWIServiceVoice;
    record.newMessages = summary.voice.fresh;
    record.oldMessages = summary.voice.old;
    record.newUrgentMessages = summary.voice.urgentFresh;
    record.oldUrgentMessages = summary.voice.urgentOld;
    record.returnType = hasMailbox ? sfiMWIReturnVoiceMail : sfiMWIReturnNone;
    // A summary that announces messages without counting any has no counts.
    bool const counted = !(summary.voice == sip::MessageCounts{}) || !summary.waiting;
    record.availableInfo = counted ? sfiMWIAvailableCounts : sfiMWIAvailableFlag;
    record.messagesWaiting = summary.waiting ? sfiMessagesWaitingYes : sfiMessagesWaitingNo;
    return record;
}

bool same(sfiMessageWaitingRecord const& left, sfiMessageWaitingRecord const& right)
{
    return left.newMessages == right.newMessages && left.oldMessages == right.oldMessages &&
           left.newUrgentMessages == right.newUrgentMessages && left.oldUrgentMessages == right.oldUrgentMessages &&
           left.availableInfo == right.availableInfo && left.messagesWaiting == right.messagesWaiting;
}

}  // namespace

MessageWaiting::MessageWaiting(sip::UserAgent& agent, EngineConfiguration const& configuration,
                               LineDirectory const& lines, EventPoster const& post, CallObservers const& observers)
    : agent_(agent)
    , configuration_(configuration)
    , lines_(lines)
    , post_(post)
    , observers_(observers)
{}

std::optional<sfiMessageWaitingRecord> MessageWaiting::of(std::string const& phoneNumber) const
{
    std::lock_guard const guard(agent_.loop());
    auto const line = lines_.accountNamed(phoneNumber);
    auto const found = line ? mailboxes_.find(line->lineNumber) : mailboxes_.end();
    return found == mailboxes_.end() ? std::nullopt : found->second.record;
}

MessageWaiting::Mailbox& MessageWaiting::mailboxOf(LineAccount const& line)
{
    Mailbox& mailbox = mailboxes_.try_emplace(line.lineNumber, agent_.loop()).first->second;
    mailbox.line = line;
    return mailbox;
}

void MessageWaiting::subscribe(LineAccount const& line)
{
    if (!configuration_.messageWaiting) {
        return;
    }
    Mailbox& mailbox = mailboxOf(line);
    if (!mailbox.subscription) {
        begin(mailbox);
    }
}

void MessageWaiting::begin(Mailbox& mailbox)
{
    sip::SubscriptionRequest request;
    request.target = mailbox.line.account.addressOfRecord();
    request.event = sip::kMessageSummaryEvent;
    request.accept = sip::kMessageSummaryType;
    mailbox.retry.cancel();
    auto subscription = agent_.subscribe(mailbox.line.account, request, *this);
    if (!reportIfRefused(kComponent, subscription)) {
        mailbox.subscription = std::move(*subscription);
    }
}

MessageWaiting::Mailbox* MessageWaiting::find(sip::Subscription const& subscription)
{
    auto const found = std::ranges::find_if(
        mailboxes_, [&subscription](auto const& each) { return each.second.subscription.get() == &subscription; });
    return found == mailboxes_.end() ? nullptr : &found->second;
}

void MessageWaiting::onNotify(sip::Subscription& subscription, sip::Notification const& notification)
{
    if (Mailbox* mailbox = find(subscription)) {
        update(*mailbox, notification.content.body);
    }
}

void MessageWaiting::onTerminated(sip::Subscription& subscription, int status, std::string const& reason)
{
    Mailbox* mailbox = find(subscription);
    if (mailbox == nullptr) {
        return;
    }
    log(kLogInfo, kComponent, "line {}: the subscription to waiting messages has ended: {} {}", mailbox->line.lineURI,
        status, reason);
    mailbox->subscription.reset();
    // The server does not support the package; asking again would not help.
    if (status == 404 || status == 405 || status == 489 || status == 501) {
        return;
    }
    mailbox->retry.start(kRetry, [this, lineNumber = mailbox->line.lineNumber] {
        timerRanOut(PhoneTimer::kMailboxRetry);
        begin(mailboxes_.at(lineNumber));
    });
}

void MessageWaiting::received(LineAccount const& line, std::string const& document)
{
    update(mailboxOf(line), document);
}

void MessageWaiting::update(Mailbox& mailbox, std::string const& document)
{
    if (document.empty()) {
        return;  // a NOTIFY about the subscription itself
    }
    auto const summary = sip::MessageSummary::parse(document);
    if (!summary) {
        log(kLogWarning, kComponent, "line {}: a malformed message-summary is ignored", mailbox.line.lineURI);
        return;
    }
    sfiMessageWaitingRecord const record = recordOf(*summary, !configuration_.voiceMail.empty());
    if (mailbox.record && same(*mailbox.record, record)) {
        return;
    }
    mailbox.record = record;
    observers_.tell([number = mailbox.line.lineNumber, &record](CallObserver& observer) {
        observer.messageWaitingChanged(number, record);
    });
    post_([line = mailbox.line.lineURI, record,
           voiceMail = configuration_.voiceMail](CommunicationsServiceEventIfc& event) {
        event.messageWaiting(line, static_cast<sfiMWIServiceType>(record.type), record.newMessages, record.oldMessages,
                             record.newUrgentMessages, record.oldUrgentMessages,
                             static_cast<sfiMWIMessageReturnType>(record.returnType),
                             static_cast<sfiMWIAvailableInfo>(record.availableInfo),
                             static_cast<sfiMessagesWaiting>(record.messagesWaiting), voiceMail);
    });
}

}  // namespace telephone
