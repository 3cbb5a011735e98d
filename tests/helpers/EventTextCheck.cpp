#include "EventTextCheck.h"

#include <gtest/gtest.h>

#include "telephone/protocol/ProtocolCheck.h"

namespace telephone::test {

EventTextCheck::EventTextCheck()
{
    proxy_.initProxy(*this);
}

void EventTextCheck::check(Event const& event)
{
    event(proxy_);
}

void EventTextCheck::sendEvent(std::string const& message)
{
    auto const checked = checkEvent(message);
    EXPECT_TRUE(checked) << checked.error().reason << "\n" << message;
}

}  // namespace telephone::test
