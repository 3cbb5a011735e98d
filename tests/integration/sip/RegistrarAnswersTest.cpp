// Registrations with a registrar that is written message by message: what it grants, and when the telephone comes back.
#include "ScriptedEnd.h"
#include "SipFixture.h"
#include "telephone/time/Waiting.h"

namespace telephone::test {

class RegistrarAnswers : public SipTest
{
protected:
    std::string ask(std::function<void(sip::Account&)> const& change = {})
    {
        phone.registerAt(registrar.hostPort(), "secret", change);
        return registrar.receive("REGISTER ");
    }
    // Accepts the next request with these headers.
    void grant(std::string const& headers)
    {
        registrar.answer(registrar.receive("REGISTER "), "200 OK", "Contact: <sip:other@127.0.0.1>\r\n" + headers);
    }
    bool comesNotWithin(std::chrono::milliseconds pause)
    {
        sleepFor(pause);
        return registrar.hearsNothingOf("REGISTER ", 0ms);
    }
    // Whether the next request comes then, and not a twentieth of a second earlier.
    bool comesBackAfter(std::chrono::milliseconds pause)
    {
        bool const isLate = comesNotWithin(pause - 50ms);
        request = registrar.receive("REGISTER ", 250ms);
        return isLate && !request.empty();
    }

    SipPeer phone{loop};
    ScriptedEnd registrar{loop};
    std::string request;
};

struct Granted
{
    char const* expires;
    std::chrono::milliseconds refresh;
};

class GrantedTimes : public RegistrarAnswers, public ::testing::WithParamInterface<Granted>
{};

TEST_P(GrantedTimes, AreRefreshedBeforeTheyEnd)
{
    phone.registerAt(registrar.hostPort());

    grant(std::string("Expires: ") + GetParam().expires + "\r\n");

    ASSERT_TRUE(phone.waitFor(std::string("registered ") + GetParam().expires)) << phone.events();
    EXPECT_TRUE(comesBackAfter(GetParam().refresh));
}

INSTANTIATE_TEST_SUITE_P(Seconds, GrantedTimes,
                         ::testing::Values(Granted{"1", 500ms}, Granted{"2", 1000ms}, Granted{"19", 9500ms},
                                           Granted{"20", 18000ms}, Granted{"3600", 3240s}));

TEST_F(RegistrarAnswers, WithTheTimeInTheContact_GrantThat)
{
    std::string const contact = headerOf(ask(), "Contact");
    std::string const own = contact.substr(0, contact.find(";expires="));
    registrar.answer(registrar.receive("REGISTER "), "200 OK",
                     "Contact: <sip:other@127.0.0.1>;expires=60, " + own + ";expires=120\r\nExpires: 600\r\n");

    EXPECT_TRUE(phone.waitFor("registered 120")) << phone.events();
}

TEST_F(RegistrarAnswers, WithoutATimeInTheOwnContact_GrantThatOfTheAnswer)
{
    std::string const contact = headerOf(ask(), "Contact");
    std::string const own = contact.substr(0, contact.find(";expires="));
    registrar.answer(registrar.receive("REGISTER "), "200 OK", "Contact: " + own + "\r\nExpires: 600\r\n");
    EXPECT_TRUE(phone.waitFor("registered 600")) << phone.events();

    sleepFor(540s);
    registrar.answer(registrar.receive("REGISTER "), "200 OK", "Contact: " + own + "\r\n");
    EXPECT_TRUE(phone.waitFor("registered 3600")) << phone.events();
}

TEST_F(RegistrarAnswers, WithoutAnyContactOfOurs_GrantWhatWasAsked)
{
    phone.registerAt(registrar.hostPort(), "secret", [](sip::Account& account) { account.expires = 77; });

    grant({});

    EXPECT_TRUE(phone.waitFor("registered 77")) << phone.events();
}

TEST_F(RegistrarAnswers, ThatGrantNothing_AreAFailureAndAreTriedAgain)
{
    phone.registerAt(registrar.hostPort());

    grant("Expires: 0\r\n");

    ASSERT_TRUE(phone.waitFor("unregistered 503")) << phone.events();
    EXPECT_EQ("the registrar granted 0 seconds", phone.lastFailure);
    EXPECT_NE("", registrar.receive("REGISTER ", 2s));
}

TEST_F(RegistrarAnswers, ThatWantLongerTimes_GetThem)
{
    registrar.answer(ask([](sip::Account& account) { account.expires = 60; }), "423 Interval Too Brief",
                     "Min-Expires: 300\r\n");

    std::string const second = registrar.receive("REGISTER ");
    EXPECT_NE(std::string::npos, headerOf(second, "Contact").find(">;expires=300")) << second;
    EXPECT_EQ("", phone.events());
    registrar.answer(second, "423 Interval Too Brief", "Min-Expires: 300\r\n");
    ASSERT_TRUE(phone.waitFor("unregistered 423")) << phone.events();
    EXPECT_EQ("Interval Too Brief", phone.lastFailure);
}

TEST_F(RegistrarAnswers, ThatForbidForGood_AreNotAskedAgain)
{
    for (char const* status :
         {"401 Unauthorized", "403 Forbidden", "404 Not Found", "407 Proxy Authentication Required"}) {
        registrar.answer(ask(), status);

        ASSERT_TRUE(phone.waitFor("unregistered " + std::string(status, 3))) << phone.events();
        EXPECT_TRUE(comesNotWithin(2h)) << status;
        phone.registration.reset();
    }
}

TEST_F(RegistrarAnswers, ThatRefuseInAnotherWay_AreAskedAgain)
{
    for (char const* status : {"400 Bad Request", "402 Payment Required", "405 Method Not Allowed", "408 Timeout"}) {
        registrar.answer(ask(), status);

        ASSERT_TRUE(phone.waitFor("unregistered " + std::string(status, 3))) << phone.events();
        EXPECT_FALSE(comesNotWithin(3s)) << status;
        phone.registration.reset();
        phone.forget();
        registrar.hearsNothingOf("what is still on its way", 1s);
    }
}

TEST_F(RegistrarAnswers, ThatNameARoute_AreForgottenWithTheRegistration)
{
    ScriptedEnd proxy(loop);
    ScriptedEnd called(loop);
    phone.registerAt(registrar.hostPort());
    grant("Expires: 300\r\nService-Route: <" + proxy.uri() + ";lr>\r\n");
    ASSERT_TRUE(phone.waitFor("registered 300")) << phone.events();
    phone.call(called.uri());
    EXPECT_NE("", proxy.receive("INVITE ", 1s));

    phone.registration.reset();
    phone.call(called.uri());

    std::string const direct = called.receive("INVITE ", 1s);
    EXPECT_NE("", direct);
    EXPECT_EQ("", headerOf(direct, "Route"));
}

TEST_F(RegistrarAnswers, ThatChallengeAPassword_AreNotAskedAgain)
{
    phone.registerAt(registrar.hostPort(), "");

    registrar.answer(registrar.receive("REGISTER "), "401 Unauthorized",
                     "WWW-Authenticate: Digest realm=\"pbx\", nonce=\"n\"\r\n");

    ASSERT_TRUE(phone.waitFor("unregistered 401")) << phone.events();
    EXPECT_TRUE(comesNotWithin(2h));
}

TEST_F(RegistrarAnswers, ThatRefuseForNow_AreAskedAfterPausesThatDouble)
{
    registrar.answer(ask([](sip::Account& account) { account.retryMax = 10s; }), "500 Server Internal Error");

    for (auto const limit : {2s, 4s, 8s, 10s, 10s}) {
        EXPECT_TRUE(comesNotWithin(limit / 2 - 50ms)) << limit.count();
        std::string const again = registrar.receive("REGISTER ", limit / 2 + 250ms);
        ASSERT_NE("", again) << limit.count();
        registrar.answer(again, "500 Server Internal Error");
    }
}

TEST_F(RegistrarAnswers, ThatSayWhen_AreAskedThen)
{
    registrar.answer(ask(), "503 Service Unavailable", "Retry-After: 37\r\n");
    EXPECT_TRUE(comesBackAfter(37s));

    registrar.answer(request, "480 Temporarily Unavailable", "Retry-After: 1 (busy)\r\n");
    EXPECT_TRUE(comesBackAfter(1s));
}

TEST_F(RegistrarAnswers, ThatDoNotCome_AreATimeoutAfterEightSeconds)
{
    ask();

    EXPECT_FALSE(phone.waitFor("unregistered 408", 7900ms));
    ASSERT_TRUE(phone.waitFor("unregistered 408", 200ms)) << phone.events();
    EXPECT_EQ("Request Timeout", phone.lastFailure);
}

TEST_F(RegistrarAnswers, ThatComeAfterTheTimeout_AreIgnored)
{
    std::string const asked = ask();
    ASSERT_TRUE(phone.waitFor("unregistered 408")) << phone.events();

    registrar.answer(asked, "200 OK", "Expires: 300\r\n");

    EXPECT_FALSE(phone.waitFor("registered 300", 400ms));
}

TEST_F(RegistrarAnswers, AfterTheTelephoneHasGone_AreNotAskedFor)
{
    registrar.answer(ask(), "500 Server Internal Error");
    ASSERT_TRUE(phone.waitFor("unregistered 500")) << phone.events();

    phone.registration.reset();

    EXPECT_TRUE(comesNotWithin(1h)) << "neither again nor to take anything back";
}

TEST_F(RegistrarAnswers, WithTwoNames_AreAnsweredToEachOfThem)
{
    registrar.answer(ask(), "401 Unauthorized",
                     "WWW-Authenticate: Digest realm=\"a\", nonce=\"1\", qop=\"auth\", opaque=\"o\"\r\n"
                     "Proxy-Authenticate: Digest realm=\"b\", nonce=\"2\", algorithm=MD5-sess\r\n");

    std::string const second = registrar.receive("REGISTER ");
    EXPECT_TRUE(headerOf(second, "Authorization").ends_with(", qop=auth, nc=00000001")) << second;
    EXPECT_NE(std::string::npos, headerOf(second, "Authorization").find(", opaque=\"o\", cnonce=\"")) << second;
    std::string const ofProxy = headerOf(second, "Proxy-Authorization");
    EXPECT_TRUE(ofProxy.starts_with(
        "Digest username=\"4711\", realm=\"b\", nonce=\"2\", uri=\"sip:" + registrar.hostPort() + "\", response=\""))
        << second;
    EXPECT_NE(std::string::npos, ofProxy.find("\", algorithm=MD5-sess, cnonce=\"")) << second;
}

TEST_F(RegistrarAnswers, ThatChallengeAgain_AreAnsweredOnlyIfTheNonceIsStale)
{
    std::string const challenge = "WWW-Authenticate: Digest realm=\"pbx\", qop=\"auth\", nonce=";
    registrar.answer(ask(), "401 Unauthorized", challenge + "\"1\"\r\n");
    registrar.answer(registrar.receive("REGISTER "), "401 Unauthorized", challenge + "\"2\", stale=TRUE\r\n");
    std::string const third = registrar.receive("REGISTER ");
    EXPECT_NE(std::string::npos, headerOf(third, "Authorization").find("nonce=\"2\"")) << third;
    EXPECT_TRUE(headerOf(third, "Authorization").ends_with(", nc=00000001")) << third;

    registrar.answer(third, "401 Unauthorized", challenge + "\"3\"\r\n");

    EXPECT_TRUE(phone.waitFor("unregistered 401")) << phone.events();
    EXPECT_TRUE(registrar.hearsNothingOf("REGISTER ", 1s));
}

TEST_F(RegistrarAnswers, ChallengeOfAnotherKind_IsNotAnsweredAndTheLogSaysWhy)
{
    std::string log;
    sip::UserAgentConfig config;
    config.log = [&log](sip::LogLevel, std::string const& line) { log += line + "\n"; };
    SipPeer logging(loop, "4711", config);
    logging.registerAt(registrar.hostPort());

    registrar.answer(registrar.receive("REGISTER "), "401 Unauthorized", "WWW-Authenticate: Basic realm=\"pbx\"\r\n");
    ASSERT_TRUE(logging.waitFor("unregistered 401")) << logging.events();
    logging.registerAt(registrar.hostPort());
    registrar.answer(registrar.receive("REGISTER "), "401 Unauthorized",
                     "WWW-Authenticate: Digest realm=\"pbx\", nonce=\"1\", algorithm=X\r\n");
    ASSERT_TRUE(logging.waitFor("unregistered 401")) << logging.events();

    EXPECT_EQ("the challenge from " + registrar.hostPort() +
                  " is not a digest challenge, which is not supported: it is not answered\n"
                  "Registration of sip:4711@" +
                  registrar.hostPort() +
                  " failed: 401 Unauthorized\n"
                  "the challenge from " +
                  registrar.hostPort() +
                  " uses the algorithm X, which is not supported: it is not answered\n"
                  "Registration of sip:4711@" +
                  registrar.hostPort() + " failed: 401 Unauthorized\n",
              log);
}

}  // namespace telephone::test
