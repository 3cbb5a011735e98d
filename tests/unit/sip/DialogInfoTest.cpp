#include "telephone/sip/DialogInfo.h"

#include <gtest/gtest.h>

namespace telephone::sip {

TEST(DialogInfoTest, ForeignDocument_IsRead)
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

TEST(DialogInfoTest, EveryState_IsRead)
{
    auto const info = DialogInfo::parse(R"(<dialog-info version="0" entity="sip:1@h"><note/>
<dialog id="1"><state>trying</state></dialog><dialog id="2"><state>proceeding</state></dialog>
<dialog id="3"><state>early</state></dialog><dialog id="4"><state>confirmed</state></dialog>
<dialog id="5"><state>terminated</state></dialog></dialog-info>)");

    ASSERT_TRUE(info);
    EXPECT_TRUE(info->full) << "as without a word of it";
    EXPECT_EQ("sip:1@h", info->entity);
    ASSERT_EQ(5U, info->dialogs.size());
    EXPECT_EQ(DialogState::kTrying, info->dialogs[0].state);
    EXPECT_EQ(DialogState::kProceeding, info->dialogs[1].state);
    EXPECT_EQ(DialogState::kEarly, info->dialogs[2].state);
    EXPECT_EQ(DialogState::kConfirmed, info->dialogs[3].state);
    EXPECT_EQ(DialogState::kTerminated, info->dialogs[4].state);
    EXPECT_EQ("5", info->dialogs[4].id);
    EXPECT_FALSE(info->dialogs[0].recipient);
    EXPECT_FALSE(info->dialogs[0].exclusive);
    EXPECT_EQ(0, info->dialogs[0].appearance);
}

TEST(DialogInfoTest, HeldParty_IsTheOneThatDoesNotRender)
{
    auto const info = DialogInfo::parse(R"(<dialog-info version="0" state="full" entity="sip:1@h">
<dialog id="1"><state>confirmed</state><appearance>-3</appearance>
<local><target uri="sip:1@h"><param pname="x" pvalue="no"/><param pname="+sip.rendering" pvalue="no"/></target></local>
<remote><target uri="sip:2@h"><note pname="+sip.rendering" pvalue="no"/><param pname="+sip.rendering" pvalue="yes"/>
</target></remote></dialog></dialog-info>)");

    ASSERT_TRUE(info);
    ASSERT_EQ(1U, info->dialogs.size());
    EXPECT_FALSE(info->dialogs[0].local.rendering);
    EXPECT_TRUE(info->dialogs[0].remote.rendering);
    EXPECT_EQ(0, info->dialogs[0].appearance);
}

TEST(DialogInfoTest, OwnDocument_IsWrittenInFull)
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

TEST(DialogInfoTest, AppearanceAndPrivacyOfASharedLine_AreWrittenAndRead)
{
    DialogInfo info;
    info.entity = "sip:1@h";
    DialogEntry entry;
    entry.id = "a";
    entry.appearance = 2;
    entry.exclusive = true;
    info.dialogs.push_back(entry);

    std::string const document = info.format();
    auto const read = DialogInfo::parse(document);

    EXPECT_EQ("<?xml version=\"1.0\" encoding=\"UTF-8\"?>"
              "<dialog-info xmlns=\"urn:ietf:params:xml:ns:dialog-info\" "
              "xmlns:sa=\"urn:ietf:params:xml:ns:sa-dialog-info\" version=\"0\" state=\"full\" entity=\"sip:1@h\">"
              "<dialog id=\"a\" direction=\"initiator\"><state>trying</state>"
              "<sa:appearance>2</sa:appearance><sa:exclusive>true</sa:exclusive></dialog></dialog-info>",
              document);
    ASSERT_TRUE(read);
    EXPECT_EQ(2, read->dialogs[0].appearance);
    EXPECT_TRUE(read->dialogs[0].exclusive);
}

TEST(DialogInfoTest, PrivacyAlone_HasItsNamespaceToo)
{
    DialogInfo info;
    info.version = 1;
    info.full = false;
    info.entity = "sip:1@h";
    DialogEntry entry;
    entry.id = "a";
    entry.dialog = {"c", "l", "r"};
    entry.recipient = true;
    entry.state = DialogState::kConfirmed;
    entry.exclusive = true;
    entry.local = {"", "unused", "sip:1@h:5", false};
    entry.remote = {"sip:2@h", "Al", ""};
    info.dialogs.push_back(entry);

    EXPECT_EQ("<?xml version=\"1.0\" encoding=\"UTF-8\"?>"
              "<dialog-info xmlns=\"urn:ietf:params:xml:ns:dialog-info\" "
              "xmlns:sa=\"urn:ietf:params:xml:ns:sa-dialog-info\" version=\"1\" state=\"partial\" "
              "entity=\"sip:1@h\"><dialog id=\"a\" call-id=\"c\" local-tag=\"l\" remote-tag=\"r\" "
              "direction=\"recipient\"><state>confirmed</state><local><target uri=\"sip:1@h:5\">"
              "<param pname=\"+sip.rendering\" pvalue=\"no\"/></target></local>"
              "<remote><identity display=\"Al\">sip:2@h</identity></remote>"
              "<sa:exclusive>true</sa:exclusive></dialog></dialog-info>",
              info.format());
}

TEST(DialogInfoTest, FirstAppearanceAlone_HasItsNamespaceToo)
{
    DialogInfo info;
    DialogEntry entry;
    entry.appearance = 1;
    info.dialogs.push_back(entry);

    std::string const document = info.format();

    EXPECT_NE(document.find(" xmlns:sa=\"urn:ietf:params:xml:ns:sa-dialog-info\""), std::string::npos) << document;
    EXPECT_NE(document.find("<sa:appearance>1</sa:appearance>"), std::string::npos) << document;
}

TEST(DialogInfoTest, MalformedDocument_IsRefused)
{
    EXPECT_FALSE(DialogInfo::parse(""));
    EXPECT_FALSE(DialogInfo::parse("<presence/>"));
    EXPECT_FALSE(DialogInfo::parse("<dialog-info><dialog>"));
}

TEST(MessageSummaryTest, Names_AreReadWithoutRegardToCase)
{
    auto const summary = MessageSummary::parse("messages-waiting: Yes\nmessage-account: sip:1@h\nVoice-message: 4/8\n");

    ASSERT_TRUE(summary);
    EXPECT_TRUE(summary->waiting);
    EXPECT_EQ("sip:1@h", summary->account);
    EXPECT_EQ((MessageCounts{4, 8, 0, 0}), summary->voice);
    EXPECT_FALSE(MessageSummary::parse("Voice-Message: 4/8"));
}

TEST(MessageSummaryTest, WithoutAnAccount_IsWrittenWithoutTheLine)
{
    EXPECT_EQ("Messages-Waiting: no\r\nVoice-Message: 0/3 (0/1)\r\n",
              (MessageSummary{.waiting = false, .account = "", .voice = {0, 3, 0, 1}}.format()));
}

TEST(MessageSummaryTest, BlanksAndOtherLines_AreSkipped)
{
    auto const summary = MessageSummary::parse("no colon\r\nMessages-Waiting:no \r\nFax-Message: 9/9\r\n"
                                               "Message-Account:\r\nVoice-Message:\t1 / 2 ( 3 / 4 )\r\n");

    ASSERT_TRUE(summary);
    EXPECT_FALSE(summary->waiting);
    EXPECT_EQ("", summary->account);
    EXPECT_EQ((MessageCounts{1, 2, 3, 4}), summary->voice);
}

TEST(MessageSummaryTest, MalformedCounts_CountAsZero)
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
