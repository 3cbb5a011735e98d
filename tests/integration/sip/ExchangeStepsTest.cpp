// Each kind of step of the exchange's numbers, as a telephone meets it.
#include <array>

#include "ScriptedEnd.h"
#include "SipFixture.h"
#include "telephone/media/WavWriter.h"
#include "telephone/time/SteadyClock.h"

namespace telephone::test {

namespace {

class ExchangeSteps : public ExchangeTest
{
protected:
    // Calls a number that does this.
    sip::Session& callOf(char const* steps)
    {
        EXPECT_TRUE(exchange.define("110", steps));
        return phone.call(at("110"));
    }
    void registerPhone()
    {
        phone.registerAt(exchange.hostPort());
        ASSERT_TRUE(phone.waitFor("registered 3600"));
    }
    std::string refusalOf(char const* steps)
    {
        auto const played = exchange.play("110", steps);
        return played ? "played" : played.error().reason;
    }

    SipPeer phone{loop};
};

// A loud file of that many frames of 20 ms.
std::string soundFile(std::string const& name, int frames)
{
    std::string path = ::testing::TempDir() + name;
    WavWriter file(path, 1);
    sip::AudioFrame loud;
    loud.fill(12000);
    for (int i = 0; i < frames; ++i) {
        EXPECT_TRUE(file.write(loud));
    }
    return path;
}

struct Ear final : sip::AudioSink
{
    void writeFrame(sip::AudioFrame const& frame) override { loud = loud || frame[80] > 7000 || frame[80] < -7000; }
    bool loud = false;
};

TEST_F(ExchangeSteps, Ring_LastsAsLongAsItSays)
{
    auto const begun = SteadyClock::now();

    callOf("ring 300ms, answer");

    EXPECT_TRUE(phone.waitFor("progress 180")) << phone.events();
    EXPECT_TRUE(phone.waitFor("established")) << phone.events();
    EXPECT_GE(SteadyClock::now() - begun, 290ms);
}

TEST_F(ExchangeSteps, EarlyMedia_IsHeardBeforeTheAnswer)
{
    std::string const file = soundFile("early.wav", 50);
    Ear ear;

    sip::Session& call = callOf(("early-media, say " + file).c_str());
    {
        std::lock_guard guard(loop);
        call.audio().setSink(&ear);
    }

    EXPECT_TRUE(phone.waitFor("progress 183 early")) << phone.events();
    EXPECT_TRUE(phone.waitUntil([&ear] { return ear.loud; }));
    EXPECT_EQ(call.state(), sip::SessionState::kEarly);
    phone.dropSession(0);
}

TEST_F(ExchangeSteps, Say_PlaysTheFileOnceAndGoesOn)
{
    std::string const file = soundFile("say.wav", 15);
    Ear ear;

    sip::Session& call = callOf(("answer, say " + file + ", hang-up").c_str());
    {
        std::lock_guard guard(loop);
        call.audio().setSink(&ear);
    }

    EXPECT_TRUE(phone.waitFor("established")) << phone.events();
    auto const begun = SteadyClock::now();
    EXPECT_TRUE(phone.waitFor("closed remote")) << phone.events();
    EXPECT_GE(SteadyClock::now() - begun, 250ms) << "300 ms of sound";
    EXPECT_TRUE(ear.loud);
}

TEST_F(ExchangeSteps, Digits_ArriveInOrder)
{
    callOf("answer, dtmf 1#");

    EXPECT_TRUE(phone.waitFor("digit 1")) << phone.events();
    EXPECT_TRUE(phone.waitFor("digit #")) << phone.events();
}

TEST_F(ExchangeSteps, HoldAndRetrieve_AreReInvites)
{
    sip::Session& call = callOf("answer, hold 100ms, retrieve");

    EXPECT_TRUE(phone.waitFor("held")) << phone.events();
    EXPECT_TRUE(phone.waitFor("resumed")) << phone.events();
    EXPECT_FALSE(call.isHeldByRemote());
}

TEST_F(ExchangeSteps, Transfer_AsksForACallAndGoesOnAfterItsEnd)
{
    callOf("answer, transfer 100, hang-up");

    ASSERT_TRUE(phone.waitFor("transfer")) << phone.events();
    EXPECT_EQ(phone.transfers[0]->target(), at("100"));
    ASSERT_TRUE(phone.transfers[0]->accept());
    EXPECT_FALSE(phone.waitFor("closed remote", 100ms)) << "before the transfer has ended";
    phone.transfers[0]->notify(200, "OK");

    EXPECT_TRUE(phone.waitFor("closed remote")) << phone.events();
}

TEST_F(ExchangeSteps, TransferThatIsRefused_GoesOn)
{
    callOf("answer, transfer 100, hang-up");

    ASSERT_TRUE(phone.waitFor("transfer")) << phone.events();
    phone.transfers[0]->reject(603, "Decline");

    EXPECT_TRUE(phone.waitFor("closed remote")) << phone.events();
}

TEST_F(ExchangeSteps, Redirect_LeadsToAnotherNumber)
{
    callOf("ring 50ms, redirect 100");

    EXPECT_TRUE(phone.waitFor("redirected " + at("100"))) << phone.events();
    EXPECT_TRUE(phone.waitFor("established")) << phone.events();
}

TEST_F(ExchangeSteps, Busy_Is486)
{
    callOf("ring 50ms, busy");

    EXPECT_TRUE(phone.waitFor("closed rejected 486")) << phone.events();
    EXPECT_EQ(phone.lastClosing.text, "Busy Here");
}

TEST_F(ExchangeSteps, Refuse_HasItsStatusAndPhrase)
{
    callOf("refuse 480");

    EXPECT_TRUE(phone.waitFor("closed rejected 480")) << phone.events();
    EXPECT_EQ(phone.lastClosing.text, "Temporarily Unavailable");
}

TEST_F(ExchangeSteps, HangUp_EndsTheCallAndTheExchangeForgetsIt)
{
    callOf("answer, hang-up");

    EXPECT_TRUE(phone.waitFor("closed remote")) << phone.events();
    EXPECT_EQ(exchange.callCount(), 0U);
}

TEST_F(ExchangeSteps, CallCaller_ComesAfterTheWait)
{
    callOf("answer, hang-up, wait 100ms, call caller, hang-up");

    EXPECT_TRUE(phone.waitFor("closed remote")) << phone.events();
    EXPECT_TRUE(phone.waitFor("called")) << phone.events();
    EXPECT_EQ(phone.lastInvitation.from.uri.user, "110");
    EXPECT_TRUE(phone.waitFor("closed remote")) << "once it was answered " << phone.events();
}

TEST_F(ExchangeSteps, CallerWhoHangsUpFirst_IsCalledBackAllTheSame)
{
    sip::Session& call = callOf("answer 60s, hang-up, call caller");
    ASSERT_TRUE(phone.waitFor("established")) << phone.events();

    call.hangUp();

    EXPECT_TRUE(phone.waitFor("called")) << phone.events();
}

TEST_F(ExchangeSteps, Call_BeginsWithoutACall)
{
    registerPhone();

    ASSERT_EQ(refusalOf("call 4711, hang-up"), "played");

    EXPECT_TRUE(phone.waitFor("called")) << phone.events();
    EXPECT_TRUE(phone.waitFor("established")) << phone.events();
    EXPECT_TRUE(phone.waitFor("closed remote")) << phone.events();
}

TEST_F(ExchangeSteps, CallThatIsNotAnswered_IsGivenUp)
{
    phone.whenCalled = [](SipPeer&, sip::Session& session) { EXPECT_TRUE(session.ring()); };
    registerPhone();

    ASSERT_EQ(refusalOf("call 4711 200ms, dtmf 1, hang-up"), "played");

    EXPECT_TRUE(phone.waitFor("closed cancelled")) << phone.events();
    EXPECT_EQ(exchange.callCount(), 0U);
}

TEST_F(ExchangeSteps, CallOfAnotherPlayedNumber_ConnectsTheTwo)
{
    ASSERT_EQ(refusalOf("call 100"), "played");
    EXPECT_TRUE(phone.waitUntil([this] { return exchange.callCount() == 2; }));

    EXPECT_TRUE(phone.waitUntil([this] { return exchange.play("110", "hang-up").has_value(); }));

    EXPECT_TRUE(phone.waitUntil([this] { return exchange.callCount() == 0; }));
}

TEST_F(ExchangeSteps, StepsAtOnce_ReplaceTheRestOfThePresentCalls)
{
    sip::Session& call = callOf("answer 60s, hang-up");
    ASSERT_TRUE(phone.waitFor("established")) << phone.events();

    EXPECT_TRUE(phone.waitUntil([this] { return exchange.play("110", "hold 100ms, hang-up").has_value(); }));

    EXPECT_TRUE(phone.waitFor("held")) << phone.events();
    EXPECT_TRUE(phone.waitFor("closed remote")) << phone.events();
    EXPECT_EQ(call.state(), sip::SessionState::kClosed);
}

TEST_F(ExchangeSteps, StepsAtOnceThatDoNotFit_AreRefused)
{
    EXPECT_EQ(refusalOf("hold"), "\"hold\" is not possible while there is no call; possible there: call, wait, seize");
    callOf("ring");
    ASSERT_TRUE(phone.waitFor("progress 180")) << phone.events();

    EXPECT_EQ(refusalOf("hold"), "\"hold\" is not possible before the answer; possible there: ring, early-media, "
                                 "reliable, answer, redirect, busy, refuse, wait, silent, garbage");
    EXPECT_EQ(refusalOf("answer"), "played");
    EXPECT_TRUE(phone.waitFor("established")) << phone.events();
}

TEST_F(ExchangeSteps, Reliable_RepeatsTheRingingUntilItIsAcknowledged)
{
    ScriptedEnd far(loop);
    ASSERT_TRUE(exchange.define("110", "reliable, ring"));

    far.ask("INVITE", "110", exchange.hostPort(), "Supported: 100rel\r\n", far.description());

    std::string const ringing = far.receive("SIP/2.0 180");
    EXPECT_EQ("100rel", headerOf(ringing, "Require"));
    EXPECT_EQ(headerOf(ringing, "RSeq"), headerOf(far.receive("SIP/2.0 180", 600ms), "RSeq"));
}

TEST_F(ExchangeSteps, Reliable_GoesWithAnyTelephone)
{
    callOf("reliable, ring 1s, early-media 1s, answer");

    EXPECT_TRUE(phone.waitFor("progress 180")) << phone.events();
    EXPECT_TRUE(phone.waitFor("progress 183 early")) << phone.events();
    EXPECT_TRUE(phone.waitFor("established")) << phone.events();
}

TEST_F(ExchangeSteps, Refresh_LeavesTheCallAsItIs)
{
    sip::Session& call = callOf("answer 1s, refresh, wait 1s, hang-up");
    ASSERT_TRUE(phone.waitFor("established")) << phone.events();

    EXPECT_TRUE(phone.waitFor("closed remote")) << phone.events();
    EXPECT_FALSE(phone.waitFor("held", 0ms));
    EXPECT_EQ(call.state(), sip::SessionState::kClosed);
}

TEST_F(ExchangeSteps, Preempt_EndsTheCallAndSaysWhy)
{
    callOf("answer 1s, preempt");

    EXPECT_TRUE(phone.waitFor("closed remote")) << phone.events();
    EXPECT_EQ(phone.lastClosing.reasonHeader, "preemption;cause=1;text=\"UA Preemption\"");
}

TEST_F(ExchangeSteps, Silent_AnswersNothing)
{
    sip::Session& call = callOf("answer, silent");
    ASSERT_TRUE(phone.waitFor("established")) << phone.events();
    // The step comes after the ACK that the exchange has not read yet.
    ASSERT_TRUE(phone.waitUntil([this] {
        return refusalOf("retrieve") == "\"retrieve\" is not possible after silent; possible there: nothing";
    }));

    ASSERT_TRUE(call.modify(sip::Direction::kSendOnly));

    EXPECT_FALSE(phone.waitFor("modified 200", 700ms)) << "a repetition of the INVITE is not answered either";
    EXPECT_EQ(exchange.callCount(), 1U);
}

TEST_F(ExchangeSteps, SilentBeforeTheAnswer_IgnoresTheCancel)
{
    sip::Session& call = callOf("ring, silent");
    ASSERT_TRUE(phone.waitFor("progress 180")) << phone.events();

    call.hangUp();

    EXPECT_FALSE(phone.waitUntil([this] { return exchange.callCount() == 0; }, 700ms));
}

TEST_F(ExchangeSteps, Garbage_HurtsNothing)
{
    sip::Session& call = callOf("answer, garbage, hold 50ms, retrieve");

    EXPECT_TRUE(phone.waitFor("held")) << phone.events();
    EXPECT_TRUE(phone.waitFor("resumed")) << phone.events();
    EXPECT_EQ(call.state(), sip::SessionState::kEstablished);
}

TEST_F(ExchangeSteps, Name_IsShownToTheCallerAndToTheCalled)
{
    exchange.define({.number = "110", .name = "Ann \"B\"", .steps = exchange::readSteps("ring, answer").value()});
    registerPhone();

    sip::Session& call = phone.call(at("110"));
    ASSERT_TRUE(phone.waitFor("established")) << phone.events();
    EXPECT_EQ(call.remoteParty().displayName, "Ann \"B\"");

    ASSERT_EQ(refusalOf("call 4711"), "played");
    ASSERT_TRUE(phone.waitFor("called")) << phone.events();
    EXPECT_EQ(phone.lastInvitation.from.displayName, "Ann \"B\"");
}

// --- forwarding, lamp, mailbox, group

TEST_F(ExchangeSteps, Forwarding_NamesItsReason)
{
    auto const steps = [](char const* text) { return exchange::readSteps(text).value(); };
    struct Case
    {
        exchange::ExchangeNumber number;
        char const* diversion;
    };
    std::array const cases{
        Case{{.number = "111", .steps = steps("busy"), .forwarding = {.always = "100"}}, "unconditional"},
        Case{{.number = "112", .steps = steps("busy"), .forwarding = {.onBusy = "100"}}, "user-busy"},
        Case{{.number = "113", .steps = steps("ring"), .forwarding = {.onNoReply = "100", .noReplyAfter = 100ms}},
             "no-answer"},
    };
    for (Case const& each : cases) {
        exchange.define(each.number);

        phone.call(at(each.number.number));

        EXPECT_TRUE(phone.waitFor("redirected " + at("100"))) << each.diversion << phone.events();
        EXPECT_TRUE(phone.waitFor("established")) << each.diversion << phone.events();
    }
}

TEST_F(ExchangeSteps, AnsweredInTime_IsNotForwarded)
{
    exchange.define({.number = "113",
                     .steps = exchange::readSteps("ring, answer 300ms, hang-up").value(),
                     .forwarding = {.onNoReply = "100", .noReplyAfter = 100ms}});

    phone.call(at("113"));

    EXPECT_TRUE(phone.waitFor("established")) << phone.events();
    EXPECT_TRUE(phone.waitFor("closed remote")) << phone.events();
}

TEST_F(ExchangeSteps, Lamp_IsWhatWatchersSee)
{
    using exchange::NumberLamp;
    struct Case
    {
        NumberLamp lamp;
        std::size_t dialogs;
        sip::DialogState state;
        bool rendering;
    };
    for (Case const& each : {Case{NumberLamp::kRinging, 1, sip::DialogState::kEarly, true},
                             Case{NumberLamp::kBusy, 1, sip::DialogState::kConfirmed, true},
                             Case{NumberLamp::kHolding, 1, sip::DialogState::kConfirmed, false}}) {
        exchange.define({.number = "110", .steps = exchange::readSteps("ring").value(), .lamp = each.lamp});
        SipPeer watcher(loop, "4722");

        watcher.subscribe(at("110"), "dialog", "application/dialog-info+xml");

        ASSERT_TRUE(watcher.waitFor("notify dialog"));
        auto const shown = sip::DialogInfo::parse(watcher.notifications.back().content.body).value();
        ASSERT_EQ(shown.dialogs.size(), each.dialogs);
        EXPECT_EQ(shown.dialogs[0].state, each.state);
        EXPECT_EQ(shown.dialogs[0].local.rendering, each.rendering);
    }
}

TEST_F(ExchangeSteps, HeldCall_IsShownAsHeld)
{
    SipPeer watcher(loop, "4722");
    ASSERT_TRUE(exchange.define("110", "ring"));
    watcher.subscribe(at("110"), "dialog", "application/dialog-info+xml");
    ASSERT_TRUE(watcher.waitFor("notify dialog"));

    callOf("answer, hold");

    EXPECT_TRUE(watcher.waitUntil([&watcher] {
        auto const shown = sip::DialogInfo::parse(watcher.notifications.back().content.body).value();
        return shown.dialogs.size() == 1 && !shown.dialogs[0].local.rendering;
    }));
}

TEST_F(SipTest, MessagesOfTheConfiguration_WaitFromTheBeginning)
{
    exchange::ExchangeConfig config;
    config.numbers = {{.number = "4711", .messages = {3, 1, 0, 0}}};
    exchange::Exchange exchange(loop, config);
    SipPeer phone(loop);

    phone.subscribe("sip:4711@" + exchange.hostPort(), "message-summary", "application/simple-message-summary");

    ASSERT_TRUE(phone.waitFor("notify message-summary"));
    EXPECT_NE(phone.notifications.back().content.body.find("Voice-Message: 3/1 (0/0)"), std::string::npos)
        << phone.notifications.back().content.body;
}

TEST_F(ExchangeSteps, GroupPickup_TakesCallsOfItsGroupOnly)
{
    auto const ringing = exchange::readSteps("ring").value();
    exchange.define({.number = "111", .steps = ringing, .pickupGroup = "sales"});
    exchange.define({.number = "112", .steps = ringing, .pickupGroup = "service"});
    exchange.define({.number = "4722", .pickupGroup = "service"});
    SipPeer picker(loop, "4722");
    phone.call(at("111"));
    ASSERT_TRUE(phone.waitFor("progress 180")) << phone.events();

    picker.call(at("*98"));
    EXPECT_TRUE(picker.waitFor("closed rejected 480")) << picker.events();

    phone.call(at("112"));
    ASSERT_TRUE(phone.waitFor("progress 180")) << phone.events();
    picker.call(at("*98"));
    EXPECT_TRUE(picker.waitFor("established")) << picker.events();
}

TEST_F(ExchangeSteps, ForgottenRegistration_MakesTheNumberUnavailable)
{
    registerPhone();

    exchange.setRegistrar({.kind = exchange::RegistrarConduct::Kind::kForget});

    EXPECT_FALSE(exchange.isRegistered("4711"));
    SipPeer other(loop, "4722");
    other.call(at("4711"));
    EXPECT_TRUE(other.waitFor("closed rejected 480")) << other.events();
}

}  // namespace

}  // namespace telephone::test
