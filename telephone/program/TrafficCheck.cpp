#include "telephone/program/TrafficCheck.h"

#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <utility>

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

std::optional<CheckedTraffic> checkedTraffic(std::string_view word)
{
    auto const* const found = std::ranges::find(kCheckedTrafficWords, word);
    return found == kCheckedTrafficWords.end()
               ? std::nullopt
               : std::optional(static_cast<CheckedTraffic>(found - kCheckedTrafficWords.begin()));
}

TrafficCheck::TrafficCheck(SessionServices services, CheckedTraffic checked)
    : services_(std::move(services))
    , listener_(services_.history.listen([this] { checkEvents(); }))
{
    if (checked == CheckedTraffic::kAll) {
        services_.requests.watch([](std::string_view request) { require(checkRequest(request), request); });
    }
}

TrafficCheck::~TrafficCheck()
{
    services_.requests.watch(nullptr);
    services_.history.endListening(listener_);
}

void TrafficCheck::checkEvents()
{
    for (auto const& each : services_.history.after(checked_, kEventsAtOnce).events) {
        checked_ = each->number;
        require(checkEvent(each->text), each->text);
    }
}

}  // namespace telephone
