#include "telephone/sip/Uri.h"

#include <gtest/gtest.h>

#include "telephone/sip/DialogInfo.h"
#include "telephone/sip/Message.h"

namespace telephone::sip {

TEST(SipUri, WithEverything_IsReadAndWrittenAgain)
{
    auto const uri = Uri::parse("sip:al%69ce:pw@[2001:db8::1]:5061;transport=tcp;lr?Replaces=a%40b%3Bto-tag%3Dc&X=1");

    ASSERT_TRUE(uri);
    EXPECT_EQ("alice", uri->user);
    EXPECT_EQ("pw", uri->password);
    EXPECT_EQ("2001:db8::1", uri->host);
    EXPECT_EQ(5061, uri->port);
    EXPECT_EQ("tcp", uri->parameter("Transport"));
    EXPECT_EQ("", uri->parameter("lr"));
    EXPECT_EQ("a@b;to-tag=c", uri->header("replaces"));
    EXPECT_EQ("sip:alice:pw@[2001:db8::1]:5061;transport=tcp;lr?Replaces=a%40b%3Bto-tag%3Dc&X=1", uri->format());
    EXPECT_EQ("sip:alice@[2001:db8::1]:5061", uri->formatAddressOfRecord());
}

TEST(SipUri, Telephone_KeepsItsNumberAsUser)
{
    auto const uri = Uri::parse("tel:+49-89-1234;phone-context=example.com");

    ASSERT_TRUE(uri);
    EXPECT_EQ("+49-89-1234", uri->user);
    EXPECT_EQ("tel:+49-89-1234", uri->formatAddressOfRecord());
}

class NoSipUri : public ::testing::TestWithParam<char const*>
{};

TEST_P(NoSipUri, IsRefused)
{
    EXPECT_FALSE(Uri::parse(GetParam()));
}

INSTANTIATE_TEST_SUITE_P(Texts, NoSipUri,
                         ::testing::Values("", "4711", "sip:", "sip:a@", "sip:a@host:0", "sip:a@host:99999",
                                           "sip:a@ho st", "sip:a@host\r\nX: y", "http://host", "sip:a@[::1",
                                           "tel:", "sip:a@host:port", "sip:a@<host>"));

TEST(SipUri, Target_IsMadeOfWhatWasDialled)
{
    EXPECT_EQ("sip:100@127.0.0.1:5060", targetUri("100", "127.0.0.1:5060"));
    EXPECT_EQ("sip:*97102@pbx", targetUri(" *97102 ", "pbx"));
    EXPECT_EQ("sip:%2312@pbx", targetUri("#12", "pbx"));
    EXPECT_EQ("sip:al@example.com", targetUri("al@example.com", "pbx"));
    EXPECT_EQ("SIP:al@example.com", targetUri("SIP:al@example.com", "pbx"));
    EXPECT_EQ("sip:bad%20user%3C@pbx", targetUri("bad user<", "pbx"));
}

TEST(NameAddress, QuotedName_IsUnescapedAndEscapedAgain)
{
    auto const address = NameAddr::parse("\"A \\\"B\\\", C\" <sip:1@h;x=y>;tag=7;q");

    ASSERT_TRUE(address);
    EXPECT_EQ("A \"B\", C", address->displayName);
    EXPECT_EQ("y", address->uri.parameter("x"));
    EXPECT_EQ("7", address->parameter("TAG"));
    EXPECT_EQ("\"A \\\"B\\\", C\" <sip:1@h;x=y>;tag=7;q", address->format());
}

TEST(NameAddress, WithoutBrackets_TheParametersAreTheHeaders)
{
    auto const address = NameAddr::parse("sip:1@h;tag=7");

    ASSERT_TRUE(address);
    EXPECT_TRUE(address->uri.parameters.empty());
    EXPECT_EQ("7", address->parameter("tag"));
}

TEST(NameAddress, OfAList_IsTheFirst)
{
    EXPECT_EQ("1", NameAddr::parse("Al <sip:1@h>, <sip:2@h>")->uri.user);
    EXPECT_EQ((std::vector<std::string>{"\"a,b\" <sip:1@h,x>", "sip:2@h"}), splitList("\"a,b\" <sip:1@h,x>, sip:2@h"));
    EXPECT_FALSE(NameAddr::parse("\"open <sip:1@h>"));
    EXPECT_FALSE(NameAddr::parse("<sip:1@h"));
}

TEST(ReplacesHeader, IsReadInAnyOrder)
{
    auto const replaces = Replaces::parse("12@host; from-tag=b ;early-only;to-tag=a");

    ASSERT_TRUE(replaces);
    EXPECT_EQ((Replaces{"12@host", "a", "b", true}), *replaces);
    EXPECT_EQ("12@host;to-tag=a;from-tag=b;early-only", replaces->format());
    EXPECT_FALSE(Replaces::parse(""));
    EXPECT_FALSE(Replaces::parse("12@host;to-tag=a"));
}

TEST(HeaderList, LineBreaksInAValue_DoNotMakeAnotherHeader)
{
    EXPECT_EQ("Reason: a  Via: b\r\n", (Headers{{"Reason", "a\r\nVia: b"}}.format()));
}

TEST(DialogDocument, OfAnotherMaker_IsRead)
{
    auto const info = DialogInfo::parse(R"(<?xml version="1.0"?>
<di:dialog-info xmlns:di="urn:ietf:params:xml:ns:dialog-info" version="3" state="partial" entity="sip:1@h">
  <di:dialog id="x" call-id="c" local-tag="l" remote-tag="r" direction="recipient">
    <di:state event="2xx">confirmed</di:state>
    <di:remote><di:identity display="Al">sip:2@h</di:identity><di:target uri="sip:2@h:9"/></di:remote>
  </di:dialog>
  <di:dialog id="y"><di:state>levitating</di:state></di:dialog>
</di:dialog-info>)");

    ASSERT_TRUE(info);
    EXPECT_EQ(3U, info->version);
    EXPECT_FALSE(info->full);
    ASSERT_EQ(1U, info->dialogs.size());
    EXPECT_EQ((DialogId{"c", "l", "r"}), info->dialogs[0].dialog);
    EXPECT_TRUE(info->dialogs[0].recipient);
    EXPECT_EQ(DialogState::kConfirmed, info->dialogs[0].state);
    EXPECT_EQ("Al", info->dialogs[0].remote.displayName);
    EXPECT_EQ("sip:2@h:9", info->dialogs[0].remote.target);
}

TEST(DialogDocument, OfOurs_IsWrittenInFull)
{
    DialogInfo info;
    info.version = 2;
    info.entity = "sip:1@h";
    DialogEntry entry;
    entry.id = "a";
    entry.dialog = {"c<", "l", ""};
    entry.state = DialogState::kEarly;
    entry.remote.identity = "sip:2@h";
    info.dialogs.push_back(entry);

    EXPECT_EQ(
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>"
        "<dialog-info xmlns=\"urn:ietf:params:xml:ns:dialog-info\" version=\"2\" state=\"full\" entity=\"sip:1@h\">"
        "<dialog id=\"a\" call-id=\"c&lt;\" local-tag=\"l\" direction=\"initiator\"><state>early</state>"
        "<remote><identity>sip:2@h</identity></remote></dialog></dialog-info>",
        info.format());
}

TEST(DialogDocument, ThatIsNone_IsRefused)
{
    EXPECT_FALSE(DialogInfo::parse(""));
    EXPECT_FALSE(DialogInfo::parse("<presence/>"));
    EXPECT_FALSE(DialogInfo::parse("<dialog-info><dialog>"));
}

TEST(MessageSummaryDocument, IsReadWithoutRegardToCase)
{
    auto const summary = MessageSummary::parse("messages-waiting: Yes\nmessage-account: sip:1@h\nVoice-message: 4/8\n");

    ASSERT_TRUE(summary);
    EXPECT_TRUE(summary->waiting);
    EXPECT_EQ("sip:1@h", summary->account);
    EXPECT_EQ((MessageCounts{4, 8, 0, 0}), summary->voice);
    EXPECT_FALSE(MessageSummary::parse("Voice-Message: 4/8"));
}

TEST(MessageSummaryDocument, WithCountsThatAreNone_CountsNothing)
{
    auto const countsOf = [](std::string const& counts) {
        return MessageSummary::parse("Messages-Waiting: yes\r\nVoice-Message: " + counts + "\r\n")->voice;
    };

    EXPECT_EQ((MessageCounts{2, 8, 0, 2}), countsOf("2/8 (0/2)"));
    EXPECT_EQ((MessageCounts{2, 8, 0, 0}), countsOf("2/8 (0/x)"));
    EXPECT_EQ(MessageCounts{}, countsOf("1/-7"));
    EXPECT_EQ(MessageCounts{}, countsOf("99999999999/1"));
    EXPECT_EQ(MessageCounts{}, countsOf("none"));
}

}  // namespace telephone::sip
