// What the exchange tells to those who watch its numbers.
#include <algorithm>

#include "telephone/exchange/ExchangeImpl.h"

namespace telephone::exchange {

namespace {

constexpr int kBusyHere = 486;

bool isBusy(NumberBehaviour const* behaviour)
{
    return behaviour && behaviour->refuseWith == kBusyHere;
}

}  // namespace

void Exchange::Impl::onSubscribe(std::unique_ptr<sip::Notifier> notifier)
{
    if (closed_) {
        return;
    }
    const std::string number = sip::userOf(notifier->requestUri());
    if (notifier->event() == sip::kMessageSummaryEvent) {
        messageWatchers_.add(number, std::move(notifier), messageDocument(number));
    } else if (notifier->event() == sip::kDialogEvent) {
        dialogWatchers_.add(number, std::move(notifier), dialogDocument(number));
        updateWatch(number);
    } else {
        notifier->reject(489, "Bad Event", {{"Allow-Events", "dialog, message-summary, refer"}});
    }
}

void Exchange::Impl::changed(std::string const& number)
{
    if (closed_ || dialogWatchers_.count(number) == 0) {
        return;
    }
    dialogWatchers_.notify(number, dialogDocument(number));
}

// The whole state each time, the calls that just ended with it.
std::string Exchange::Impl::dialogDocument(std::string const& number)
{
    sip::DialogInfo info;
    info.version = dialogVersions_[number]++;
    info.entity = accountOf(number).addressOfRecord();
    for (auto const& call : calls_) {
        if (call->number() == number && call->hasSession()) {
            info.dialogs.push_back(call->dialogEntry());
        }
    }
    if (isBusy(behaviourOf(number))) {
        sip::DialogEntry busy;
        busy.id = "busy";
        busy.state = sip::DialogState::kConfirmed;
        info.dialogs.push_back(busy);
    }
    if (auto const watch = watches_.find(number); watch != watches_.end()) {
        info.dialogs.insert(info.dialogs.end(), watch->second->dialogs().begin(), watch->second->dialogs().end());
    }
    return info.format();
}

std::string Exchange::Impl::messageDocument(std::string const& number) const
{
    sip::MessageSummary summary;
    auto const found = messages_.find(number);
    if (found != messages_.end()) {
        summary.voice = found->second;
    }
    summary.waiting = summary.voice.fresh + summary.voice.urgentFresh > 0;
    summary.account = accountOf(number).addressOfRecord();
    return summary.format();
}

void Exchange::Impl::setMessages(std::string const& number, sip::MessageCounts const& counts, bool unsolicited)
{
    messages_[number] = counts;
    const std::string document = messageDocument(number);
    messageWatchers_.notify(number, document);
    if (!unsolicited) {
        return;
    }
    const sip::Headers headers{{"Event", sip::kMessageSummaryEvent}, {"Subscription-State", "active"}};
    for (auto const& contact : registrar_.contactsOf(number)) {
        agent_->request(accountOf(number), "NOTIFY", contact, headers, {sip::kMessageSummaryType, document}, {});
    }
}

std::vector<std::string> Exchange::Impl::registeredNumbers()
{
    auto numbers = registrar_.numbers();
    std::erase_if(numbers, [this](std::string const& number) { return registrar_.contactsOf(number).empty(); });
    return numbers;
}

bool Exchange::Impl::isWatched(std::string const& number) const
{
    return dialogWatchers_.count(number) > 0 ||
           std::any_of(pickups_.begin(), pickups_.end(), [&](auto const& pickup) { return pickup->isFor(number); });
}

void Exchange::Impl::registrationChanged(std::string const& number)
{
    bool const registered = !registrar_.contactsOf(number).empty();
    say(sip::LogLevel::kInfo, number + (registered ? " is registered" : " is not registered any more"));
    if (!registered) {
        watches_.erase(number);
    }
    updateWatch(number);
    changed(number);
}

// Asks a registered telephone for its calls as long as somebody wants to know them.
void Exchange::Impl::updateWatch(std::string const& number)
{
    if (closed_) {
        return;
    }
    auto const contacts = registrar_.contactsOf(number);
    if (!isWatched(number) || contacts.empty() || behaviourOf(number)) {
        watches_.erase(number);
        return;
    }
    if (watches_.count(number)) {
        return;
    }
    auto const told = [this](std::string const& about) {
        changed(about);
        checkPickups(about);
    };
    auto const ended = [this](std::string const& about) { dropWatch(about); };
    auto watch = std::make_unique<DialogWatch>(*this, number, contacts.front(), told, ended);
    if (watch->isRunning()) {
        watches_.emplace(number, std::move(watch));
    }
}

void Exchange::Impl::dropWatch(std::string const& number)
{
    say(sip::LogLevel::kInfo, "the telephone of " + number + " does not tell its calls any more");
    watches_.erase(number);
    changed(number);
}

}  // namespace telephone::exchange
