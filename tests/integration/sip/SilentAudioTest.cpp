// Calls whose far end sends no audio any more.
#include <gtest/gtest.h>

#include "ScriptedEnd.h"
#include "SipFixture.h"
#include "telephone/time/Waiting.h"

namespace telephone::test {

class SilentAudio : public SipTest
{
protected:
    static sip::UserAgentConfig patient(std::chrono::seconds audioTimeout)
    {
        sip::UserAgentConfig config;
        config.audioTimeout = audioTimeout;
        return config;
    }
    // Two telephones, the other of which sends audio until it is told to fall silent.
    sip::Session& connect()
    {
        phone.call("sip:4712@" + other.agent->hostPort());
        EXPECT_TRUE(phone.waitFor("established")) << phone.events();
        return phone.session();
    }

    SipPeer phone{loop, "4711", patient(60s)};
    SipPeer other{loop, "4712"};
    ScriptedEnd far{loop};
};

TEST_F(SilentAudio, FarEndThatFallsSilent_EndsTheCallAfterAMinute)
{
    connect();
    sleepFor(100s);
    EXPECT_TRUE(other.session().fallSilent());

    sleepFor(59s);
    EXPECT_EQ(sip::SessionState::kEstablished, phone.session().state());

    EXPECT_TRUE(phone.waitFor("closed abandoned 408", 2s)) << phone.events();
    EXPECT_EQ("the far end sends no audio", phone.lastClosing.text);
}

TEST_F(SilentAudio, FarEndThatNeverSends_IsToldWhyTheCallEnds)
{
    phone.call(far.uri());
    far.accept(far.receive("INVITE "));
    EXPECT_TRUE(phone.waitFor("established")) << phone.events();

    EXPECT_TRUE(phone.waitFor("closed abandoned 408", 61s)) << phone.events();
    EXPECT_EQ("SIP;cause=408;text=\"the far end sends no audio\"", headerOf(far.receive("BYE "), "Reason"));
}

TEST_F(SilentAudio, CallOnHold_MayBeSilent)
{
    sip::Session& call = connect();
    EXPECT_TRUE(call.modify(sip::Direction::kSendOnly));
    EXPECT_TRUE(phone.waitFor("modified 200")) << phone.events();
    sleepFor(300s);
    EXPECT_EQ(sip::SessionState::kEstablished, call.state());

    EXPECT_TRUE(call.modify(sip::Direction::kSendReceive));
    EXPECT_TRUE(phone.waitFor("modified 200")) << phone.events();
    sleepFor(61s);
    EXPECT_EQ(sip::SessionState::kEstablished, call.state()) << "both ends send again";

    EXPECT_TRUE(other.session().fallSilent());
    EXPECT_TRUE(phone.waitFor("closed abandoned 408", 61s)) << phone.events();
}

TEST_F(SilentAudio, CallHeldByTheFarEnd_MayBeSilent)
{
    connect();
    EXPECT_TRUE(other.session().modify(sip::Direction::kSendOnly));
    EXPECT_TRUE(phone.waitFor("held")) << phone.events();
    EXPECT_TRUE(other.waitFor("modified 200")) << other.events();

    EXPECT_TRUE(other.session().fallSilent());
    sleepFor(120s);

    EXPECT_EQ(sip::SessionState::kEstablished, phone.session().state());
}

TEST_F(SilentAudio, LimitOfZero_IsNone)
{
    other.call(far.uri());
    far.accept(far.receive("INVITE "));
    EXPECT_TRUE(other.waitFor("established")) << other.events();

    sleepFor(600s);

    EXPECT_EQ(sip::SessionState::kEstablished, other.session().state());
}

}  // namespace telephone::test
