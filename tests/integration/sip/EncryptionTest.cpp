// Calls with encrypted audio between two user agents. All that they send each other is looked at on its way.
#include <algorithm>

#include "SipFixture.h"
#include "telephone/sip/DatagramFaults.h"

namespace telephone::test {

namespace {

constexpr std::int16_t kLoud = 988;  // a value that G.711 keeps
// Twenty milliseconds of it.
std::string clearText()
{
    return std::string(160, '\xce');
}

// A voice that says always the same, and an ear that counts how often it hears that.
class Voice : public sip::AudioSource, public sip::AudioSink
{
public:
    bool readFrame(sip::AudioFrame& frame) override
    {
        frame.fill(kLoud);
        return true;
    }
    void skipFrames(std::uint64_t /*count*/) override {}
    void writeFrame(sip::AudioFrame const& frame) override
    {
        sip::AudioFrame loud{};
        loud.fill(kLoud);
        heard += frame == loud ? 1 : 0;
    }

    int heard = 0;
};

// Everything that is sent while it exists.
class Wire
{
public:
    explicit Wire(sip::EventLoop& loop)
        : loop_(loop)
    {
        std::lock_guard const guard(loop_);
        id_ = sip::datagramFaults().begin(
            {.fate = sip::DatagramFate::kArrives, .concerns = [this](sip::Datagram const& datagram) {
                 (datagram.isRtp() ? audio : messages).emplace_back(datagram.bytes);
                 return false;
             }});
    }
    ~Wire()
    {
        std::lock_guard const guard(loop_);
        sip::datagramFaults().end(id_);
    }

    static bool contains(std::vector<std::string> const& datagrams, std::string const& text)
    {
        return std::ranges::any_of(datagrams,
                                   [&text](std::string const& each) { return each.find(text) != std::string::npos; });
    }
    // The attributes "crypto" of all messages, in order.
    std::vector<std::string> keys() const
    {
        std::vector<std::string> found;
        for (auto const& message : messages) {
            for (auto at = message.find("a=crypto:"); at != std::string::npos; at = message.find("a=crypto:", at + 1)) {
                found.push_back(message.substr(at, message.find('\r', at) - at));
            }
        }
        return found;
    }

    std::vector<std::string> audio;
    std::vector<std::string> messages;

private:
    sip::EventLoop& loop_;
    sip::DatagramFaults::Id id_ = 0;
};

sip::UserAgentConfig that(sip::Encryption encryption, bool keysWithoutTls = true)
{
    sip::UserAgentConfig config;
    config.encryption = encryption;
    config.keysWithoutTls = keysWithoutTls;
    return config;
}

class EncryptedCalls : public SipTest
{
protected:
    // The two ends, connected and speaking.
    void connect(sip::UserAgentConfig const& caller, sip::UserAgentConfig const& called)
    {
        first = std::make_unique<SipPeer>(loop, "4711", caller);
        second = std::make_unique<SipPeer>(loop, "4712", called);
        first->call("sip:4712@" + second->agent->hostPort());
        ASSERT_TRUE(first->waitFor("established")) << first->events();
        ASSERT_TRUE(second->waitFor("established")) << second->events();
        std::lock_guard const guard(loop);
        attach(*first, firstVoice);
        attach(*second, secondVoice);
    }
    static void attach(SipPeer& peer, Voice& voice)
    {
        peer.session().audio().setSource(&voice);
        peer.session().audio().setSink(&voice);
    }
    bool bothHear(int frames = 20)
    {
        int const before = firstVoice.heard;
        int const secondBefore = secondVoice.heard;
        return first->waitUntil(
            [&] { return firstVoice.heard >= before + frames && secondVoice.heard >= secondBefore + frames; });
    }
    bool isEncrypted() const
    {
        std::lock_guard const guard(first->loop);
        bool const encrypted = first->session().audio().isEncrypted();
        EXPECT_EQ(second->session().audio().isEncrypted(), encrypted);
        return encrypted;
    }

    std::string log;  // used to the end of the first
    Voice firstVoice;
    Voice secondVoice;
    std::unique_ptr<SipPeer> first;
    std::unique_ptr<SipPeer> second;
};

}  // namespace

TEST_F(EncryptedCalls, PlainCall_IsClearText)
{
    Wire wire(loop);
    connect(that(sip::Encryption::kNone), that(sip::Encryption::kOptional));

    EXPECT_TRUE(bothHear());

    EXPECT_TRUE(Wire::contains(wire.audio, clearText()));
    EXPECT_FALSE(isEncrypted());
}

TEST_F(EncryptedCalls, CallBetweenEndsThatMay_SendsNoClearText)
{
    Wire wire(loop);
    connect(that(sip::Encryption::kOptional), that(sip::Encryption::kOptional));

    EXPECT_TRUE(bothHear());

    EXPECT_GE(wire.audio.size(), 40U);
    EXPECT_FALSE(Wire::contains(wire.audio, clearText().substr(0, 4)));
    EXPECT_TRUE(isEncrypted());
}

TEST_F(EncryptedCalls, CallOfAnEndThatMust_SendsNoClearText)
{
    Wire wire(loop);
    connect(that(sip::Encryption::kRequired), that(sip::Encryption::kOptional));

    EXPECT_TRUE(bothHear());

    EXPECT_FALSE(Wire::contains(wire.audio, clearText().substr(0, 4)));
    EXPECT_TRUE(Wire::contains(wire.messages, " RTP/SAVP "));
    EXPECT_FALSE(Wire::contains(wire.messages, " RTP/AVP "));
}

TEST_F(EncryptedCalls, Digits_AreEncrypted)
{
    connect(that(sip::Encryption::kOptional), that(sip::Encryption::kOptional));
    Wire wire(loop);

    EXPECT_TRUE(first->session().sendDigits("5"));

    EXPECT_TRUE(second->waitFor("digit 5")) << second->events();
    EXPECT_FALSE(Wire::contains(wire.audio, std::string("\x05\x8a", 2) + '\x03')) << "the end of the digit";
}

TEST_F(EncryptedCalls, PlainCallToAnEndThatMust_IsRefusedWithTheReason)
{
    Wire wire(loop);
    first = std::make_unique<SipPeer>(loop, "4711");
    second = std::make_unique<SipPeer>(loop, "4712", that(sip::Encryption::kRequired));

    first->call("sip:4712@" + second->agent->hostPort());

    EXPECT_TRUE(first->waitFor("closed rejected 488")) << first->events();
    EXPECT_TRUE(Wire::contains(wire.messages, " \"encrypted audio is required\"\r\n"));
}

TEST_F(EncryptedCalls, KeysOfAnEndThatMust_DoNotTravelWithoutTls)
{
    Wire wire(loop);
    first = std::make_unique<SipPeer>(loop, "4711", that(sip::Encryption::kRequired, false));
    sip::CallRequest request;
    request.account = first->account;
    request.target = "sip:4712@" + first->agent->hostPort();

    auto const call = first->agent->call(request, *first);

    ASSERT_FALSE(call);
    EXPECT_EQ(
        (Refusal{RefusalKind::kNotSupported, "encrypted audio is required, but its keys would travel without TLS"}),
        call.error());
    EXPECT_TRUE(wire.messages.empty());
}

TEST_F(EncryptedCalls, CallToAnEndThatMustWithoutTls_IsRefusedWithTheReason)
{
    Wire wire(loop);
    first = std::make_unique<SipPeer>(loop, "4711", that(sip::Encryption::kOptional));
    second = std::make_unique<SipPeer>(loop, "4712", that(sip::Encryption::kRequired, false));

    first->call("sip:4712@" + second->agent->hostPort());

    EXPECT_TRUE(first->waitFor("closed rejected 488")) << first->events();
    EXPECT_TRUE(
        Wire::contains(wire.messages, " \"encrypted audio is required, but its keys would travel without TLS\"\r\n"));
}

TEST_F(EncryptedCalls, EndThatMayWithoutTls_SendsNoKeysAndTakesNone)
{
    Wire wire(loop);
    connect(that(sip::Encryption::kOptional, false), that(sip::Encryption::kOptional));
    EXPECT_FALSE(isEncrypted());
    EXPECT_TRUE(wire.keys().empty());

    second->call("sip:4711@" + first->agent->hostPort());

    ASSERT_TRUE(second->waitFor("established")) << second->events();
    std::lock_guard const guard(loop);
    EXPECT_FALSE(second->session(1).audio().isEncrypted());
}

TEST_F(EncryptedCalls, Hold_KeepsTheKeys)
{
    Wire wire(loop);
    connect(that(sip::Encryption::kOptional), that(sip::Encryption::kOptional));
    auto const before = wire.keys();
    ASSERT_EQ(before.size(), 5U) << "four offered, one answered";

    EXPECT_TRUE(first->session().modify(sip::Direction::kSendOnly));
    ASSERT_TRUE(first->waitFor("modified 200"));
    EXPECT_TRUE(first->session().modify(sip::Direction::kSendReceive));
    ASSERT_TRUE(first->waitFor("modified 200"));

    auto const after = wire.keys();
    ASSERT_EQ(after.size(), 15U);
    EXPECT_TRUE(std::equal(before.begin(), before.end(), after.begin() + 10));
    EXPECT_TRUE(bothHear());
}

TEST_F(EncryptedCalls, NewKeysInTheMiddleOfACall_AreUsedAtOnce)
{
    Wire wire(loop);
    connect(that(sip::Encryption::kOptional), that(sip::Encryption::kOptional));
    ASSERT_TRUE(bothHear());

    EXPECT_TRUE(first->session().modify(sip::Direction::kSendReceive, true));

    ASSERT_TRUE(first->waitFor("modified 200"));
    auto const keys = wire.keys();
    ASSERT_EQ(keys.size(), 10U);
    EXPECT_NE(keys[0], keys[5]);
    EXPECT_TRUE(bothHear());
    EXPECT_FALSE(Wire::contains(wire.audio, clearText().substr(0, 4)));
}

TEST_F(EncryptedCalls, ChangeToPlainAndBack_TakesEffectAtBothEnds)
{
    connect(that(sip::Encryption::kOptional), that(sip::Encryption::kOptional));

    EXPECT_TRUE(first->session().modify(sip::Direction::kSendReceive, false));
    ASSERT_TRUE(first->waitFor("modified 200"));
    EXPECT_FALSE(isEncrypted());
    EXPECT_TRUE(bothHear());

    EXPECT_TRUE(second->session().modify(sip::Direction::kSendReceive, true));
    ASSERT_TRUE(second->waitFor("modified 200"));
    EXPECT_TRUE(isEncrypted());
    EXPECT_TRUE(bothHear());
}

TEST_F(EncryptedCalls, ChangeToPlainThatTheFarEndRefuses_LeavesTheCallEncrypted)
{
    connect(that(sip::Encryption::kOptional), that(sip::Encryption::kRequired));

    EXPECT_TRUE(first->session().modify(sip::Direction::kSendReceive, false));

    EXPECT_TRUE(first->waitFor("refused 488")) << first->events();
    EXPECT_TRUE(isEncrypted());
    EXPECT_TRUE(bothHear());
}

TEST_F(EncryptedCalls, Log_HasNoKeys)
{
    auto config = that(sip::Encryption::kOptional);
    config.traceMessages = [] { return true; };
    config.log = [this](sip::LogLevel, std::string const& line) { log += line + "\n"; };

    connect(config, that(sip::Encryption::kOptional));

    std::lock_guard const guard(loop);
    EXPECT_NE(log.find("a=crypto:1 AEAD_AES_256_GCM inline:***\r\n"), std::string::npos);
    for (auto at = log.find("inline:"); at != std::string::npos; at = log.find("inline:", at + 1)) {
        EXPECT_EQ(log.substr(at, 12), "inline:***\r\n");
    }
}

}  // namespace telephone::test
