#include "telephone/program/TrafficCheck.h"

#include <cstdlib>
#include <iostream>

#include "telephone/framework/RequestRunner.h"
#include "telephone/protocol/ProtocolCheck.h"

namespace telephone {

namespace {

constexpr std::size_t kEventsAtOnce = 1000;

void require(Outcome<> const& checked, std::string_view text)
{
    if (!checked) {
        std::cerr << "telephone: check: " << checked.error().reason << ": " << text << std::endl;
        std::_Exit(TrafficCheck::kExitStatus);
    }
}

}  // namespace

TrafficCheck::TrafficCheck(SessionServices const& services, CheckedTraffic checked)
    : requests_(services.requests)
    , history_(services.history)
    , listener_(services.history.listen([this] { checkEvents(); }))
{
    if (checked == CheckedTraffic::kAll) {
        requests_.watch([](std::string_view request) { require(checkRequest(request), request); });
    }
}

TrafficCheck::~TrafficCheck()
{
    requests_.watch(nullptr);
    history_.endListening(listener_);
}

void TrafficCheck::checkEvents()
{
    for (auto const& event : history_.after(checked_, kEventsAtOnce).events) {
        require(checkEvent(event->text), event->text);
        checked_ = event->number;
    }
}

}  // namespace telephone
