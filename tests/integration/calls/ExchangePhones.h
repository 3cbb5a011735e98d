// Several telephones registered at one exchange.
#pragma once

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "telephone/exchange/Exchange.h"
#include "tests/helpers/EnginePhone.h"

namespace telephone::test {

inline EnginePhone::Options phoneAt(exchange::Exchange const& exchange, std::vector<std::string> const& lines)
{
    EnginePhone::Options options;
    options.lines = lines;
    options.registrar = exchange.hostPort();
    options.engine.directedPickup = exchange::kDirectedPickup;
    options.engine.groupPickup = exchange::kGroupPickup;
    return options;
}

// alice 4711, bob 4722, carol 4733.
class ThreePhones : public ::testing::Test
{
protected:
    exchange::Exchange exchange_{eventLoop(), {}};
    EnginePhone alice_{phoneAt(exchange_, {"4711"})};
    EnginePhone bob_{phoneAt(exchange_, {"4722"})};
    EnginePhone carol_{phoneAt(exchange_, {"4733"})};

    void SetUp() override
    {
        for (EnginePhone* phone : {&alice_, &bob_, &carol_}) {
            ASSERT_TRUE(eventually([phone] { return phone->engine().registrations().isRegistered(1); }));
            phone->events().rest();
        }
    }

    // alice calls bob: call 1 of alice, call 1001 of bob. Both are connected and have no unread event up to then.
    void connectAliceAndBob()
    {
        ASSERT_TRUE(alice_.engine().outgoing().make(1, 0, 1, "4722"));
        ASSERT_TRUE(bob_.events().waitFor("state 4722 1001 ringing normal 4711"));
        ASSERT_TRUE(bob_.engine().answer(1001));
        ASSERT_TRUE(bob_.events().waitFor("state 4722 1001 connected normal 4711"));
        ASSERT_TRUE(alice_.events().waitFor("state 4711 1 connected normal 4722"));
    }

    // alice, connected to bob, consults carol: call 2 of alice, call 1001 of carol.
    void consultCarol()
    {
        ASSERT_TRUE(alice_.engine().outgoing().make(1, 0, 2, "4733", CallPurpose::kConsultation));
        ASSERT_TRUE(carol_.events().waitFor("state 4733 1001 ringing normal 4711"));
        ASSERT_TRUE(bob_.events().waitFor("state 4722 1001 remotely held normal 4711"));
        ASSERT_TRUE(carol_.engine().answer(1001));
        ASSERT_TRUE(carol_.events().waitFor("state 4733 1001 connected normal 4711"));
        ASSERT_TRUE(alice_.events().waitFor("state 4711 2 connected normal 4733"));
    }
};

}  // namespace telephone::test
