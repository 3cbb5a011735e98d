#include "telephone/analysis/TraceTree.h"

#include <algorithm>

#include "TraceTexts.h"

namespace telephone {
namespace {

using test::held;
using test::options;
using test::TraceText;

std::string treeOf(TraceContents const& contents, TraceTree::Filter const& filter = {},
                   TraceTree::Form form = TraceTree::Form::kWords, DisplayOptions const& shown = options())
{
    std::string text = "\n";
    TracedCalls const calls(contents);
    TraceTree(contents, calls, filter, form, shown, [&text](std::string const& line) {
        text += line + "\n";
    }).writeAll();
    return text;
}

TEST(TraceTree, Steps_StandBelowWhatCausedThem)
{
    EXPECT_EQ(treeOf(held().contents()), R"(
12:00:00.000         →  OutgoingCallMakeRequest  4711 call 3  Destination=100, console
12:00:00.000  platform    CSfi::CallMake  call 3  destination=100  dssDirectCall=true  success
12:00:00.000       sip      INVITE  to 100  127.0.0.1:5060 UDP
12:00:00.001       sip        100 Trying for INVITE  from 100  127.0.0.1:5060 UDP
12:00:00.001       sip        200 OK for INVITE  from 100  127.0.0.1:5060 UDP
12:00:00.001       sip          ACK  to 100  127.0.0.1:5060 UDP
12:00:00.001    engine          4711 call 3: connected  100
12:00:00.001         8          <Method>CallHeldEvent</Method>unreadable
12:00:00.000         ←    success  1 ms
12:00:01.201         →  HoldCall  4711 call 3, console
12:00:01.201  platform    CSfi::CallFeature  call 3  feature=hold  mode=1  success
12:00:01.201       sip      INVITE sendonly  to 100  127.0.0.1:5060 UDP
12:00:01.201       sip        200 OK recvonly for INVITE  from 100  127.0.0.1:5060 UDP
12:00:01.201       sip          ACK  to 100  127.0.0.1:5060 UDP
12:00:01.201    engine          4711 call 3: connected → held  100
12:00:01.201      lamp          3 "Hold"  flashing green
12:00:01.201         9          held  4711 call 3
12:00:01.201         ←    success  1 ms
12:00:02.500       sip  BYE  from 100  127.0.0.1:5060 UDP
12:00:02.500       sip    200 OK for BYE  to 100  127.0.0.1:5060 UDP
12:00:02.500    engine    4711 call 3: held → idle  100
)");
}

TEST(TraceTree, OtherKinds_AreReadable)
{
    TraceText trace;
    trace.step(0, R"("step":"command","application":"console","text":"press 3")");
    trace.step(1, R"("step":"key","key":3,"label":"Hold","function":"hold","action":"pressed")");
    trace.step(1, R"("step":"reason","text":"there is no call to hold")");
    trace.step(0, R"("step":"key","hook":"up")").step(0, R"("step":"key","plug":"headset","action":"in")");
    trace.lamp(0, 69, "", "off", "none").step(0, R"("step":"timer","name":"nobody answers a forwarded line")");
    trace.step(0, R"("step":"store","settings":["dnd","agent-state"])")
        .step(0, R"("step":"fault","fault":"lamps stuck","state":"begins")");

    EXPECT_EQ(treeOf(trace.contents()), R"(
12:00:00.000         →  press 3, console
12:00:00.000       key    key 3 "Hold" pressed
12:00:00.000         ✕    there is no call to hold
12:00:00.000       key  handset lifted
12:00:00.000       key  headset plugged in
12:00:00.000      lamp  SecondAlert  off
12:00:00.000     timer  nobody answers a forwarded line
12:00:00.000     store  dnd, agent-state  written
12:00:00.000     fault  lamps stuck begins
)");
}

TEST(TraceTree, PlatformCall_HasItsDurationFromAMillisecondOn)
{
    TraceText trace;
    trace.step(0, R"("step":"platform","name":"CSfi::Lock","result":"sfiFailure","microseconds":999)");
    trace.step(0, R"("step":"platform","name":"CSfi::Lock","arguments":{"lineURI":"4711"},"microseconds":1000)");
    trace.step(0, R"("step":"answer","microseconds":-1,"text":"sfiSuccess")").step(0, R"("step":"answer")");
    EXPECT_EQ(treeOf(trace.contents()), R"(
12:00:00.000  platform  CSfi::Lock  failure
12:00:00.000  platform  CSfi::Lock  4711  1 ms
12:00:00.000         ←  success  <1 ms
12:00:00.000         ←  finished
)");
}

TEST(TraceTree, StepsOfCalls_NameTheirPlacesAndParties)
{
    TraceText trace;
    trace.engine(0, 1, "", "dialling")
        .engine(0, 1, "dialling", "dialling", "")
        .step(0, R"("step":"sip","direction":"received","method":"OPTIONS","peer":"192.0.2.1:5060","transport":"TCP")");
    trace.step(0, R"("step":"sip","direction":"sent","method":"BYE","dialog":"d1","audio":"sendonly")");
    trace.step(0, R"("step":"store","settings":"dnd","reason":"full")");
    DisplayOptions ascii = options();
    ascii.ascii = true;
    trace.engine(0, 1, "dialling", "idle", "");
    EXPECT_EQ(treeOf(trace.contents(), {}, TraceTree::Form::kWords, ascii), R"(
12:00:00.000    engine  4711 call 1: dialling  100
12:00:00.000    engine  4711 call 1: still dialling
12:00:00.000       sip  OPTIONS  from 192.0.2.1:5060
12:00:00.000       sip  BYE sendonly  to the far end
12:00:00.000     store  dnd  not written: full
12:00:00.000    engine  4711 call 1: dialling > idle
)");
}

TEST(TraceTree, FilterOfKinds_KeepsAncestors)
{
    auto const kinds = TraceTree::readKinds("event,lamp");
    ASSERT_TRUE(kinds);
    DisplayOptions coloured = options();
    coloured.colour = true;

    EXPECT_EQ(treeOf(held().contents(), {*kinds, "", ""}), R"(
12:00:00.000         →  OutgoingCallMakeRequest  4711 call 3  Destination=100, console
12:00:00.000  platform    CSfi::CallMake  call 3  destination=100  dssDirectCall=true  success
12:00:00.000       sip      INVITE  to 100  127.0.0.1:5060 UDP
12:00:00.001       sip        200 OK for INVITE  from 100  127.0.0.1:5060 UDP
12:00:00.001         8          <Method>CallHeldEvent</Method>unreadable
12:00:01.201         →  HoldCall  4711 call 3, console
12:00:01.201  platform    CSfi::CallFeature  call 3  feature=hold  mode=1  success
12:00:01.201       sip      INVITE sendonly  to 100  127.0.0.1:5060 UDP
12:00:01.201       sip        200 OK recvonly for INVITE  from 100  127.0.0.1:5060 UDP
12:00:01.201      lamp          3 "Hold"  flashing green
12:00:01.201         9          held  4711 call 3
)");
    std::string const line = treeOf(TraceText().request("GetDevices").lamp(1, 3, "", "steady", "red").contents(),
                                    {{StepKind::kLamp}, "", ""}, TraceTree::Form::kWords, coloured);
    EXPECT_EQ(line,
              "\n\x1b[2m12:00:00.000\x1b[0m\x1b[2m         \x1b[0m\x1b[2m→\x1b[0m\x1b[2m  \x1b[0m\x1b[2mGetDevices"
              "\x1b[0m\x1b[2m, console\x1b[0m\n"
              "\x1b[2m12:00:00.000\x1b[0m      lamp    3  \x1b[31msteady red\x1b[0m\n");
}

TEST(TraceTree, MarksOfInputsAndReasons_AreColoured)
{
    DisplayOptions coloured = options();
    coloured.colour = true;
    TraceText trace;
    trace.request("GetDevices").step(0, R"("step":"command","application":"console","text":"lock")");
    trace.step(0, R"("step":"reason","text":"no")").step(0, R"("step":"timer","name":"ring")");
    std::string const text = treeOf(trace.contents(), {}, TraceTree::Form::kWords, coloured);
    EXPECT_EQ(text, "\n12:00:00.000         \x1b[34m→\x1b[0m  \x1b[34mGetDevices\x1b[0m\x1b[2m, console\x1b[0m\n"
                    "\x1b[2m12:00:00.000\x1b[0m         \x1b[34m→\x1b[0m  \x1b[34mlock\x1b[0m\x1b[2m, console\x1b[0m\n"
                    "\x1b[2m12:00:00.000\x1b[0m         \x1b[35m✕\x1b[0m  \x1b[35mno\x1b[0m\n"
                    "\x1b[2m12:00:00.000\x1b[0m     timer  \x1b[1mring\x1b[0m\n");
}

TEST(TraceTree, UnknownKind_IsRefused)
{
    auto const kinds = TraceTree::readKinds("request,evnt");
    ASSERT_FALSE(kinds);
    EXPECT_EQ(kinds.error().reason, "there are no steps \"evnt\" (did you mean event?)");
}

TEST(TraceTree, FilterOfLineOrCall_TakesWhatTheyCaused)
{
    TraceText trace;
    trace.request("<Method>HoldCall</Method><Line>4711#2</Line><CallID>1</CallID>").lamp(1, 3, "", "off", "none");
    trace.request("<Method>HoldCall</Method><Line>47110</Line><CallID>2</CallID>").lamp(3, 4, "", "off", "none");
    TraceContents const contents = trace.contents();

    std::string const ofFirst = R"(
12:00:00.000         →  HoldCall  4711#2 call 1, console
12:00:00.000      lamp    3  off
)";
    EXPECT_EQ(treeOf(contents, {{}, "4711", ""}), ofFirst);
    EXPECT_EQ(treeOf(contents, {{}, "", "1"}), ofFirst);
    EXPECT_EQ(treeOf(contents, {{}, "4711", "2"}), "\n");
}

TEST(TraceTree, FilterOfCall_TakesEveryKindOfStepThatIsAboutIt)
{
    TraceText trace;
    trace.engine(0, 3, "", "dialling").platform(0, "CSfi::CallClear", R"("lineURI":"4711","callID":3)");
    trace.sip(0, "sent", "BYE").event(0, 9, "<Method>CallHeldEvent</Method><LineID>4711</LineID><CallID>3</CallID>");
    trace.engine(0, 4, "", "dialling", "sip:103@127.0.0.1:5060", "d2").sip(0, "sent", "BYE", "", "d2");
    for (std::string_view const line : {"", "4711"}) {
        EXPECT_EQ(treeOf(trace.contents(), {{}, std::string(line), "3"}), R"(
12:00:00.000    engine  4711 call 3: dialling  100
12:00:00.000  platform  CSfi::CallClear  4711 call 3  success
12:00:00.000       sip  BYE  to 100  127.0.0.1:5060 UDP
12:00:00.000         9  held  4711 call 3
)");
    }
}

TEST(TraceTree, Texts_StandAsInTheTrace)
{
    TraceText trace;
    trace.request("<Method>GetDevices</Method>").answer(1, "<prime:4711>");
    trace.step(
        1, R"("step":"sip","direction":"sent","method":"BYE","text":"BYE sip:100 SIP/2.0\r\nTo: \u001b[2J\r\n\r\n")");

    EXPECT_EQ(treeOf(trace.contents(TraceReader::Keep::kTexts), {}, TraceTree::Form::kTexts), R"(
12:00:00.000         →  <Method>GetDevices</Method>
12:00:00.000         ←    <prime:4711>
12:00:00.000       sip    BYE sip:100 SIP/2.0
                          To: \x1b[2J

)");
}

TEST(TraceTree, Json_IsTheLinesOfTheFile)
{
    TraceText const trace = TraceText().request("GetDevices").lamp(1, 3, "", "off", "none");

    EXPECT_EQ(treeOf(trace.contents(TraceReader::Keep::kTexts), {{StepKind::kLamp}, "", ""}, TraceTree::Form::kJson),
              "\n"
              R"({"seq":2,"time":"2026-03-01T12:00:00.000Z","thread":"SIP","id":1,"because":1,"step":"lamp","lamp":3,)"
              R"("label":"","mode":"off","colour":"none"})"
              "\n");
}

TEST(TraceTree, TextsFromTheWire_CannotControlTheTerminal)
{
    std::string const evil = R"(\u001b[2J\u202e<script>\n)";
    TraceText trace;
    trace.request(evil).platform(1, evil, "\"" + evil + "\":\"" + evil + "\"");
    trace.step(0, R"("step":"command","application":")" + evil + R"(","text":")" + evil + "\"");
    trace.step(0, R"("step":"reason","text":")" + evil + "\"").event(0, 1, evil).answer(1, evil);
    trace.engine(0, 1, evil, evil, evil, evil).sip(0, evil, evil, "200 " + evil, evil, evil);
    trace.lamp(0, 1, evil, evil, evil).step(0, R"("step":"timer","name":")" + evil + "\"");
    trace.step(0, R"("step":"key","key":1,"label":")" + evil + R"(","action":")" + evil + "\"");
    trace.step(0, R"("step":"key","hook":")" + evil + "\"");
    trace.step(0, R"("step":"key","plug":")" + evil + R"(","action":")" + evil + "\"");
    trace.step(0, R"("step":"store","settings":")" + evil + R"(","reason":")" + evil + "\"");
    trace.step(0, R"("step":"fault","fault":")" + evil + R"(","state":")" + evil + "\"");
    TraceContents const contents = trace.contents(TraceReader::Keep::kTexts);

    for (TraceTree::Form const form : {TraceTree::Form::kWords, TraceTree::Form::kTexts}) {
        std::string const text = treeOf(contents, {}, form);
        EXPECT_EQ(text.find('\x1b'), std::string::npos);
        EXPECT_EQ(text.find("\u202e"), std::string::npos);
    }
    std::string const words = treeOf(contents);
    EXPECT_EQ(std::count(words.begin(), words.end(), '\n'), trace.number() + 1);
}

TEST(TraceTree, ChainOfTenThousandSteps_IsShown)
{
    constexpr int kSteps = 10'000;
    TraceText trace;
    for (int number = 0; number < kSteps; ++number) {
        trace.step(number, R"("step":"timer","name":"ring")");
    }

    std::string const text = treeOf(trace.contents());

    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), kSteps + 1);
    // Indented no further than 24 levels.
    EXPECT_EQ(text.substr(text.rfind('\n', text.size() - 2) + 1),
              "12:00:00.000     timer  " + std::string(48, ' ') + "ring\n");
}

}  // namespace
}  // namespace telephone
