// Requests outside a call, and what they are answered with.
#include <array>

#include "ScriptedEnd.h"
#include "SipFixture.h"

namespace telephone::test {

class Requests : public SipTest
{
protected:
    std::string answerTo(std::string const& method, std::string const& headers = {}, std::string const& user = "4711")
    {
        far_.ask(method, user, phone_.agent->hostPort(), headers);
        answer_ = far_.receive("SIP/2.0 ");
        return firstLineOf(answer_);
    }

    ScriptedEnd far_{loop};
    SipPeer phone_{loop};
    std::string answer_;
};

// In virtual time, too.
TEST_F(SipTest, ConnectionTooManyOfOthers_IsRefused)
{
    sip::UserAgentConfig config;
    config.limits.connections = 1;
    SipPeer called(loop, "4712", config);
    SipPeer first(loop);
    SipPeer second(loop, "4713");
    std::string const target = "sip:4712@" + called.agent->hostPort(sip::Transport::kTcp) + ";transport=tcp";

    first.call(target);
    ASSERT_TRUE(first.waitFor("established")) << first.events();
    second.call(target);

    EXPECT_TRUE(second.waitFor("closed timeout 408", 40s)) << second.events();
    EXPECT_EQ(called.sessionCount(), 1U);
}

TEST_F(Requests, Options_NameWhatIsSupported)
{
    EXPECT_EQ("SIP/2.0 200 OK", answerTo("OPTIONS"));
    EXPECT_EQ("INVITE, ACK, BYE, CANCEL, OPTIONS, INFO, PRACK, UPDATE, REFER, NOTIFY, SUBSCRIBE",
              headerOf(answer_, "Allow"));
    EXPECT_EQ("application/sdp, application/dtmf-relay, message/sipfrag", headerOf(answer_, "Accept"));
    EXPECT_EQ("replaces, join, timer, 100rel", headerOf(answer_, "Supported"));
    EXPECT_EQ("SIP/2.0 404 Not Found", answerTo("OPTIONS", "", "unknown"));
}

TEST_F(Requests, RequiredExtensions_ThatAreMissingAreNamed)
{
    EXPECT_EQ("SIP/2.0 420 Bad Extension", answerTo("OPTIONS", "Require: gruu, replaces, path\r\n"));
    EXPECT_EQ("gruu, path", headerOf(answer_, "Unsupported"));
    EXPECT_EQ("SIP/2.0 200 OK", answerTo("OPTIONS", "Require: Replaces\r\n"));
}

TEST_F(Requests, NotifyThatNobodyAskedFor_IsPassedOnIfItNamesItsEvent)
{
    EXPECT_EQ("SIP/2.0 489 Bad Event", answerTo("NOTIFY"));
    EXPECT_EQ("SIP/2.0 200 OK", answerTo("NOTIFY", "Event: message-summary\r\nSubscription-State: active\r\n"));
    EXPECT_TRUE(phone_.waitFor("unsolicited message-summary")) << phone_.events();
}

TEST_F(Requests, Subscription_NeedsAnEventAUserAndAContact)
{
    EXPECT_EQ("SIP/2.0 489 Bad Event", answerTo("SUBSCRIBE"));
    EXPECT_EQ("SIP/2.0 489 Bad Event", answerTo("SUBSCRIBE", "Event: ;\r\n"));
    EXPECT_EQ("SIP/2.0 404 Not Found", answerTo("SUBSCRIBE", "Event: dialog\r\n", "unknown"));
    EXPECT_EQ("SIP/2.0 400 Missing Contact", answerTo("SUBSCRIBE", "Event: dialog\r\nContact: \r\n"));
    EXPECT_EQ("", phone_.events());
}

TEST_F(Requests, Invite_ForAnUnknownUserIsNotFound)
{
    EXPECT_EQ("SIP/2.0 404 Not Found", answerTo("INVITE", "", "unknown"));
}

TEST_F(Requests, Refer_NeedsATarget)
{
    EXPECT_EQ("SIP/2.0 400 Bad Refer-To", answerTo("REFER"));
    EXPECT_EQ("SIP/2.0 400 Bad Refer-To", answerTo("REFER", "Refer-To: nobody\r\n"));
}

TEST_F(Requests, Info_IsTakenWithItsContent)
{
    EXPECT_EQ("SIP/2.0 200 OK", answerTo("INFO", "c: text/plain;charset=utf-8\r\n"));
    EXPECT_EQ("text/plain;charset=utf-8", phone_.lastInfo.type);
}

TEST_F(Requests, MethodThatNobodyTakes_IsNotAllowed)
{
    EXPECT_EQ("SIP/2.0 405 Method Not Allowed", answerTo("PUBLISH"));
    EXPECT_EQ("INVITE, ACK, BYE, CANCEL, OPTIONS, INFO, PRACK, UPDATE, REFER, NOTIFY, SUBSCRIBE",
              headerOf(answer_, "Allow"));
}

TEST_F(Requests, ByeAndCancelOfNothing_DoNotExist)
{
    EXPECT_EQ("SIP/2.0 481 Call Does Not Exist", answerTo("BYE"));
    EXPECT_EQ("SIP/2.0 481 Call/Transaction Does Not Exist", answerTo("CANCEL"));
}

// Requests that are written line by line.
class RequestLines : public Requests
{
protected:
    // Asks with these lines, "{n}" standing for a number of the request's own; the first line of the answer.
    std::string answerTo(std::string const& method, std::vector<std::string> const& lines, std::string const& body = {})
    {
        std::string text = method + " sip:4711@" + phone_.agent->hostPort() + " SIP/2.0\r\n";
        for (auto const& line : lines) {
            text += line + "\r\n";
        }
        text += "\r\n" + body;
        std::string const number = std::to_string(++number_);
        for (auto place = text.find("{n}"); place != std::string::npos; place = text.find("{n}")) {
            text.replace(place, 3, number);
        }
        far_.sendTo(phone_.agent->hostPort(), text);
        return firstLineOf(far_.receive("SIP/2.0 ", 1s));
    }
    std::vector<std::string> linesOf(std::string const& method, std::string const& toTag = {}) const
    {
        return {"Via: SIP/2.0/UDP " + far_.hostPort() + ";branch=z9hG4bK{n};rport",
                "From: <sip:far@127.0.0.1>;tag=far",
                "To: <sip:4711@127.0.0.1>" + toTag,
                "Call-ID: lines{n}",
                "CSeq: 1 " + method,
                "Contact: <" + far_.uri() + ">"};
    }

    int number_ = 0;
};

TEST_F(RequestLines, ThatEveryRequestHas_MustBeThere)
{
    struct Row
    {
        std::size_t line;
        std::string text;
        char const* answer;
    };
    std::string const via = "Via: SIP/2.0/UDP " + far_.hostPort() + ";rport";
    Row const rows[] = {{0, "Subject: x", ""},
                        {0, via, ""},
                        {1, "Subject: x", "SIP/2.0 400 Bad Request"},
                        {1, "From: <sip:far@127.0.0.1>", "SIP/2.0 400 Bad Request"},
                        {2, "Subject: x", "SIP/2.0 400 Bad Request"},
                        {3, "Subject: x", "SIP/2.0 400 Bad Request"},
                        {4, "Subject: x", "SIP/2.0 400 Bad Request"},
                        {5, "Subject: x", "SIP/2.0 200 OK"}};
    for (auto const& row : rows) {
        auto lines = linesOf("OPTIONS");
        lines[row.line] = row.text;
        EXPECT_EQ(row.answer, answerTo("OPTIONS", lines)) << row.line << " " << row.text;
    }
}

TEST_F(RequestLines, WithTheSequence_HaveANumberBelowTwoToThe31stAndTheMethod)
{
    struct Row
    {
        char const* sequence;
        char const* answer;
    };
    constexpr auto kRows = std::to_array<Row>({{"0 OPTIONS", "SIP/2.0 200 OK"},
                                               {"2147483647 OPTIONS", "SIP/2.0 200 OK"},
                                               {"2147483648 OPTIONS", "SIP/2.0 400 Bad Request"},
                                               {"1\tOPTIONS", "SIP/2.0 200 OK"},
                                               {"1 options", "SIP/2.0 400 Bad Request"}});
    for (auto const& row : kRows) {
        auto lines = linesOf("OPTIONS");
        lines[4] = std::string("CSeq: ") + row.sequence;
        EXPECT_EQ(row.answer, answerTo("OPTIONS", lines)) << row.sequence;
    }
}

TEST_F(RequestLines, WithTheLength_SayNoMoreThanThereIs)
{
    struct Row
    {
        char const* line;
        char const* answer;
    };
    constexpr auto kRows = std::to_array<Row>({{"Content-Length: 5", "SIP/2.0 200 OK"},
                                               {"Content-Length: 4", "SIP/2.0 200 OK"},
                                               {"Content-Length: 6", "SIP/2.0 400 Bad Request"},
                                               {"Content-Length: 5x", "SIP/2.0 400 Bad Request"},
                                               {"Subject: no length", "SIP/2.0 200 OK"}});
    for (auto const& row : kRows) {
        auto lines = linesOf("OPTIONS");
        lines.emplace_back(row.line);
        EXPECT_EQ(row.answer, answerTo("OPTIONS", lines, "hello")) << row.line;
    }
}

TEST_F(RequestLines, OfACallThatDoesNotExist_AreToldSo)
{
    for (char const* method : {"INFO", "REFER", "BYE"}) {
        EXPECT_EQ("SIP/2.0 481 Call Does Not Exist", answerTo(method, linesOf(method, ";tag=gone"))) << method;
    }
    for (char const* method : {"PRACK", "UPDATE"}) {
        EXPECT_EQ("SIP/2.0 481 Call/Transaction Does Not Exist", answerTo(method, linesOf(method, ";tag=gone")))
            << method;
        EXPECT_EQ("SIP/2.0 481 Call/Transaction Does Not Exist", answerTo(method, linesOf(method))) << method;
    }
    EXPECT_EQ("SIP/2.0 405 Method Not Allowed", answerTo("PUBLISH", linesOf("PUBLISH", ";tag=gone")));
    EXPECT_EQ("", answerTo("ACK", linesOf("ACK", ";tag=gone")));
    EXPECT_EQ("", phone_.events());
}

}  // namespace telephone::test
