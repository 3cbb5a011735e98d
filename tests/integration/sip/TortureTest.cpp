// The messages of RFC 4475 that a user agent refuses for what they are, each with the answer that the RFC expects.
// Their addresses are those of the test.
#include <gtest/gtest.h>

#include "ScriptedEnd.h"
#include "SipFixture.h"

namespace telephone::test {

class Torture : public SipTest
{
protected:
    // `line` and `cseq` as in the RFC; {phone} and {far} stand for the addresses.
    std::string answerTo(std::string line, std::string const& cseq, std::string const& length,
                         std::string const& body = {})
    {
        if (auto const place = line.find("{phone}"); place != std::string::npos) {
            line.replace(place, 7, phone.agent->hostPort());
        }
        std::string const host = far.hostPort();
        far.sendTo(phone.agent->hostPort(),
                   line + "\r\nVia: SIP/2.0/UDP " + host +
                       ";branch=z9hG4bK.torture;rport\r\nMax-Forwards: 80\r\nTo: <sip:j.user@" + host +
                       ">\r\nFrom: <sip:caller@" + host + ">;tag=93942939o2\r\nContact: <sip:caller@" + host +
                       ">\r\nCall-ID: torture." + cseq + "\r\nCSeq: " + cseq + "\r\n" +
                       (body.empty() ? "" : "Content-Type: application/sdp\r\n") + "Content-Length: " + length +
                       "\r\n\r\n" + body);
        std::string const answer = far.receive("SIP/2.0 ", 1s);
        return answer.substr(0, answer.find("\r\n"));
    }

    SipPeer phone{loop};
    ScriptedEnd far{loop};
};

// 3.1.2.2, "clerr"
TEST_F(Torture, ContentLengthLargerThanTheMessage_IsABadRequest)
{
    EXPECT_EQ("SIP/2.0 400 Bad Request",
              answerTo("INVITE sip:user@{phone} SIP/2.0", "8 INVITE", "9999", far.description()));
}

// 3.1.2.3, "ncl"
TEST_F(Torture, NegativeContentLength_IsABadRequest)
{
    EXPECT_EQ("SIP/2.0 400 Bad Request",
              answerTo("INVITE sip:user@{phone} SIP/2.0", "8 INVITE", "-999", far.description()));
}

// 3.1.2.4, "scalar02"
TEST_F(Torture, SequenceNumberThatIsTooLarge_IsABadRequest)
{
    EXPECT_EQ("SIP/2.0 400 Bad Request",
              answerTo("REGISTER sip:{phone} SIP/2.0", "36893488147419103232 REGISTER", "0"));
}

// 3.1.2.16, "badvers"
TEST_F(Torture, AnotherVersion_IsNotSupported)
{
    EXPECT_EQ("SIP/2.0 505 Version Not Supported",
              answerTo("OPTIONS sip:t.watson@{phone} SIP/7.0", "31417 OPTIONS", "0"));
    EXPECT_EQ("SIP/2.0 505 Version Not Supported",
              answerTo("OPTIONS sip:t.watson@{phone} SIP/12.34", "2 OPTIONS", "0"));
}

// 3.1.2.17, "mismatch01"
TEST_F(Torture, MethodThatCSeqDoesNotName_IsABadRequest)
{
    EXPECT_EQ("SIP/2.0 400 Bad Request", answerTo("OPTIONS sip:user@{phone} SIP/2.0", "8 INVITE", "0"));
}

// 3.1.2.18, "mismatch02"
TEST_F(Torture, UnknownMethodThatCSeqDoesNotName_IsABadRequest)
{
    EXPECT_EQ("SIP/2.0 400 Bad Request", answerTo("NEWMETHOD sip:user@{phone} SIP/2.0", "8 INVITE", "0"));
}

// 3.3.2, "unkscm"
TEST_F(Torture, UnknownScheme_IsNotSupported)
{
    EXPECT_EQ("SIP/2.0 416 Unsupported URI Scheme",
              answerTo("OPTIONS nobodyKnowsThisScheme:totallyopaquecontent SIP/2.0", "3923423 OPTIONS", "0"));
}

// 3.3.3, "novelsc"
TEST_F(Torture, SchemeOfAnotherForm_IsNotSupported)
{
    EXPECT_EQ("SIP/2.0 416 Unsupported URI Scheme",
              answerTo("OPTIONS soap.beep://192.0.2.103:3002 SIP/2.0", "33234 OPTIONS", "0"));
}

// 3.3.1 and 3.1.1: what is unusual, and valid.
TEST_F(Torture, ValidMessage_IsAnswered)
{
    EXPECT_EQ("SIP/2.0 200 OK", answerTo("OPTIONS sip:4711@{phone} SIP/2.0", "0009 OPTIONS", "0"));
    EXPECT_EQ("SIP/2.0 405 Method Not Allowed", answerTo("NEWMETHOD sip:4711@{phone} SIP/2.0", "9 NEWMETHOD", "0"));
}

TEST_F(Torture, AckThatIsMalformed_GetsNoAnswer)
{
    EXPECT_EQ("", answerTo("ACK sip:user@{phone} SIP/7.0", "8 ACK", "0"));
}

}  // namespace telephone::test
