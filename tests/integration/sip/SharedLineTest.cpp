// A line that a telephone shares with a colleague, whom the exchange plays.
#include "SipFixture.h"

namespace telephone::test {

namespace {

class SharedLine : public ExchangeTest
{
protected:
    void SetUp() override { exchange.define({.number = "4711", .appearances = 1}); }

    std::string refusalOf(char const* steps)
    {
        auto const played = exchange.play("4711", steps);
        return played ? "played" : played.error().reason;
    }
    // The only dialog of the line, as its watcher knows it.
    bool shows(std::function<bool(sip::DialogEntry const&)> const& condition)
    {
        return phone.waitUntil([&] {
            auto const info = sip::DialogInfo::parse(phone.notifications.back().content.body).value();
            return info.dialogs.size() == 1 && condition(info.dialogs[0]);
        });
    }
    void watch()
    {
        phone.subscribe(at("4711"), "dialog", "application/dialog-info+xml");
        ASSERT_TRUE(phone.waitFor("notify dialog")) << phone.events();
    }

    SipPeer phone{loop};
};

TEST_F(SharedLine, Colleague_IsSeenFromTheSeizureToTheEnd)
{
    watch();

    ASSERT_EQ(refusalOf("seize"), "played");
    EXPECT_TRUE(shows([](sip::DialogEntry const& entry) {
        return entry.state == sip::DialogState::kTrying && entry.appearance == 1 && !entry.recipient;
    }));
    ASSERT_EQ(refusalOf("call 100, private, hold"), "played");
    EXPECT_TRUE(shows([](sip::DialogEntry const& entry) {
        return entry.state == sip::DialogState::kConfirmed && entry.exclusive && !entry.local.rendering;
    }));
    ASSERT_EQ(refusalOf("public, retrieve, hang-up"), "played");
    EXPECT_TRUE(phone.waitUntil([this] { return exchange.callCount() == 0; }));
}

TEST_F(SharedLine, SecondSeizure_IsRefusedWithItsReason)
{
    ASSERT_EQ(refusalOf("seize"), "played");

    EXPECT_EQ(refusalOf("seize"), "4711 has no free appearance");
    EXPECT_EQ(refusalOf("hold"), "\"hold\" is not possible on a seized line; possible there: call, wait, release, "
                                 "private, public");
    EXPECT_EQ(refusalOf("release"), "played");
    EXPECT_EQ(refusalOf("seize"), "played");
}

TEST_F(SharedLine, CallFromATakenLine_IsRefused)
{
    ASSERT_EQ(refusalOf("seize"), "played");

    phone.call(at("100"));
    EXPECT_TRUE(phone.waitFor("closed rejected 403")) << phone.events();

    ASSERT_EQ(refusalOf("release"), "played");
    phone.call(at("100"));
    EXPECT_TRUE(phone.waitFor("established")) << phone.events();
    EXPECT_EQ(refusalOf("seize"), "4711 has no free appearance");
}

TEST_F(SharedLine, RefusedCall_GivesItsAppearanceBack)
{
    for (char const* const number : {"101", "104", "555"}) {
        phone.call(at(number));
        ASSERT_TRUE(phone.waitUntil(
            [this] { return phone.session(phone.sessionCount() - 1).state() == sip::SessionState::kClosed; }));
    }

    EXPECT_EQ(refusalOf("seize"), "played");
}

// The colleague seizes the line while the INVITE of the telephone is on its way, before or after it arrives.
TEST_F(SharedLine, SeizureAndCallAtTheSameTime_HaveOneWinner)
{
    int colleague = 0;
    for (int round = 0; round < 40; ++round) {
        std::size_t const index = phone.sessionCount();
        phone.call(at("100"));
        if (round % 2 == 0) {
            ASSERT_TRUE(phone.waitUntil([&] { return phone.session(index).state() != sip::SessionState::kCalling; }));
        }
        bool const seized = refusalOf("seize") == "played";

        ASSERT_TRUE(phone.waitFor(seized ? "closed rejected 403" : "established")) << phone.events();
        if (seized) {
            ++colleague;
            ASSERT_EQ(refusalOf("release"), "played");
        }
        phone.dropSession(index);
        ASSERT_TRUE(phone.waitUntil([this] { return exchange.callCount() == 0; }));
    }
    EXPECT_GE(colleague, 1);
    EXPECT_LE(colleague, 20);
}

TEST_F(SharedLine, HeldCall_IsTakenOverWithReplaces)
{
    watch();
    ASSERT_EQ(refusalOf("call 100, hold"), "played");
    sip::DialogEntry held;
    ASSERT_TRUE(shows([&held](sip::DialogEntry const& entry) {
        held = entry;
        return !entry.local.rendering;
    }));

    phone.call(held.remote.target, [&held](sip::CallRequest& request) { request.replaces = held.dialog.replaces(); });

    EXPECT_TRUE(phone.waitFor("established")) << phone.events();
    EXPECT_TRUE(phone.waitUntil([this] { return exchange.callCount() == 1; })) << "the colleague's call is over";
}

TEST_F(SharedLine, Call_IsJoinedAndOutlivesTheJoiner)
{
    watch();
    ASSERT_EQ(refusalOf("call 100"), "played");
    sip::DialogEntry call;
    ASSERT_TRUE(shows([&call](sip::DialogEntry const& entry) {
        call = entry;
        return entry.state == sip::DialogState::kConfirmed;
    }));
    auto const join = [&call](sip::CallRequest& request) {
        request.headers.add("Join",
                            sip::Replaces{call.dialog.callId, call.dialog.localTag, call.dialog.remoteTag}.format());
    };

    sip::Session& joiner = phone.call(call.local.target, join);
    EXPECT_TRUE(phone.waitFor("established")) << phone.events();
    EXPECT_EQ(exchange.callCount(), 3U);
    phone.call(call.local.target, join);
    EXPECT_TRUE(phone.waitFor("closed rejected 486")) << "a fourth party " << phone.events();
    joiner.hangUp();

    EXPECT_TRUE(phone.waitUntil([this] { return exchange.callCount() == 2; }));
    ASSERT_EQ(refusalOf("private"), "played");
    phone.call(call.local.target, join);
    EXPECT_TRUE(phone.waitFor("closed rejected 403")) << phone.events();
    ASSERT_EQ(refusalOf("hang-up"), "played");
    phone.call(call.local.target, join);
    EXPECT_TRUE(phone.waitFor("closed rejected 481")) << phone.events();
}

}  // namespace

}  // namespace telephone::test
