#include "telephone/analysis/LadderSvg.h"

#include <pugixml.hpp>

#include "TraceTexts.h"

namespace telephone {
namespace {

using test::TraceText;

std::string svgOf(TraceText const& trace)
{
    return ladderSvg(*ladderOf(trace.contents(), std::nullopt, kMostFarEndsInSvg, test::options()));
}

pugi::xml_document parsed(std::string const& svg)
{
    pugi::xml_document document;
    EXPECT_TRUE(document.load_string(svg.c_str()));
    return document;
}

// The classes of all groups, in their order.
std::string classesOf(pugi::xml_document const& document)
{
    std::string classes;
    for (auto const& each : document.select_nodes("//g")) {
        classes += std::string(each.node().attribute("class").value()) + " ";
    }
    return classes;
}

TEST(LadderSvg, Hold_HasArrowsBarsAndWords)
{
    pugi::xml_document const document = parsed(svgOf(test::held()));

    EXPECT_STREQ(document.child("svg").child("title").text().get(), "A call with 100");
    EXPECT_STREQ(document.child("svg").child("desc").text().get(),
                 "OutgoingCallMakeRequest 100 from application to service; CallMake 100 from service to engi"
                 "ne; INVITE from engine to 100; success from service to application; 200 OK from 100 to eng"
                 "ine; ACK from engine to 100; they talk for 1.2 s; HoldCall from application to service; Ca"
                 "llFeature hold from service to engine; INVITE sendonly from engine to 100; success from se"
                 "rvice to application; 200 OK recvonly from 100 to engine; ACK from engine to 100; event 9:"
                 " held from service to application; on hold for 1.3 s; BYE from 100 to engine; 200 OK from "
                 "engine to 100");
    EXPECT_EQ(classesOf(document),
              "request platform sip answer sip sip request platform sip answer sip sip event sip sip ");
    EXPECT_STREQ(document.select_node("//g[1]").node().select_node("path[1]").node().attribute("d").value(),
                 "M150 84H392");
    pugi::xml_node const talk = document.select_node("//line[@class='talk']").node();
    pugi::xml_node const hold = document.select_node("//line[@class='hold']").node();
    EXPECT_EQ(talk.attribute("x1").as_int(), 850);
    EXPECT_EQ(talk.attribute("y2").as_int(), hold.attribute("y1").as_int());
    EXPECT_GT(talk.attribute("y2").as_int(), talk.attribute("y1").as_int());
}

TEST(LadderSvg, LightAndDark_AreBothThere)
{
    std::string const svg = svgOf(test::held());
    EXPECT_NE(svg.find("svg{--ground:#fff;"), std::string::npos);
    EXPECT_NE(svg.find("@media(prefers-color-scheme:dark){svg{--ground:#14181e;"), std::string::npos);
}

TEST(LadderSvg, LongText_IsCutAndWholeInItsTitle)
{
    TraceText trace;
    trace.engine(0, 1, "", "dialling");
    trace.request(test::requestText("OutgoingCallMakeRequest", "1", "00441632960001@telephones.example.com"));
    pugi::xml_document const document = parsed(svgOf(trace));
    pugi::xml_node const arrow = document.select_node("//g[@class='request']").node();
    EXPECT_STREQ(arrow.child("title").text().get(), "OutgoingCallMakeRequest 00441632960001@telephones.example.com");
    EXPECT_STREQ(arrow.select_node("text[last()]").node().text().get(), "OutgoingCallMakeRequest 0044163…");
}

TEST(LadderSvg, TextsFromTheWire_AreTexts)
{
    std::string const evil = R"(</text><script>alert(1)</script>&\"'\u0001)";
    TraceText trace;
    trace.step(0, R"("step":"command","application":"a","text":")" + evil + "\"");
    trace.sip(1, "received", evil, "200 " + evil, "d1", evil).engine(2, 3, "", "connected", evil);
    trace.step(1, R"("step":"reason","text":")" + evil + "\"").answer(1, evil);
    trace.at("05.000").sip(1, "sent", evil);

    std::string const svg = svgOf(trace);

    pugi::xml_document const document = parsed(svg);
    EXPECT_TRUE(document.select_nodes("//script").empty());
    EXPECT_EQ(svg.find("<script"), std::string::npos);
    EXPECT_EQ(svg.find('\x01'), std::string::npos);
    EXPECT_NE(svg.find("&lt;script&gt;alert(1)&lt;/script&gt;&amp;"), std::string::npos);
}

}  // namespace
}  // namespace telephone
