#include "telephone/calls/MessageWaiting.h"

#include <algorithm>
#include <utility>

#include "CommunicationsServiceEventIfc.h"
#include "telephone/sip/DialogInfo.h"

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
    // A notice that says that messages wait, but counts none, has no counts.
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

MessageWaiting::MessageWaiting(CallHost& host, sip::UserAgent& agent, std::string voiceMail, Changed changed)
    : host_(host)
    , agent_(agent)
    , voiceMail_(std::move(voiceMail))
    , changed_(std::move(changed))
{}

MessageWaiting::~MessageWaiting() = default;

MessageWaiting::Mailbox& MessageWaiting::of(LineAccount const& line)
{
    Mailbox& mailbox = mailboxes_.try_emplace(line.lineNumber, host_.loop()).first->second;
    mailbox.line = line;
    return mailbox;
}

void MessageWaiting::subscribe(LineAccount const& line)
{
    Mailbox& mailbox = of(line);
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
    if (subscription) {
        mailbox.subscription = std::move(*subscription);
    } else {
        agent_.log(sip::LogLevel::kWarning,
                   "No message waiting for " + request.target + ": " + subscription.error().reason);
    }
}

void MessageWaiting::clear()
{
    mailboxes_.clear();
}

MessageWaiting::Mailbox* MessageWaiting::find(sip::Subscription const& subscription)
{
    auto const found = std::find_if(mailboxes_.begin(), mailboxes_.end(), [&subscription](auto const& each) {
        return each.second.subscription.get() == &subscription;
    });
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
    host_.log(sip::LogLevel::kInfo, "line " + mailbox->line.lineURI + ": message waiting is not told any more: " +
                                        std::to_string(status) + ' ' + reason);
    mailbox->subscription.reset();
    // A server that does not know the package will not learn it.
    if (status == 404 || status == 405 || status == 489 || status == 501) {
        return;
    }
    mailbox->retry.start(kRetry, [this, lineNumber = mailbox->line.lineNumber] { begin(mailboxes_.at(lineNumber)); });
}

void MessageWaiting::told(LineAccount const& line, std::string const& document)
{
    update(of(line), document);
}

void MessageWaiting::update(Mailbox& mailbox, std::string const& document)
{
    if (document.empty()) {
        return;  // a notice about the subscription itself
    }
    auto const summary = sip::MessageSummary::parse(document);
    if (!summary) {
        host_.log(sip::LogLevel::kWarning, "line " + mailbox.line.lineURI + ": a message-summary that is none");
        return;
    }
    const sfiMessageWaitingRecord record = recordOf(*summary, !voiceMail_.empty());
    if (mailbox.record && same(*mailbox.record, record)) {
        return;
    }
    mailbox.record = record;
    changed_(mailbox.line.lineNumber, record);
    host_.post([line = mailbox.line.lineURI, record, voiceMail = voiceMail_](CommunicationsServiceEventIfc& event) {
        event.messageWaiting(line, static_cast<sfiMWIServiceType>(record.type), record.newMessages, record.oldMessages,
                             record.newUrgentMessages, record.oldUrgentMessages,
                             static_cast<sfiMWIMessageReturnType>(record.returnType),
                             static_cast<sfiMWIAvailableInfo>(record.availableInfo),
                             static_cast<sfiMessagesWaiting>(record.messagesWaiting), voiceMail);
    });
}

std::optional<sfiMessageWaitingRecord> MessageWaiting::of(int lineNumber) const
{
    auto const found = mailboxes_.find(lineNumber);
    return found == mailboxes_.end() ? std::nullopt : found->second.record;
}

}  // namespace telephone
