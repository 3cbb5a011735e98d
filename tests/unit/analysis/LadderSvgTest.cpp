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

// What is drawn behind the styles, one element a line.
std::string pictureOf(Ladder const& ladder)
{
    std::string const svg = ladderSvg(ladder);
    return "\n" + svg.substr(svg.find("</style>\n") + 9);
}

Ladder everyKindOfRow()
{
    using K = LadderRowKind;
    using std::chrono::milliseconds;
    Ladder ladder;
    ladder.title = "A call to 100";
    ladder.columns = {"application", "service", "engine", "100", "103"};
    ladder.rows = {
        {K::kRequest, 0, 1, "HoldCall", milliseconds(0)},
        {K::kPlatform, 1, 2, "CallFeature hold", milliseconds(0)},
        {K::kSip, 2, 3, "INVITE", milliseconds(0)},
        {K::kSip, 4, 2, "200 OK", milliseconds(1)},
        {K::kAnswer, 1, 0, "success", milliseconds(1)},
        {K::kFailure, 1, 0, "failure", milliseconds(1)},
        {K::kNote, 0, 0, "no such call", milliseconds(1)},
        {K::kEvent, 1, 0, "event 9: held", milliseconds(2)},
        {K::kPause,
         0,
         0,
         "1.3 s",
         milliseconds(2),
         {{3, true, false, "on hold for 1.3 s"}, {4, false, true, "\"talk\""}}},
        {K::kNote, 2, 2, "timer: ring", milliseconds(1302)},
        {K::kPause, 0, 0, "2.0 s", milliseconds(1302)},
        {K::kRequest, 0, 1, "CallClearRequest", milliseconds(3302)},
    };
    ladder.bars = {{3, 2, 8, true}, {4, 3, 11, false}};
    return ladder;
}

TEST(LadderSvg, EveryKindOfRow_HasItsPlaceAndClass)
{
    EXPECT_NE(ladderSvg(everyKindOfRow()).find(R"(viewBox="0 0 1140 494" width="1140" height="494" role="img")"),
              std::string::npos);
    EXPECT_EQ(pictureOf(everyKindOfRow()), R"(
<rect class="ground" width="100%" height="100%"/>
<rect class="band" x="614" y="34" width="422" height="434" rx="6"/>
<text class="said" x="825" y="52">wire</text>
<text class="name" x="150" y="26">application</text><line class="life" x1="150" x2="150" y1="36" y2="470"/>
<text class="name" x="400" y="26">service</text><line class="life" x1="400" x2="400" y1="36" y2="470"/>
<text class="name" x="600" y="26">engine</text><line class="life" x1="600" x2="600" y1="36" y2="470"/>
<text class="name" x="850" y="26">100</text><line class="life" x1="850" x2="850" y1="36" y2="470"/>
<text class="name" x="1050" y="26">103</text><line class="life" x1="1050" x2="1050" y1="36" y2="470"/>
<line class="hold" x1="850" x2="850" y1="142" y2="328"/>
<line class="talk" x1="1050" x2="1050" y1="171" y2="427"/>
<g class="request"><text class="time" x="92" y="88">0.000 s</text><path class="arrow" d="M150 84H392"/><path class="head" d="M400 84l-8 -4v8z"/><text x="275" y="79">HoldCall</text></g>
<g class="platform"><path class="arrow" d="M400 113H592"/><path class="head" d="M600 113l-8 -4v8z"/><text x="500" y="108">CallFeature hold</text></g>
<g class="sip"><path class="arrow" d="M600 142H842"/><path class="head" d="M850 142l-8 -4v8z"/><text x="725" y="137">INVITE</text></g>
<g class="sip"><text class="time" x="92" y="175">0.001 s</text><path class="arrow" d="M1050 171H608"/><path class="head" d="M600 171l8 -4v8z"/><text x="950" y="166">200 OK</text></g>
<g class="answer"><path class="arrow" d="M400 200H158"/><path class="head" d="M150 200l8 -4v8z"/><text x="275" y="195">success</text></g>
<g class="failure"><path class="arrow" d="M400 229H158"/><path class="head" d="M150 229l8 -4v8z"/><text x="275" y="224">failure</text></g>
<text class="reason" x="164" y="253">no such call</text>
<g class="event"><text class="time" x="92" y="286">0.002 s</text><path class="arrow" d="M400 282H158"/><path class="head" d="M150 282l8 -4v8z"/><text x="275" y="277">event 9: held</text></g>
<text class="said" x="725" y="333">on hold for 1.3 s</text>
<text class="said" x="950" y="333">&quot;talk&quot;</text>
<text class="said" x="500" y="352">timer: ring</text>
<text class="said" x="275" y="403">2.0 s later</text>
<g class="request"><text class="time" x="92" y="431">3.302 s</text><path class="arrow" d="M150 427H392"/><path class="head" d="M400 427l-8 -4v8z"/><text x="275" y="422">CallClearRequest</text></g>
</svg>
)");
}

TEST(LadderSvg, Description_IsEveryRowAsAPhrase)
{
    EXPECT_STREQ(parsed(ladderSvg(everyKindOfRow())).child("svg").child("desc").text().get(),
                 "HoldCall from application to service; CallFeature hold from service to engine; INVITE "
                 "from engine to 100; 200 OK from 103 to engine; success from service to application; "
                 "failure from service to application; no such call; event 9: held from service to "
                 "application; on hold for 1.3 s, \"talk\"; timer: ring; 2.0 s later; CallClearRequest "
                 "from application to service");
}

TEST(LadderSvg, IdsOfSeveralCalls_HaveRoomAtTheApplication)
{
    Ladder ladder = everyKindOfRow();
    ladder.hasSeveralCalls = true;
    std::string columns;
    pugi::xml_document const document = parsed(ladderSvg(ladder));
    for (auto const& each : document.select_nodes("//line[@class='life']")) {
        columns += std::string(each.node().attribute("x1").value()) + " ";
    }
    EXPECT_EQ(columns, "150 480 680 930 1130 ");
}

TEST(LadderSvg, LadderWithoutFarEnd_HasNoWire)
{
    Ladder ladder = everyKindOfRow();
    ladder.columns.resize(3);
    ladder.rows.resize(2);
    ladder.bars.clear();
    EXPECT_EQ(pictureOf(ladder).find("wire"), std::string::npos);
}

TEST(LadderSvg, Texts_AreCutWhereTheirRoomEnds)
{
    Ladder ladder;
    ladder.columns = {std::string(34, 'a'), std::string(28, 's'), "engine"};
    ladder.rows = {{LadderRowKind::kRequest, 0, 1, std::string(32, 'r'), {}},
                   {LadderRowKind::kRequest, 0, 1, std::string(33, 'r'), {}}};
    std::string const picture = pictureOf(ladder);
    EXPECT_NE(picture.find(">" + std::string(34, 'a') + "<"), std::string::npos);
    EXPECT_NE(picture.find(">" + std::string(26, 's') + "…<"), std::string::npos);
    EXPECT_NE(picture.find(">" + std::string(32, 'r') + "</text>"), std::string::npos);
    EXPECT_NE(picture.find(">" + std::string(31, 'r') + "…</text>"), std::string::npos);
}

}  // namespace
}  // namespace telephone
