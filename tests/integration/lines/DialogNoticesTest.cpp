// What the notices of the dialog package (RFC 4235) say about a party.
#include <string>

#include <gtest/gtest.h>

#include "telephone/team/DialogWatch.h"

namespace telephone {
namespace {

std::string document(int version, std::string const& state, std::string const& dialogs)
{
    return "<?xml version=\"1.0\"?>\n<dialog-info xmlns=\"urn:ietf:params:xml:ns:dialog-info\" version=\"" +
           std::to_string(version) + "\" state=\"" + state + "\" entity=\"sip:103@127.0.0.1\">" + dialogs +
           "</dialog-info>";
}

std::string dialog(std::string const& id, std::string const& direction, std::string const& state,
                   std::string const& rendering = "yes")
{
    return "<dialog id=\"" + id + "\" call-id=\"call-" + id + "\" local-tag=\"lt\" remote-tag=\"rt\" direction=\"" +
           direction + "\"><state>" + state + "</state>" +
           "<local><identity>sip:103@127.0.0.1</identity>"
           "<target uri=\"sip:103@127.0.0.1:5080\"><param pname=\"+sip.rendering\" pvalue=\"" +
           rendering +
           "\"/></target></local>"
           "<remote><identity display=\"Anna\">sip:anna@127.0.0.1</identity>"
           "<target uri=\"sip:anna@127.0.0.1:5090\"/></remote></dialog>";
}

TEST(DialogNoticesTest, PartyIsUnknown_UntilTheFirstNotice)
{
    DialogNotices notices;
    EXPECT_EQ(notices.party().status, PartyStatus::kUnknown);
    EXPECT_EQ(notices.take(document(0, "full", "")), DialogNotices::Outcome::kTaken);
    EXPECT_EQ(notices.party().status, PartyStatus::kIdle);
}

TEST(DialogNoticesTest, CallToTheParty_RingsAndIsThenSpokenIn)
{
    DialogNotices notices;
    notices.take(document(1, "full", dialog("a", "recipient", "early")));
    EXPECT_EQ(notices.party().status, PartyStatus::kRinging);
    EXPECT_EQ(notices.party().remoteURI, "sip:anna@127.0.0.1");
    ASSERT_TRUE(notices.party().dialog);
    EXPECT_EQ(notices.party().dialog->targetURI, "sip:anna@127.0.0.1:5090");
    EXPECT_EQ(notices.party().dialog->replaces.callId, "call-a");
    EXPECT_EQ(notices.party().dialog->replaces.toTag, "rt");
    EXPECT_EQ(notices.party().dialog->replaces.fromTag, "lt");
    EXPECT_TRUE(notices.party().dialog->replaces.earlyOnly);
    EXPECT_EQ(notices.party().dialog->callingName, "Anna");
    EXPECT_EQ(notices.party().dialog->calledURI, "sip:103@127.0.0.1");

    notices.take(document(2, "partial", dialog("a", "recipient", "confirmed")));
    EXPECT_EQ(notices.party().status, PartyStatus::kBusy);
    notices.take(document(3, "partial", dialog("a", "recipient", "terminated")));
    EXPECT_EQ(notices.party().status, PartyStatus::kIdle);
}

TEST(DialogNoticesTest, CallThatThePartyMakes_IsBusyFromTheStart)
{
    DialogNotices notices;
    notices.take(document(1, "full", dialog("a", "initiator", "early")));
    EXPECT_EQ(notices.party().status, PartyStatus::kBusy);
}

TEST(DialogNoticesTest, CallThatRings_ShowsBesideOneThatIsSpokenIn)
{
    DialogNotices notices;
    notices.take(document(1, "full", dialog("a", "recipient", "early") + dialog("b", "initiator", "confirmed")));
    EXPECT_EQ(notices.party().status, PartyStatus::kRinging);
    EXPECT_EQ(notices.party().dialog->replaces.callId, "call-a");
}

TEST(DialogNoticesTest, CallOnHold_IsHeld_UnlessAnotherIsSpokenIn)
{
    DialogNotices notices;
    notices.take(document(1, "full", dialog("a", "initiator", "confirmed", "no")));
    EXPECT_EQ(notices.party().status, PartyStatus::kHolding);
    EXPECT_EQ(notices.party().dialog->replaces.callId, "call-a");

    notices.take(document(2, "partial", dialog("b", "initiator", "confirmed")));
    EXPECT_EQ(notices.party().status, PartyStatus::kBusy);
    EXPECT_EQ(notices.party().dialog->replaces.callId, "call-b");
}

TEST(DialogNoticesTest, NoticesThatComeLateOrTwice_ChangeNothing)
{
    DialogNotices notices;
    notices.take(document(5, "full", dialog("a", "recipient", "confirmed")));
    EXPECT_EQ(notices.take(document(4, "full", "")), DialogNotices::Outcome::kOld);
    EXPECT_EQ(notices.take(document(5, "full", "")), DialogNotices::Outcome::kOld);
    EXPECT_EQ(notices.party().status, PartyStatus::kBusy);

    notices.forget();
    EXPECT_EQ(notices.party().status, PartyStatus::kUnknown);
    EXPECT_EQ(notices.take(document(0, "full", "")), DialogNotices::Outcome::kTaken);
}

TEST(DialogNoticesTest, WholeState_ForgetsDialogsThatItDoesNotName)
{
    DialogNotices notices;
    notices.take(document(1, "full", dialog("a", "recipient", "early")));
    notices.take(document(2, "full", ""));
    EXPECT_EQ(notices.party().status, PartyStatus::kIdle);
}

TEST(DialogNoticesTest, Garbage_IsNoDocument)
{
    DialogNotices notices;
    EXPECT_EQ(notices.take(""), DialogNotices::Outcome::kNoDocument);
    EXPECT_EQ(notices.take("<presence/>"), DialogNotices::Outcome::kNoDocument);
    EXPECT_EQ(notices.take(std::string(100000, '<')), DialogNotices::Outcome::kNoDocument);
    EXPECT_EQ(notices.party().status, PartyStatus::kUnknown);
}

}  // namespace
}  // namespace telephone
