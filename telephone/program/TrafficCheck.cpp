#include "telephone/program/TrafficCheck.h"

#include <cstdlib>
#include <iostream>
#include <stdexcept>

#include "telephone/Telephone.h"
#include "telephone/framework/Channel.h"
#include "telephone/framework/RequestRunner.h"
#include "telephone/framework/TelephoneContext.h"
#include "telephone/protocol/ProtocolCheck.h"

namespace telephone {

namespace {

constexpr std::size_t kQueuedEvents = 1000;

void require(Outcome<> const& checked, std::string_view text)
{
    if (!checked) {
        std::cerr << "telephone: check: " << checked.error().reason << ": " << text << std::endl;
        std::_Exit(TrafficCheck::kExitStatus);
    }
}

}  // namespace

TrafficCheck::TrafficCheck(Telephone& telephone, CheckedTraffic checked)
    : telephone_(telephone)
    , channel_(telephone.context().openChannel("check", kQueuedEvents, [this] { checkEvents(); }))
{
    auto const reply = telephone.requests().run(*channel_, "<Method>Subscribe</Method>");
    if (reply.answer != "sfiSuccess") {
        telephone.context().closeChannel(channel_);
        throw std::runtime_error("the service refuses the check a subscription to its events; the log says why");
    }
    if (checked == CheckedTraffic::kAll) {
        telephone.requests().watch([](std::string_view request) { require(checkRequest(request), request); });
    }
}

TrafficCheck::~TrafficCheck()
{
    telephone_.requests().watch(nullptr);
    telephone_.context().closeChannel(channel_);
}

void TrafficCheck::checkEvents()
{
    for (NumberedEvent const& each : channel_->take(kQueuedEvents)) {
        require(checkEvent(each.text), each.text);
    }
}

}  // namespace telephone
