// Full and partial documents of the dialog package, in whatever order they arrive.
#include "telephone/sip/DialogList.h"

#include <gtest/gtest.h>

namespace telephone::sip {
namespace {

std::string document(int version, std::string const& state, std::string const& dialogs)
{
    return "<?xml version=\"1.0\"?>\n<dialog-info xmlns=\"urn:ietf:params:xml:ns:dialog-info\" version=\"" +
           std::to_string(version) + "\" state=\"" + state + "\" entity=\"sip:103@127.0.0.1\">" + dialogs +
           "</dialog-info>";
}

std::string dialog(std::string const& id, std::string const& state)
{
    return "<dialog id=\"" + id + "\" direction=\"recipient\"><state>" + state + "</state></dialog>";
}

// "a early, b confirmed"
std::string textOf(DialogList const& list)
{
    std::string text;
    for (auto const& entry : list.dialogs()) {
        text += (text.empty() ? "" : ", ") + entry.id;
        text += entry.state == DialogState::kEarly ? " early" : "";
        text += entry.state == DialogState::kConfirmed ? " confirmed" : "";
        text += entry.state == DialogState::kTerminated ? " terminated" : "";
    }
    return text;
}

TEST(DialogListTest, NewList_IsEmpty)
{
    DialogList list;

    EXPECT_EQ(textOf(list), "");
    EXPECT_EQ(list.take(document(0, "full", "")), DialogList::Result::kTaken);
    EXPECT_EQ(textOf(list), "");
}

TEST(DialogListTest, PartialDocument_ChangesOnlyTheDialogsThatItNames)
{
    DialogList list;
    list.take(document(1, "full", dialog("a", "early") + dialog("b", "confirmed")));

    list.take(document(2, "partial", dialog("a", "confirmed")));
    EXPECT_EQ(textOf(list), "a confirmed, b confirmed");
    list.take(document(3, "partial", dialog("c", "early")));

    EXPECT_EQ(textOf(list), "a confirmed, b confirmed, c early");
}

TEST(DialogListTest, EndedDialog_IsMissingFromTheNextList)
{
    DialogList list;
    list.take(document(1, "full", dialog("a", "early") + dialog("b", "early")));

    list.take(document(2, "partial", dialog("a", "terminated")));
    EXPECT_EQ(textOf(list), "a terminated, b early");
    list.take(document(3, "partial", dialog("b", "confirmed")));

    EXPECT_EQ(textOf(list), "b confirmed");
}

TEST(DialogListTest, FullDocument_RemovesTheDialogsThatItDoesNotName)
{
    DialogList list;
    list.take(document(1, "full", dialog("a", "early")));

    list.take(document(2, "full", dialog("b", "early")));

    EXPECT_EQ(textOf(list), "b early");
}

TEST(DialogListTest, LateOrRepeatedDocument_ChangesNothing)
{
    DialogList list;
    list.take(document(5, "full", dialog("a", "confirmed")));

    EXPECT_EQ(list.take(document(4, "full", "")), DialogList::Result::kOutdated);
    EXPECT_EQ(list.take(document(5, "full", "")), DialogList::Result::kOutdated);
    EXPECT_EQ(textOf(list), "a confirmed");
    EXPECT_EQ(list.take(document(6, "full", "")), DialogList::Result::kTaken);
}

TEST(DialogListTest, Garbage_IsMalformedAndChangesNothing)
{
    DialogList list;
    list.take(document(1, "full", dialog("a", "confirmed")));

    EXPECT_EQ(list.take(""), DialogList::Result::kMalformed);
    EXPECT_EQ(list.take("<presence/>"), DialogList::Result::kMalformed);
    EXPECT_EQ(list.take(std::string(100000, '<')), DialogList::Result::kMalformed);
    EXPECT_EQ(textOf(list), "a confirmed");
}

}  // namespace
}  // namespace telephone::sip
