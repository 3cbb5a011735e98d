#include "telephone/framework/TelephoneContext.h"

#include <gtest/gtest.h>

#include "FrameworkDoubles.h"
#include "telephone/framework/Channel.h"
#include "telephone/framework/EventDispatcher.h"
#include "telephone/framework/Refusals.h"

using namespace telephone;

namespace {

class TelephoneContextTest : public testing::Test
{
protected:
    TelephoneContextTest()
    {
        context_.setProxyFactory([] { return std::make_unique<ProxyDouble>(); });
    }

    EventDispatcher dispatcher_;
    TelephoneContext context_{dispatcher_};
};

class EndingProxy : public ProxyDouble
{
public:
    explicit EndingProxy(int& ended)
        : ended_(ended)
    {}
    void shutdown() override { ++ended_; }

private:
    int& ended_;
};

constexpr char const* kInterface = "CommunicationsServiceEventIfc";

}  // namespace

TEST_F(TelephoneContextTest, FindExecutable_FindsWhatIsRegistered)
{
    ExecutableDouble executable;
    context_.registerExecutable("LocalMgmtIfc", &executable);

    EXPECT_EQ(context_.findExecutable("LocalMgmtIfc"), &executable);
    EXPECT_EQ(context_.findExecutable("localmgmtifc"), nullptr);
    EXPECT_EQ(context_.findExecutable(""), nullptr);
}

TEST_F(TelephoneContextTest, FindProxy_MakesOneProxyForAChannel)
{
    auto const channel = context_.openChannel("console", 10, {});

    Proxy* const proxy = context_.findProxy(kInterface, "console");

    ASSERT_NE(proxy, nullptr);
    EXPECT_EQ(context_.findProxy(kInterface, "console"), proxy);
    EXPECT_EQ(context_.findChannel(proxy), "console");
}

TEST_F(TelephoneContextTest, FindProxy_ForAnotherInterfaceOrChannel_FindsNone)
{
    auto const channel = context_.openChannel("console", 10, {});

    EXPECT_EQ(context_.findProxy("OtherIfc", "console"), nullptr);
    EXPECT_EQ(context_.findProxy(kInterface, "other"), nullptr);
}

TEST_F(TelephoneContextTest, FindChannel_OfAnythingElse_IsEmpty)
{
    ExecutableDouble executable;
    auto const channel = context_.openChannel("console", 10, {});

    EXPECT_EQ(context_.findChannel(&executable), "");
    EXPECT_EQ(context_.findChannel(nullptr), "");
}

TEST_F(TelephoneContextTest, OpenChannel_OfATakenName_IsRefused)
{
    auto const channel = context_.openChannel("console", 10, {});

    EXPECT_EQ(context_.openChannel("console", 10, {}), nullptr);
}

TEST_F(TelephoneContextTest, ProxyOfAnUnknownChannel_IsRefused)
{
    RefusalCollector refusals;

    EXPECT_EQ(context_.findProxy(kInterface, "nobody"), nullptr);

    EXPECT_EQ(refusals.take(),
              (std::vector<Refusal>{
                  {RefusalKind::kNotFound, "channel \"nobody\" has no proxy for CommunicationsServiceEventIfc"}}));
}

TEST_F(TelephoneContextTest, WithoutAFactory_HasNoProxies)
{
    context_.setProxyFactory({});
    auto const channel = context_.openChannel("console", 10, {});

    EXPECT_EQ(context_.findProxy(kInterface, "console"), nullptr);
}

TEST_F(TelephoneContextTest, ProxyOfAChannelThatCloses_IsShutDown)
{
    int ended = 0;
    context_.setProxyFactory([&ended] { return std::make_unique<EndingProxy>(ended); });
    auto const console = context_.openChannel("console", 10, {});
    auto const socket = context_.openChannel("socket", 10, {});
    auto const unused = context_.openChannel("unused", 10, {});
    ASSERT_NE(context_.findProxy(kInterface, "console"), nullptr);
    ASSERT_NE(context_.findProxy(kInterface, "socket"), nullptr);

    context_.closeChannel(console);
    EXPECT_EQ(ended, 1);
    context_.closeChannel(console);
    EXPECT_EQ(ended, 1);
    context_.closeAllChannels();
    EXPECT_EQ(ended, 2);
}

TEST_F(TelephoneContextTest, Event_ReachesTheChannelThroughItsProxy)
{
    auto const channel = context_.openChannel("console", 10, {});
    ASSERT_TRUE(dispatcher_.subscribe(context_.findProxy(kInterface, "console")));

    dispatcher_.post([](CommunicationsServiceEventIfc& events) { events.callHeld("4711", 1); });
    dispatcher_.stop();

    auto const events = channel->take(10);
    ASSERT_EQ(events.size(), 1U);
    EXPECT_EQ(events[0].text, "<Method>CallHeldEvent</Method><LineID>4711</LineID><CallID>1</CallID>");
}

TEST_F(TelephoneContextTest, CloseChannel_EndsItsSubscription)
{
    auto const channel = context_.openChannel("console", 10, {});
    ASSERT_TRUE(dispatcher_.subscribe(context_.findProxy(kInterface, "console")));

    context_.closeChannel(channel);
    dispatcher_.post([](CommunicationsServiceEventIfc& events) { events.callHeld("4711", 1); });
    dispatcher_.stop();

    EXPECT_TRUE(channel->take(10).empty());
    EXPECT_EQ(context_.findProxy(kInterface, "console"), nullptr);
    EXPECT_NE(context_.openChannel("console", 10, {}), nullptr);
}
