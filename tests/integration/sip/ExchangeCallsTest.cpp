// Calls to every number of the exchange, and calls that the exchange makes.
#include "SipFixture.h"
#include "telephone/time/SteadyClock.h"
#include "telephone/time/Waiting.h"

namespace telephone::test {

using ExchangeCalls = ExchangeTest;

TEST_F(ExchangeCalls, Number100_AnswersAndEchoesTheAudio)
{
    struct Tone final : sip::AudioSource
    {
        bool readFrame(sip::AudioFrame& frame) override
        {
            frame.fill(8000);
            return true;
        }
        void skipFrames(std::uint64_t /*count*/) override {}
    } tone;
    struct Ear final : sip::AudioSink
    {
        void writeFrame(sip::AudioFrame const& frame) override { heard = heard || frame[80] > 7000; }
        bool heard = false;
    } ear;
    SipPeer phone(loop);

    sip::Session& call = phone.call(at("100"));
    {
        std::lock_guard guard(loop);
        call.audio().setSource(&tone);
        call.audio().setSink(&ear);
    }

    EXPECT_TRUE(phone.waitFor("progress 180")) << phone.events();
    EXPECT_TRUE(phone.waitFor("established")) << phone.events();
    EXPECT_TRUE(phone.waitUntil([&ear] { return ear.heard; }));
    EXPECT_EQ("PCMU", call.audio().codec());
    EXPECT_EQ(1U, exchange.callCount());
    phone.dropSession(0);
    EXPECT_TRUE(phone.waitUntil([this] { return exchange.callCount() == 0; }));
}

// A loud source, and a sink that counts the loud frames.
struct LoudEcho final : sip::AudioSource, sip::AudioSink
{
    bool readFrame(sip::AudioFrame& frame) override
    {
        frame.fill(8000);
        return true;
    }
    void writeFrame(sip::AudioFrame const& frame) override { heard += frame[80] > 7000 ? 1 : 0; }

    int heard = 0;
};

TEST_F(ExchangeCalls, PartyThatJoinsAndLeaves_LeavesTheEchoBehind)
{
    LoudEcho echo;
    SipPeer phone(loop, "4711");
    SipPeer joiner(loop, "4712");
    sip::Session& call = phone.call(at("100"));
    ASSERT_TRUE(phone.waitFor("established")) << phone.events();
    {
        std::lock_guard guard(loop);
        call.audio().setSource(&echo);
        call.audio().setSink(&echo);
    }
    ASSERT_TRUE(phone.waitUntil([&echo] { return echo.heard > 0; }));

    std::string const joined = call.dialogId().replaces().format();
    sip::Session& third =
        joiner.call(at("100"), [&joined](sip::CallRequest& request) { request.headers.add("Join", joined); });
    ASSERT_TRUE(joiner.waitFor("established")) << joiner.events();
    sleepFor(1s);
    echo.heard = 0;
    sleepFor(1s);
    EXPECT_EQ(0, echo.heard) << "the third party does not echo";
    third.hangUp();

    EXPECT_TRUE(phone.waitUntil([&echo] { return echo.heard > 0; }));
    EXPECT_EQ(1U, exchange.callCount());
    phone.dropSession(0);
}

TEST_F(ExchangeCalls, Number101_IsBusy)
{
    SipPeer phone(loop);

    phone.call(at("101"));

    EXPECT_TRUE(phone.waitFor("closed rejected 486")) << phone.events();
}

TEST_F(ExchangeCalls, Number102_RingsUntilTheCallerGivesUp)
{
    SipPeer phone(loop);

    sip::Session& call = phone.call(at("102"));
    ASSERT_TRUE(phone.waitFor("progress 180")) << phone.events();
    call.hangUp();

    EXPECT_TRUE(phone.waitUntil([this] { return exchange.callCount() == 0; }));
}

TEST_F(ExchangeCalls, Number103_AnswersAfterTwoSeconds)
{
    SipPeer phone(loop);
    auto const begun = SteadyClock::now();

    phone.call(at("103"));

    EXPECT_TRUE(phone.waitFor("progress 180")) << phone.events();
    EXPECT_TRUE(phone.waitFor("established")) << phone.events();
    EXPECT_GE(SteadyClock::now() - begun, 1900ms);
}

TEST_F(ExchangeCalls, Number104_Declines)
{
    SipPeer phone(loop);

    phone.call(at("104"));

    EXPECT_TRUE(phone.waitFor("closed rejected 603")) << phone.events();
}

TEST_F(ExchangeCalls, Number105_HangsUpAfterTwoSeconds)
{
    SipPeer phone(loop);

    phone.call(at("105"));

    EXPECT_TRUE(phone.waitFor("established")) << phone.events();
    EXPECT_TRUE(phone.waitFor("closed remote")) << phone.events();
}

TEST_F(ExchangeCalls, Number106_HoldsAndRetrieves)
{
    SipPeer phone(loop);

    sip::Session& call = phone.call(at("106"));

    EXPECT_TRUE(phone.waitFor("established")) << phone.events();
    EXPECT_TRUE(phone.waitFor("held")) << phone.events();
    EXPECT_TRUE(call.isHeldByRemote());
    EXPECT_EQ(sip::Direction::kReceiveOnly, call.audio().direction());
    EXPECT_TRUE(phone.waitFor("resumed")) << phone.events();
    EXPECT_FALSE(call.isHeldByRemote());
    EXPECT_EQ(sip::Direction::kSendReceive, call.audio().direction());
}

TEST_F(ExchangeCalls, Number199_HangsUpAndCallsBackAtTheContactOfTheCall)
{
    SipPeer phone(loop);

    phone.call(at("199"));

    EXPECT_TRUE(phone.waitFor("established")) << phone.events();
    EXPECT_TRUE(phone.waitFor("closed remote")) << phone.events();
    EXPECT_TRUE(phone.waitFor("called")) << phone.events();
    EXPECT_EQ("199", phone.lastInvitation.from.uri.user);
    EXPECT_TRUE(phone.waitFor("established")) << phone.events();
    EXPECT_EQ(1U, exchange.callCount());
}

TEST_F(ExchangeCalls, Number199_RingsUntilTheCalledPartyAnswers)
{
    SipPeer phone(loop);
    phone.whenCalled = [](SipPeer&, sip::Session& session) { EXPECT_TRUE(session.ring()); };
    phone.registerAt(exchange.hostPort());
    ASSERT_TRUE(phone.waitFor("registered 3600")) << phone.events();

    phone.call(at("199"));
    ASSERT_TRUE(phone.waitFor("called")) << phone.events();
    ASSERT_TRUE(phone.waitFor("established")) << phone.events();
    EXPECT_TRUE(phone.session(1).answer());

    EXPECT_TRUE(phone.waitFor("established")) << phone.events();
}

TEST_F(ExchangeCalls, UnknownNumber_IsNotFound)
{
    SipPeer phone(loop);

    phone.call(at("555"));

    EXPECT_TRUE(phone.waitFor("closed rejected 404")) << phone.events();
}

TEST_F(ExchangeCalls, NumberThatWasRegistered_IsTemporarilyUnavailable)
{
    SipPeer phone(loop);
    SipPeer other(loop, "4712");
    other.registerAt(exchange.hostPort());
    ASSERT_TRUE(other.waitFor("registered 3600"));
    other.registration.reset();
    ASSERT_TRUE(other.waitUntil([this] { return !exchange.isRegistered("4712"); }));

    phone.call(at("4712"));

    EXPECT_TRUE(phone.waitFor("closed rejected 480")) << phone.events();
}

TEST_F(ExchangeCalls, RegisteredNumber_IsReachedByRedirection)
{
    SipPeer phone(loop);
    SipPeer other(loop, "4712");
    other.registerAt(exchange.hostPort());
    ASSERT_TRUE(other.waitFor("registered 3600"));

    phone.call(at("4712"));

    EXPECT_TRUE(phone.waitFor("redirected " + exchange.contactsOf("4712").at(0))) << phone.events();
    EXPECT_TRUE(phone.waitFor("established")) << phone.events();
    EXPECT_TRUE(other.waitFor("established")) << other.events();
    EXPECT_EQ("4711", other.lastInvitation.from.uri.user);
}

TEST_F(ExchangeCalls, ChangedBehaviour_HoldsForTheNextCall)
{
    SipPeer phone(loop);
    ASSERT_TRUE(exchange.define("101", "ring, answer"));

    phone.call(at("101"));

    EXPECT_TRUE(phone.waitFor("established")) << phone.events();
}

TEST_F(ExchangeCalls, CallFromAnyNumber_RingsWithItsNameAndEchoes)
{
    SipPeer phone(loop);
    phone.registerAt(exchange.hostPort());
    ASSERT_TRUE(phone.waitFor("registered 3600"));

    ASSERT_TRUE(exchange.callNumber("555", "4711", "Ann"));

    ASSERT_TRUE(phone.waitFor("called")) << phone.events();
    EXPECT_EQ("Ann", phone.lastInvitation.from.displayName);
    EXPECT_EQ("sip:555@" + exchange.hostPort(), phone.lastInvitation.from.uri.format());
    EXPECT_TRUE(phone.waitFor("established")) << phone.events();
    EXPECT_EQ(1U, exchange.callCount());
    phone.session().hangUp();
    EXPECT_TRUE(phone.waitUntil([this] { return exchange.callCount() == 0; }));
}

TEST_F(ExchangeCalls, NameWithQuotesAndUmlauts_ArrivesAsItIs_ButWithoutTags)
{
    SipPeer phone(loop);
    phone.registerAt(exchange.hostPort());
    ASSERT_TRUE(phone.waitFor("registered 3600"));

    ASSERT_TRUE(exchange.callNumber("+49*555#", "4711", "J\u00f6rg \"the \\ boss\" <sip:1@2>"));

    ASSERT_TRUE(phone.waitFor("called")) << phone.events();
    EXPECT_EQ("J\u00f6rg \"the \\ boss\" (sip:1@2)", phone.lastInvitation.from.displayName);
    EXPECT_EQ("+49*555#", phone.lastInvitation.from.uri.user);
}

TEST_F(ExchangeCalls, CallThatTheTelephoneRefuses_Ends)
{
    SipPeer phone(loop);
    phone.whenCalled = [](SipPeer&, sip::Session& session) {
        EXPECT_TRUE(session.ring());
        session.reject(486, "Busy Here");
    };
    phone.registerAt(exchange.hostPort());
    ASSERT_TRUE(phone.waitFor("registered 3600"));

    ASSERT_TRUE(exchange.callNumber("555", "4711"));

    ASSERT_TRUE(phone.waitFor("called")) << phone.events();
    EXPECT_EQ("", phone.lastInvitation.from.displayName);
    EXPECT_TRUE(phone.waitUntil([this] { return exchange.callCount() == 0; }));
}

TEST_F(SipTest, CallThatIsNeverAnswered_IsCancelledAfterTheLongestRinging)
{
    exchange::ExchangeConfig config;
    config.longestRinging = 200ms;
    exchange::Exchange exchange(loop, config);
    SipPeer phone(loop);
    phone.whenCalled = [](SipPeer&, sip::Session& session) { EXPECT_TRUE(session.ring()); };
    phone.registerAt(exchange.hostPort());
    ASSERT_TRUE(phone.waitFor("registered 3600"));

    ASSERT_TRUE(exchange.callNumber("555", "4711"));

    EXPECT_TRUE(phone.waitFor("closed cancelled")) << phone.events();
    EXPECT_EQ(0U, exchange.callCount());
}

TEST_F(SipTest, AnsweredCall_OutlastsTheLongestRinging)
{
    exchange::ExchangeConfig config;
    config.longestRinging = 200ms;
    exchange::Exchange exchange(loop, config);
    SipPeer phone(loop);
    phone.registerAt(exchange.hostPort());
    ASSERT_TRUE(phone.waitFor("registered 3600"));

    ASSERT_TRUE(exchange.callNumber("555", "4711"));

    ASSERT_TRUE(phone.waitFor("established")) << phone.events();
    EXPECT_FALSE(phone.waitFor("closed remote", 400ms)) << phone.events();
    EXPECT_EQ(1U, exchange.callCount());
}

TEST_F(ExchangeCalls, CallThatCannotBeMade_IsRefusedWithItsReason)
{
    SipPeer phone(loop);
    phone.registerAt(exchange.hostPort());
    ASSERT_TRUE(phone.waitFor("registered 3600"));
    auto const reasonOf = [this](std::string const& from, std::string const& to, std::string const& name = {}) {
        auto const called = exchange.callNumber(from, to, name);
        return called ? "called" : called.error().reason;
    };

    EXPECT_EQ("4712 is not registered with the exchange", reasonOf("555", "4712"));
    EXPECT_EQ("100 is not registered with the exchange", reasonOf("555", "100"));
    EXPECT_EQ("4711 cannot call itself", reasonOf("4711", "4711"));
    EXPECT_EQ("the caller's number must consist of 1 to 64 letters, digits, and + - . _ * #", reasonOf("", "4711"));
    EXPECT_EQ("the caller's number must consist of 1 to 64 letters, digits, and + - . _ * #", reasonOf("5\n5", "4711"));
    EXPECT_EQ("the caller's number must consist of 1 to 64 letters, digits, and + - . _ * #",
              reasonOf(std::string(65, '5'), "4711"));
    EXPECT_EQ("the number to call must consist of 1 to 64 letters, digits, and + - . _ * #",
              reasonOf("555", "sip:4711@127.0.0.1"));
    EXPECT_EQ("the caller's name must not contain control characters", reasonOf("555", "4711", "An\x1b[31mn"));
    EXPECT_EQ("the caller's name must not contain control characters", reasonOf("555", "4711", "Ann\x7f"));
    EXPECT_EQ("the caller's name must not be longer than 255 bytes", reasonOf("555", "4711", std::string(256, 'A')));
    EXPECT_EQ(0U, exchange.callCount());
    EXPECT_EQ("called", reasonOf(std::string(64, '5'), "4711", std::string(255, 'A')));
    EXPECT_TRUE(phone.waitFor("established")) << phone.events();
}

TEST_F(ExchangeCalls, CallOverTcp_IsEstablished)
{
    SipPeer phone(loop);
    phone.account.transport = sip::Transport::kTcp;

    phone.call("sip:100@127.0.0.1:" + std::to_string(exchange.tcpPort()));

    EXPECT_TRUE(phone.waitFor("established")) << phone.events();
}

TEST_F(ExchangeCalls, CstaInCall_IsEchoed)
{
    SipPeer phone(loop);
    sip::Session& call = phone.call(at("100"));
    ASSERT_TRUE(phone.waitFor("established")) << phone.events();

    int status = 0;
    ASSERT_TRUE(call.sendInfo({"application/csta+xml", "<MakeCall/>"},
                              [&status](sip::Response const& r) { status = r.status; }));

    EXPECT_TRUE(phone.waitFor("info")) << phone.events();
    EXPECT_EQ("<MakeCall/>", phone.lastInfo.body);
    EXPECT_TRUE(phone.waitUntil([&status] { return status == 200; }));
}

TEST_F(ExchangeCalls, CstaOutsideACall_IsEchoed)
{
    SipPeer phone(loop);
    phone.registerAt(exchange.hostPort());
    ASSERT_TRUE(phone.waitFor("registered 3600"));
    int status = 0;

    ASSERT_TRUE(phone.agent->request(phone.account, "INFO", at("100"), {}, {"application/csta+xml", "<Snapshot/>"},
                                     [&status](sip::Response const& r) { status = r.status; }));

    EXPECT_TRUE(phone.waitFor("request INFO")) << phone.events();
    EXPECT_EQ("<Snapshot/>", phone.lastInfo.body);
    EXPECT_TRUE(phone.waitUntil([&status] { return status == 200; }));
}

}  // namespace telephone::test
