// What traces of the whole telephone show, in virtual time: docs/trace.md, and calls of every kind.
#include <fstream>
#include <sstream>
#include <tuple>

#include <gtest/gtest.h>

#include "Process.h"
#include "tests/doubles/GeneratedPage.h"
#include "tests/doubles/TemporaryFolder.h"

namespace {

class Analysis : public testing::Test
{
protected:
    // Plays a script, with a trace.
    void play(std::string const& script) const
    {
        writeFile(folder_.file("a.script"), script);
        trace({"play", folder_.file("a.script")});
    }

    void trace(std::vector<std::string> const& command) const
    {
        std::vector<std::string> words{
            TELEPHONE, "--time", "virtual", "--socket", folder_.file("socket"), "--trace", folder_.file("a.trace")};
        words.insert(words.end(), command.begin(), command.end());
        Ended const ended = run(words);
        EXPECT_EQ(ended.status, 0) << ended.output;
    }

    // What a command says of the trace: "why", "9". On a line of its own.
    std::string shown(std::string const& command, std::vector<std::string> const& arguments = {}) const
    {
        // In virtual time all times are in UTC, and marked so.
        std::vector<std::string> words{"env",    "LC_ALL=C.UTF-8", "TZ=UTC", TELEPHONE,
                                       "--time", "real",           command,  folder_.file("a.trace")};
        words.insert(words.end(), arguments.begin(), arguments.end());
        Ended const ended = run(words);
        EXPECT_EQ(ended.status, 0) << ended.output;
        return "\n" + ended.output;
    }

    TemporaryFolder const folder_;
};

// The blocks of code of a page, without their marks.
std::vector<std::string> blocksOf(std::string const& page)
{
    std::vector<std::string> blocks;
    std::istringstream text(page);
    bool isInside = false;
    for (std::string line; std::getline(text, line);) {
        if (line.starts_with("```")) {
            isInside = !isInside;
            blocks.resize(blocks.size() + (isInside ? 1 : 0));
        } else if (isInside) {
            blocks.back() += line + "\n";
        }
    }
    return blocks;
}

std::vector<std::string> wordsOf(std::string const& line)
{
    std::istringstream text(line);
    std::vector<std::string> words;
    for (std::string word; text >> word;) {
        words.push_back(word);
    }
    return words;
}

}  // namespace

TEST_F(Analysis, ExamplesOfThePage_AreWhatTheTelephoneSays)
{
    constexpr std::string_view kPrompt = "$ scripts/run ";
    std::vector<std::string> const blocks = blocksOf(contentOf(PROJECT "/docs/trace.md"));
    ASSERT_GE(blocks.size(), 6U);
    play(blocks.at(1));

    std::size_t examples = 0;
    for (std::string const& block : blocks) {
        std::size_t const end = block.find('\n');
        bool const isExample = block.starts_with(kPrompt) && end + 1 < block.size() && block[end + 1] != '$';
        if (!isExample) {
            continue;
        }
        std::vector<std::string> words = wordsOf(block.substr(kPrompt.size(), end - kPrompt.size()));
        std::string const command = words.front();
        words.erase(words.begin());
        std::erase(words, "hold.trace");
        EXPECT_EQ(shown(command, words), block.substr(end)) << block.substr(0, end);
        ++examples;
    }
    EXPECT_EQ(examples, 4U);
}

TEST_F(Analysis, LaddersOfTheTourAndOfAHold_AreThoseOfThePages)
{
    auto const expectLadder = [this](std::string const& page) {
        Ended const drawn = run({TELEPHONE, "ladder", folder_.file("a.trace"), "--svg", "-"});
        EXPECT_EQ(drawn.status, 0);
        expectPage(page, drawn.output);
    };

    trace({"tour"});
    expectLadder("tour-ladder.svg");
    play(blocksOf(contentOf(PROJECT "/docs/trace.md")).at(1));
    expectLadder("hold-ladder.svg");
}

TEST_F(Analysis, CallThatIsForwardedOnNoReply_IsToldByItsTimer)
{
    play("setForwardingConfiguration Line=4711 fwType=6 status=1 uri=103 cfnrRingCount=3\n"
         "call 4711 from 100\n"
         "wait CallForwardedEvent within 30\n");

    EXPECT_EQ(shown("why", {"8"}), R"(
Event 8 says about call 1001 from 100: forwarded, to 103, no reply.
Call 1001 from 100 had ended, because the timer "nobody answers a forwarded line" ran out.
It had been started 15.0 s earlier, when 100 sent an INVITE, as console asked with the command "call 4711 from 100" at 00:00:00.200.
)");
    EXPECT_EQ(shown("ladder"), R"(
s   application                                 service                 engine                          100
  0.000  │────────── call 4711 from 100 ──────────▶│                       │                             │
         │                                         │                       │◀────────── INVITE ──────────│
         │                                         │                       │─────── 180 Ringing ────────▶│
         │◀─── event 5: incoming call, internal ───│                       │                             │
         │◀─────────── event 6: ringing ───────────│                       │                             │
         │                                         │                       │     it rings for 15.0 s     │
         timer: nobody answers a forwarded line
 15.000  │                                         │                       │── 302 Moved Temporarily ───▶│
         │◀─────── event 7: idle, forwarded ───────│                       │                             │
         │◀─ event 8: forwarded, to 103, no reply ─│                       │                             │
         │                                         │                       │◀─────────── ACK ────────────│
)");
}

TEST_F(Analysis, IncomingCallAnsweredAndHeldByKeys_LeadsBackToTheKeys)
{
    play("call 4711 from 100\n"
         "wait CallStateChangeEvent CallState=ringing\n"
         "press 1\n"
         "wait CallStateChangeEvent CallState=connected\n"
         "press 7\n"
         "wait CallHeldEvent\n");

    EXPECT_EQ(shown("why", {"7"}), R"(
Event 7 says that call 1001 from 100 is connected.
Call 1001 from 100 had been connected, because 100 sent an ACK.
The telephone had answered the INVITE of 100 with 200 OK, because key 1 "4711" was pressed, as console asked with the command "press 1" at 00:00:00.200.
)");
    EXPECT_EQ(shown("why", {"8"}), R"(
Event 8 says that call 1001 from 100 is held.
The call engine had put call 1001 from 100 on hold, because 100 answered the INVITE with 200 OK recvonly.
The telephone had sent this INVITE to 100, because the service called CSfi::HandleKeyFunction.
This happened because key 7 "Hold" was pressed, as console asked with the command "press 7" at 00:00:01.100.
)");
}

TEST_F(Analysis, Transfer_LeadsFromTheFarEndsNotifyToItsRefer)
{
    play(contentOf(SCRIPTS "/attended-transfer.script"));

    EXPECT_EQ(shown("why", {"17"}), R"(
Event 17 says that call 1 to 100 is over.
Call 1 to 100 had ended, because 100 sent a NOTIFY.
It followed a REFER that the telephone had sent to 100, because the service called CSfi::CallFeature with feature attended transfer.
It did so for the request AttendedTransfer 4711 activeCall=2 heldCall=1 of console at 00:00:00.400.
)");
}

TEST_F(Analysis, BusyNumberAndRefusal_AreInTheLadder)
{
    play("OutgoingCallMakeRequest Line=4711 CallID=1 Destination=101\n"
         "wait CallStateChangeEvent CallState=busy\n"
         "CallClearRequest Line=4711 CallID=1\n");

    EXPECT_EQ(shown("ladder", {"--call", "1"}), R"(
s   application                          service                 engine                          101
  0.000  │── OutgoingCallMakeRequest 101 ──▶│                       │                             │
         │                                  │──── CallMake 101 ────▶│                             │
         │                                  │                       │────────── INVITE ──────────▶│
         │◀──────────── success ────────────│                       │                             │
         │◀─────── event 5: dialling ───────│                       │                             │
         │                                  │                       │◀────── 486 Busy Here ───────│
         │                                  │                       │─────────── ACK ────────────▶│
         │◀───────── event 6: busy ─────────│                       │                             │
         │           0.1 s later            │                       │                             │
  0.100  │─────── CallClearRequest ────────▶│                       │                             │
         │                                  │───── CallClear ──────▶│                             │
         │                                  │◀───── ✕ failure ──────│                             │
         │◀─────────── ✕ failure ───────────│                       │                             │
         ✕ line 4711 has no call 1; the telephone has no calls
)");
}

TEST_F(Analysis, WhatATraceDoesNotHave_IsRefused)
{
    play("GetDevices\n");

    for (auto const& [command, argument, reason] :
         {std::tuple{"why", "99", "has no event 99; it has the events 1 to 6"},
          {"why", "often", "write the number of an event, or lamp and the number of its key"},
          {"why", "0", "write the number of an event, or lamp and the number of its key"},
          {"why", "lamp", "write the number of an event, or lamp and the number of its key"},
          {"ladder", "--color=never", "has no calls"},
          {"trace", "--only=evnt", "there are no steps \"evnt\" (did you mean event?)"}}) {
        Ended const ended = run({TELEPHONE, command, folder_.file("a.trace"), argument});
        EXPECT_EQ(ended.status, 2);
        EXPECT_NE(ended.output.find(reason), std::string::npos) << ended.output;
    }
    Ended const two = run({TELEPHONE, "why", folder_.file("a.trace"), "1", "2"});
    EXPECT_EQ(two.status, 2);
    EXPECT_EQ(two.output, "telephone: write the number of an event, or lamp and the number of its key\n");
    Ended const missing = run({TELEPHONE, "trace", folder_.file("b.trace")});
    EXPECT_EQ(missing.status, 2);
    EXPECT_EQ(missing.output, "telephone: " + folder_.file("b.trace") + ": cannot be read\n");
}

TEST_F(Analysis, TraceThatIsFollowed_GrowsUntilASignal)
{
    play("GetDevices\n");
    std::string const whole = contentOf(folder_.file("a.trace"));
    std::size_t const half = whole.find('\n', whole.size() / 2) + 1;
    writeFile(folder_.file("b.trace"), whole.substr(0, half));
    Process process({TELEPHONE, "trace", folder_.file("b.trace"), "--follow", "--time", "real"});
    process.readUntil("registered  4711");

    std::ofstream(folder_.file("b.trace"), std::ios::app) << whole.substr(half);

    process.readUntil("not registered");
    process.signal(SIGINT);
    EXPECT_EQ(process.wait(), 0);
}
