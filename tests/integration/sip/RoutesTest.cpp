// Where the requests of a telephone go, and which of them it refuses to send.
#include "ScriptedEnd.h"
#include "SipFixture.h"

namespace telephone::test {

class Routes : public SipTest
{
protected:
    // The request as it arrives at the far end.
    std::string options(sip::Account const& account, std::string const& target)
    {
        auto const asked = phone_.agent->request(account, "OPTIONS", target, {}, {}, {});
        EXPECT_TRUE(asked) << asked.error().reason;
        return far_.receive("OPTIONS ");
    }
    Refusal refusalOf(std::string const& target) { return refusalOf(phone_.account, target); }
    Refusal refusalOf(sip::Account const& account, std::string const& target)
    {
        auto const asked = phone_.agent->request(account, "OPTIONS", target, {}, {}, {});
        return asked ? Refusal{} : asked.error();
    }
    std::string port() const { return far_.hostPort().substr(far_.hostPort().find(':')); }

    SipPeer phone_{loop};
    ScriptedEnd far_{loop};
};

TEST_F(Routes, Localhost_IsTheLoopbackAddress)
{
    EXPECT_EQ("OPTIONS " + far_.uri() + " SIP/2.0", firstLineOf(options(phone_.account, "sip:far@LocalHost" + port())));
}

TEST_F(Routes, LocalhostOfATelephoneWithIpv6Alone_IsItsLoopbackAddress)
{
    sip::UserAgentConfig config;
    config.address = "::1";
    SipPeer called(loop, "4712", config);
    SipPeer caller(loop, "4713", config);

    caller.call("sip:4712@localhost:" + std::to_string(called.agent->udpPort()));

    EXPECT_TRUE(caller.waitFor("established")) << caller.events();
}

TEST_F(Routes, TargetWithAnAddressBesideItsName_GoesThere)
{
    std::string const target = "sip:far@nowhere.invalid" + port() + ";maddr=127.0.0.1";

    EXPECT_EQ("OPTIONS " + target + " SIP/2.0", firstLineOf(options(phone_.account, target)));
}

TEST_F(Routes, AccountWithoutAUser_IsAnonymousAtItsAddress)
{
    std::string const message = options({}, far_.uri());

    EXPECT_TRUE(headerOf(message, "From").starts_with("<sip:anonymous@" + phone_.agent->hostPort() + ">;tag="))
        << message;
}

TEST_F(Routes, UserWithSpecialCharacters_IsEscaped)
{
    sip::Account account;
    account.user = "a#b c";
    account.domain = "pbx";
    account.displayName = "Ann <1>";

    std::string const message = options(account, far_.uri());

    EXPECT_TRUE(headerOf(message, "From").starts_with("\"Ann <1>\" <sip:a%23b%20c@pbx>;tag=")) << message;
}

TEST_F(Routes, OutboundProxy_GetsTheRequestForTheTarget)
{
    sip::Account account = phone_.account;
    account.proxy = "sip:127.0.0.1" + port();

    std::string const message = options(account, "sip:100@nowhere.invalid");

    EXPECT_EQ("OPTIONS sip:100@nowhere.invalid SIP/2.0", firstLineOf(message));
    EXPECT_EQ("<sip:127.0.0.1" + port() + ";lr>", headerOf(message, "Route"));
}

TEST_F(Routes, AccountOverTcp_AsksForItUnlessTheTargetSaysOtherwise)
{
    SipPeer other(loop, "4712");
    sip::Account account = phone_.account;
    account.transport = sip::Transport::kTcp;
    std::string const target = "sip:4712@" + other.agent->hostPort();
    auto const call = [&](std::string const& to) {
        phone_.call(to, [&](sip::CallRequest& request) { request.account = account; });
        EXPECT_TRUE(other.waitFor("established")) << other.events();
        return other.lastInvitation.requestUri;
    };

    EXPECT_EQ(target + ";transport=tcp", call(target));
    EXPECT_EQ(target + ";transport=UDP", call(target + ";transport=UDP"));
}

TEST_F(Routes, WhatIsNoSipUri_IsRefused)
{
    EXPECT_EQ((Refusal{RefusalKind::kBadInput, "\"tel:+4930\" is not a SIP URI"}), refusalOf("tel:+4930"));
    EXPECT_EQ((Refusal{RefusalKind::kBadInput, "\"far\" is not a SIP URI"}), refusalOf("far"));
}

TEST_F(Routes, WhatIsOutsideTheProcess_IsRefusedInVirtualTime)
{
    EXPECT_EQ((Refusal{RefusalKind::kUnavailable,
                       "in virtual time only the telephone and its exchange can be reached, and neither is at "
                       "192.0.2.1:5060"}),
              refusalOf("sip:far@192.0.2.1"));
    EXPECT_EQ(
        (Refusal{RefusalKind::kUnavailable, "[2001:db8::1]:5061 cannot be reached: the telephone has no IPv6 address"}),
        refusalOf("sip:far@[2001:db8::1]:5061"));
}

TEST_F(Routes, Tls_IsRefusedInVirtualTime)
{
    Refusal const noTls{RefusalKind::kNotSupported, "there is no TLS in virtual time: use udp or tcp"};
    sip::Account account = phone_.account;
    account.transport = sip::Transport::kTls;

    EXPECT_EQ(noTls, refusalOf("sips:far@" + far_.hostPort()));
    EXPECT_EQ(noTls, refusalOf(far_.uri() + ";transport=TLS"));
    EXPECT_EQ(noTls, refusalOf(account, far_.uri()));
    EXPECT_EQ(0, phone_.agent->tlsPort());
}

TEST_F(Routes, Datagram_NeedsANumericHost)
{
    auto const reasonOf = [this](std::string const& target) {
        auto const sent = phone_.agent->sendDatagram(target, "noise");
        return sent ? "sent" : sent.error().reason;
    };

    EXPECT_EQ("\"far\" is not a SIP URI with an IP address", reasonOf("far"));
    EXPECT_EQ("\"sip:far@host\" is not a SIP URI with an IP address", reasonOf("sip:far@host"));
    EXPECT_EQ("sent", reasonOf(far_.uri()));
    EXPECT_EQ("noise", far_.receive("noise"));
}

TEST_F(Routes, FailureOfARequest_IsATimeoutOrUnavailable)
{
    std::vector<std::string> answers;
    auto const done = [&answers](sip::Response const& answer) {
        answers.push_back(std::to_string(answer.status) + " " + answer.reason);
    };
    ASSERT_TRUE(phone_.agent->request(phone_.account, "OPTIONS", far_.uri(), {}, {}, done));
    ASSERT_TRUE(phone_.agent->request(phone_.account, "OPTIONS", far_.uri() + ";transport=tcp", {}, {}, done));

    EXPECT_TRUE(phone_.waitUntil([&] { return answers.size() == 2; }, 33s));
    EXPECT_EQ((std::vector<std::string>{"503 Connection refused", "408 Connection timed out"}), answers);
}

TEST_F(Routes, Trace_ShowsEachMessageOnceItIsAskedFor)
{
    std::vector<std::string> lines;
    bool traces = false;
    sip::UserAgentConfig config;
    config.log = [&lines](sip::LogLevel level, std::string const& line) {
        EXPECT_EQ(sip::LogLevel::kDebug, level);
        lines.push_back(line.substr(0, line.find("SIP/2.0")));
    };
    config.traceMessages = [&traces] { return traces; };
    SipPeer traced(loop, "4712", config);
    far_.ask("OPTIONS", "4712", traced.agent->hostPort());
    far_.receive("SIP/2.0 200");
    {
        std::lock_guard const guard(loop);
        EXPECT_TRUE(lines.empty());
        traces = true;
    }

    std::string const asked = far_.ask("OPTIONS", "4712", traced.agent->hostPort());
    far_.receive("SIP/2.0 200");

    std::lock_guard const guard(loop);
    EXPECT_EQ((std::vector<std::string>{"received from " + far_.hostPort() + "\nOPTIONS sip:4712@" +
                                            traced.agent->hostPort() + " ",
                                        "sent to " + far_.hostPort() + "\n"}),
              lines);
}

}  // namespace telephone::test
