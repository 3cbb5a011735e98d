// The status of a party, from the documents of its dialogs.
#include "telephone/lines/WatchedParties.h"

#include <string>

#include <gtest/gtest.h>

#include "telephone/sip/DialogList.h"

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

class WatchedPartiesTest : public testing::Test
{
protected:
    using Result = sip::DialogList::Result;

    WatchedParty party() const { return partyOf(dialogs_.dialogs()); }

    sip::DialogList dialogs_;
};

TEST_F(WatchedPartiesTest, Party_IsUnknownAtFirst_AndIdleWithoutDialogs)
{
    EXPECT_EQ(WatchedParty().status, PartyStatus::kUnknown);
    EXPECT_EQ(dialogs_.take(document(0, "full", "")), Result::kTaken);
    EXPECT_EQ(party().status, PartyStatus::kIdle);
}

TEST_F(WatchedPartiesTest, CallToTheParty_RingsThenIsBusy)
{
    dialogs_.take(document(1, "full", dialog("a", "recipient", "early")));
    EXPECT_EQ(party().status, PartyStatus::kRinging);
    EXPECT_EQ(party().remoteURI, "sip:anna@127.0.0.1");
    ASSERT_TRUE(party().dialog);
    EXPECT_EQ(party().dialog->targetURI, "sip:anna@127.0.0.1:5090");
    EXPECT_EQ(party().dialog->replaces.callId, "call-a");
    EXPECT_EQ(party().dialog->replaces.toTag, "rt");
    EXPECT_EQ(party().dialog->replaces.fromTag, "lt");
    EXPECT_TRUE(party().dialog->replaces.earlyOnly);
    EXPECT_EQ(party().dialog->callingName, "Anna");
    EXPECT_EQ(party().dialog->calledURI, "sip:103@127.0.0.1");

    dialogs_.take(document(2, "partial", dialog("a", "recipient", "confirmed")));
    EXPECT_EQ(party().status, PartyStatus::kBusy);
    dialogs_.take(document(3, "partial", dialog("a", "recipient", "terminated")));
    EXPECT_EQ(party().status, PartyStatus::kIdle);
}

TEST_F(WatchedPartiesTest, CallFromTheParty_IsBusyFromTheStart)
{
    dialogs_.take(document(1, "full", dialog("a", "initiator", "early")));
    EXPECT_EQ(party().status, PartyStatus::kBusy);
}

TEST_F(WatchedPartiesTest, RingingCall_TakesPrecedenceOverAnActiveOne)
{
    dialogs_.take(document(1, "full", dialog("a", "recipient", "early") + dialog("b", "initiator", "confirmed")));
    EXPECT_EQ(party().status, PartyStatus::kRinging);
    EXPECT_EQ(party().dialog->replaces.callId, "call-a");
}

TEST_F(WatchedPartiesTest, CallOnHold_ShowsUnlessAnotherIsActive)
{
    dialogs_.take(document(1, "full", dialog("a", "initiator", "confirmed", "no")));
    EXPECT_EQ(party().status, PartyStatus::kHolding);
    EXPECT_EQ(party().dialog->replaces.callId, "call-a");

    dialogs_.take(document(2, "partial", dialog("b", "initiator", "confirmed")));
    EXPECT_EQ(party().status, PartyStatus::kBusy);
    EXPECT_EQ(party().dialog->replaces.callId, "call-b");
}

TEST_F(WatchedPartiesTest, EstablishedCall_CanBeJoinedAtTheParty)
{
    dialogs_.take(document(1, "full", dialog("a", "initiator", "early")));
    EXPECT_FALSE(party().join);

    dialogs_.take(document(2, "partial", dialog("a", "initiator", "confirmed")));
    ASSERT_TRUE(party().join);
    EXPECT_EQ(party().join->targetURI, "sip:103@127.0.0.1:5080");
    EXPECT_EQ(party().join->replaces, (sip::Replaces{"call-a", "lt", "rt", false}));
    EXPECT_TRUE(party().join->joins);
}

TEST_F(WatchedPartiesTest, PrivateCall_CanNeitherBeTakenOverNorJoined)
{
    std::string call = dialog("a", "initiator", "confirmed", "no");
    call.insert(call.find("</dialog>"), "<exclusive>true</exclusive>");

    dialogs_.take(document(1, "full", call));

    EXPECT_EQ(party().status, PartyStatus::kHolding);
    EXPECT_TRUE(party().isPrivate);
    EXPECT_FALSE(party().dialog);
    EXPECT_FALSE(party().join);
}

TEST_F(WatchedPartiesTest, NamedAppearances_HaveAStatusEach)
{
    auto const on = [](std::string dialog, char const* appearance) {
        return dialog.insert(dialog.find("</dialog>"), std::string("<appearance>") + appearance + "</appearance>");
    };

    dialogs_.take(document(1, "full",
                           on(dialog("a", "initiator", "confirmed", "no"), "3") +
                               on(dialog("b", "initiator", "confirmed"), "1")));

    EXPECT_EQ(party().status, PartyStatus::kBusy) << "of all of them";
    ASSERT_EQ(party().appearances.size(), 3U);
    EXPECT_EQ(party().appearances[0].status, PartyStatus::kBusy);
    EXPECT_EQ(party().appearances[1].status, PartyStatus::kIdle);
    EXPECT_EQ(party().appearances[2].status, PartyStatus::kHolding);
    EXPECT_EQ(party().appearances[2].dialog->replaces.callId, "call-a");
}

TEST_F(WatchedPartiesTest, LateOrRepeatedNotices_ChangeNothing)
{
    dialogs_.take(document(5, "full", dialog("a", "recipient", "confirmed")));
    EXPECT_EQ(dialogs_.take(document(4, "full", "")), Result::kOutdated);
    EXPECT_EQ(dialogs_.take(document(5, "full", "")), Result::kOutdated);
    EXPECT_EQ(party().status, PartyStatus::kBusy);
}

TEST_F(WatchedPartiesTest, FullState_RemovesDialogsThatItDoesNotName)
{
    dialogs_.take(document(1, "full", dialog("a", "recipient", "early")));
    dialogs_.take(document(2, "full", ""));
    EXPECT_EQ(party().status, PartyStatus::kIdle);
}

TEST_F(WatchedPartiesTest, MalformedDocuments_ChangeNothing)
{
    dialogs_.take(document(1, "full", dialog("a", "recipient", "early")));
    EXPECT_EQ(dialogs_.take(""), Result::kMalformed);
    EXPECT_EQ(dialogs_.take("<presence/>"), Result::kMalformed);
    EXPECT_EQ(dialogs_.take(std::string(100000, '<')), Result::kMalformed);
    EXPECT_EQ(party().status, PartyStatus::kRinging);
}

}  // namespace
}  // namespace telephone
