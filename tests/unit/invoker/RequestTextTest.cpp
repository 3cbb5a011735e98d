#include "src/RequestText.h"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <random>
#include <string>
#include <string_view>
#include <utility>

#include <gtest/gtest.h>

#include "src/TaggedText.h"

namespace {
std::string elements(int count)
{
    std::string text;
    for (int index = 0; index < count; ++index) {
        text += "<x>" + std::to_string(index) + "</x>";
    }
    return text;
}

TEST(RequestText, KeepsTheWholeText)
{
    EXPECT_EQ(RequestText("a<b>c").whole(), "a<b>c");
    EXPECT_EQ(RequestText("").whole(), "");
}

TEST(RequestText, Value_OfAPresentElement_IsWhatStandsBetween)
{
    EXPECT_EQ(RequestText("<a>1</a><b>2</b>").value("b"), "2");
    EXPECT_EQ(RequestText("<a>1</a><b></b>").value("b"), "");
}

TEST(RequestText, Value_OfAnIncompleteElement_IsNone)
{
    EXPECT_EQ(RequestText("").value("b"), std::nullopt);
    EXPECT_EQ(RequestText("<b>2").value("b"), std::nullopt);
    EXPECT_EQ(RequestText("2</b>").value("b"), std::nullopt);
    EXPECT_EQ(RequestText("</b><b>2").value("b"), std::nullopt);
    EXPECT_EQ(RequestText("<b").value("b"), std::nullopt);
    EXPECT_EQ(RequestText("<").value("b"), std::nullopt);
    EXPECT_EQ(RequestText("<b>2</").value("b"), std::nullopt);
    EXPECT_EQ(RequestText("<b>2</b").value("b"), std::nullopt);
    EXPECT_EQ(RequestText("<b>2<b>").value("b"), std::nullopt);
    EXPECT_EQ(RequestText("<b>2<xb>").value("b"), std::nullopt);
}

TEST(RequestText, Value_BesideNamesThatAreLonger_IsTheExactOne)
{
    EXPECT_EQ(RequestText("<CallIDs>1</CallIDs><CallID>2</CallIDs></CallID>").value("CallID"), "2</CallIDs>");
    EXPECT_EQ(RequestText("<xCallID>1</xCallID><CallID>2</CallID>").value("CallID"), "2");
}

TEST(RequestText, Forms_FollowTheirDefaults)
{
    RequestText const request("<text>a</text><zero>0</zero><two>2</two><word>TRUE</word><other>true</other>");

    EXPECT_EQ(request.text("text"), "a");
    EXPECT_EQ(request.text("none"), "");
    EXPECT_EQ(request.integer("two"), 2);
    EXPECT_EQ(request.integer("text"), 0);
    EXPECT_EQ(request.integer("none"), -1);
    EXPECT_TRUE(request.flag("two"));
    EXPECT_FALSE(request.flag("zero"));
    EXPECT_FALSE(request.flag("text"));
    EXPECT_TRUE(request.flag("none"));
    EXPECT_TRUE(request.word("word"));
    EXPECT_FALSE(request.word("other"));
    EXPECT_FALSE(request.word("none"));
}

// 32 places of "<" are kept: 16 elements.
TEST(RequestText, Value_InATextOfAsManyElementsAsAreKept_IsFound)
{
    std::string const text = elements(15) + "<b>2</b>";

    EXPECT_EQ(RequestText(text).value("b"), "2");
    EXPECT_EQ(RequestText(text).value("c"), std::nullopt);
}

TEST(RequestText, Value_InATextOfMoreElementsThanAreKept_IsFoundAllTheSame)
{
    std::string const text = elements(16) + "<b>2</b><b>3</b>";

    EXPECT_EQ(RequestText(text).value("b"), "2");
    EXPECT_EQ(RequestText(text).value("x"), "0");
    EXPECT_EQ(RequestText(text).value("c"), std::nullopt);
    EXPECT_EQ(RequestText(elements(15) + "<b>2<</b>").value("b"), "2<");
}

// The comparison is a template of the length of the name.
template <std::size_t kLength>
void findNameOfLength()
{
    char name[kLength + 1] = {};
    std::fill_n(name, kLength, 'n');
    std::string const text(name);
    std::string const other(kLength, 'm');
    auto const element = [](std::string const& tag, std::string const& value) {
        return "<" + tag + ">" + value + "</" + tag + ">";
    };

    EXPECT_EQ(RequestText(element(text, "1")).value(name), "1");
    EXPECT_EQ(RequestText(element(other, "1") + element(text, "2")).value(name), "2");
    EXPECT_EQ(RequestText(element(text + "n", "1") + element(text, "2")).value(name), "2");
    EXPECT_EQ(RequestText("<" + text + ">1</" + other + "></" + text + ">").value(name), "1</" + other + ">");
    EXPECT_EQ(RequestText("<" + text + ">1<x" + text + "></" + text + ">").value(name), "1<x" + text + ">");
    EXPECT_EQ(RequestText("<" + text + ">1</" + text).value(name), std::nullopt);
    EXPECT_EQ(RequestText("<" + text).value(name), std::nullopt);
    // It must not read past the view.
    std::string const whole = element(text, "1");
    EXPECT_EQ(RequestText(std::string_view(whole).substr(0, whole.size() - 1)).value(name), std::nullopt);
    EXPECT_EQ(RequestText("<").value(name), std::nullopt);
    EXPECT_EQ(RequestText(elements(20) + element(text, "1")).value(name), "1");
    EXPECT_EQ(RequestText(element(text, "7")).text(name), "7");
    EXPECT_EQ(RequestText("").text(name), "");
    EXPECT_EQ(RequestText(element(text, "7")).integer(name), 7);
    EXPECT_EQ(RequestText("").integer(name), -1);
}

template <std::size_t... kLengths>
void findNamesOfLengths(std::index_sequence<kLengths...> /*lengths*/)
{
    (findNameOfLength<kLengths + 1>(), ...);
}

TEST(RequestText, Value_OfANameOfAnyLength_IsFound)
{
    findNamesOfLengths(std::make_index_sequence<32>());
}

TEST(RequestText, Value_OfAnyText_IsTheOneOfTheSimpleSearch)
{
    std::string const pieces[] = {"<a>", "</a>", "<ab>", "</ab>", "<",  ">",
                                  "/",   "a",    "b",    "</a",   "<a", std::string(1, '\0')};
    std::mt19937 random(20);
    for (int round = 0; round < 20000; ++round) {
        std::string text;
        auto const length = random() % 24;
        for (unsigned int index = 0; index < length; ++index) {
            text += pieces[random() % std::size(pieces)];
        }
        RequestText const request(text);
        ASSERT_EQ(request.value("a"), tagged_text::valueBetween("<a>", text, "</a>")) << text;
        ASSERT_EQ(request.value("ab"), tagged_text::valueBetween("<ab>", text, "</ab>")) << text;
    }
}
}  // namespace
