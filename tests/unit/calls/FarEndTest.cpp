// Far ends that do not answer, go away or have nothing in common with this telephone.
#include "telephone/sip/Stack.h"
#include "tests/helpers/EnginePhone.h"

namespace telephone::test {

namespace {

// A UDP port that receives everything and answers nothing.
class SilentPort
{
public:
    SilentPort()
    {
        std::lock_guard const guard(eventLoop());
        sa address{};
        sa_set_str(&address, "127.0.0.1", 0);
        auto const ignore = [](sa const*, mbuf*, void*) {};
        EXPECT_EQ(udp_listen(socket_.out(), &address, ignore, nullptr), 0);
        EXPECT_EQ(udp_local_get(socket_.get(), &address), 0);
        port_ = sa_port(&address);
    }
    ~SilentPort()
    {
        std::lock_guard const guard(eventLoop());
        socket_.reset();
    }
    SilentPort(SilentPort const&) = delete;
    SilentPort& operator=(SilentPort const&) = delete;

    std::string uri() const { return "sip:nobody@127.0.0.1:" + std::to_string(port_); }

private:
    sip::Ref<udp_sock> socket_;
    std::uint16_t port_ = 0;
};

}  // namespace

TEST(SilentFarEnd, CallToIt_CanBeCleared)
{
    SilentPort silent;
    EnginePhone alice(EnginePhone::optionsOf("4711"));
    ASSERT_TRUE(alice.engine().outgoing().make(1, 0, 1, silent.uri()));

    ASSERT_TRUE(alice.engine().clear(1));

    alice.expect({"state 4711 1 dialling normal nobody", "state 4711 1 idle cancelled nobody"});
    EXPECT_TRUE(alice.engine().calls().empty());
}

TEST(DeadFarEnd, ConnectedCall_CanBeCleared)
{
    EnginePhone alice(EnginePhone::optionsOf("4711"));
    auto bob = std::make_unique<EnginePhone>(EnginePhone::optionsOf("4722"));
    ASSERT_TRUE(alice.engine().outgoing().make(1, 0, 1, bob->uri()));
    ASSERT_TRUE(bob->events().waitFor("state 4722 1001 ringing normal 4711"));
    ASSERT_TRUE(bob->engine().answer(1001));
    ASSERT_TRUE(alice.events().waitFor("state 4711 1 connected normal 4722"));

    bob.reset();

    alice.expect({"state 4711 1 idle normal 4722"});
}

TEST(NoCommonMedia, CallFromSuchAFarEnd_IsRefusedWith488)
{
    EnginePhone::Options options = EnginePhone::optionsOf("4711");
    options.engine.agent.codecs = {"PCMU"};
    EnginePhone alice(options);
    options = EnginePhone::optionsOf("4722");
    options.engine.agent.codecs = {"PCMA"};
    EnginePhone bob(options);

    ASSERT_TRUE(alice.engine().outgoing().make(1, 0, 1, bob.uri()));

    EXPECT_TRUE(alice.events().waitFor("state 4711 1 failed not acceptable 4722"));
    EXPECT_TRUE(bob.engine().calls().empty());
}

TEST(UnknownUser, OfAPeer_IsNotFound)
{
    EnginePhone alice(EnginePhone::optionsOf("4711"));
    EnginePhone bob(EnginePhone::optionsOf("4722"));
    std::string other = bob.uri();
    other.replace(other.find("4722"), 4, "9999");

    ASSERT_TRUE(alice.engine().outgoing().make(1, 0, 1, other));

    alice.expect({"state 4711 1 dialling normal 9999", "state 4711 1 failed not found 9999"});
    EXPECT_TRUE(bob.events().rest().empty());
}

TEST(CallToOneself, RingsAndIsAnswered)
{
    EnginePhone alice(EnginePhone::optionsOf("4711"));

    ASSERT_TRUE(alice.engine().outgoing().make(1, 0, 1, alice.uri()));
    ASSERT_TRUE(eventually([&alice] { return alice.alerts(); }));
    ASSERT_TRUE(alice.engine().answer(1001));

    EXPECT_TRUE(eventually([&alice] {
        return alice.engine().call(1)->state == sfiCallStateConnected &&
               alice.engine().call(1001)->state == sfiCallStateConnected;
    }));
}

}  // namespace telephone::test
