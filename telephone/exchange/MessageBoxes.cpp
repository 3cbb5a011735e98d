#include "telephone/exchange/MessageBoxes.h"

#include "telephone/exchange/ExchangeAgent.h"

namespace telephone::exchange {

MessageBoxes::MessageBoxes(sip::UserAgent& agent, Registrar const& registrar)
    : agent_(agent)
    , registrar_(registrar)
    , watchers_(
          sip::kMessageSummaryType, [this](std::string const& number) { return documentOf(number); },
          [](std::string const&) {})
{}

std::string MessageBoxes::documentOf(std::string const& number) const
{
    sip::MessageSummary summary;
    if (auto const found = counts_.find(number); found != counts_.end()) {
        summary.voice = found->second;
    }
    summary.waiting = summary.voice.fresh + summary.voice.urgentFresh > 0;
    summary.account = accountOf(agent_, number).addressOfRecord();
    return summary.format();
}

void MessageBoxes::subscribe(std::string const& number, std::unique_ptr<sip::Notifier> notifier)
{
    watchers_.add(number, std::move(notifier));
}

void MessageBoxes::set(std::string const& number, sip::MessageCounts const& counts, bool unsolicited)
{
    counts_[number] = counts;
    watchers_.notify(number);
    if (!unsolicited) {
        return;
    }
    std::string const document = documentOf(number);
    sip::Headers const headers{{"Event", sip::kMessageSummaryEvent}, {"Subscription-State", "active"}};
    for (auto const& contact : registrar_.contactsOf(number)) {
        logRefusal(agent_, "messages of " + number,
                   agent_.request(accountOf(agent_, number), "NOTIFY", contact, headers,
                                  {sip::kMessageSummaryType, document}, {}));
    }
}

}  // namespace telephone::exchange
