// The command fleet: real telephones in processes of their own. Its time is real, because it is that of many processes.
#include <csignal>
#include <filesystem>
#include <fstream>
#include <regex>
#include <sstream>

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include "Process.h"
#include "TelephoneClient.h"
#include "tests/doubles/TemporaryFolder.h"

using testing::HasSubstr;
using testing::MatchesRegex;

namespace {

class FleetTest : public testing::Test
{
protected:
    std::vector<std::string> command(std::vector<std::string> const& words) const
    {
        std::vector<std::string> all{TELEPHONE, "--time", "real", "fleet", "--files", folder_.file("files")};
        all.insert(all.end(), words.begin(), words.end());
        return all;
    }
    Ended fleet(std::vector<std::string> const& words, std::string const& input) const
    {
        return run(command(words), input);
    }
    std::string configuration(std::string const& text) const
    {
        std::ofstream(folder_.file("fleet.toml")) << text;
        return folder_.file("fleet.toml");
    }
    // The state of a telephone, asked at its own socket.
    nlohmann::json stateOf(std::string const& number) const
    {
        auto client = telephone_client::Connection::open(folder_.file("files/" + number + "/socket")).value();
        return nlohmann::json::parse(client.ask("state").value().text.value());
    }
    // Runs a line at the prompt, and the next one, so that its output is complete.
    static std::string say(Process& process, std::string const& line)
    {
        std::string const before = process.output();
        process.write(line + "\nhelp\n");
        return process.readUntil("ends the fleet\n").substr(before.size());
    }

    TemporaryFolder const folder_;
};

// The processes that a process has started.
std::vector<pid_t> telephonesOf(pid_t fleet)
{
    std::istringstream ids(
        contentOf("/proc/" + std::to_string(fleet) + "/task/" + std::to_string(fleet) + "/children"));
    std::vector<pid_t> found;
    for (pid_t each = 0; ids >> each;) {
        found.push_back(each);
    }
    return found;
}

bool isThere(pid_t process)
{
    return kill(process, 0) == 0;
}

void waitUntilGone(std::vector<pid_t> const& processes)
{
    auto const end = std::chrono::steady_clock::now() + Process::kDeadline;
    while (std::ranges::any_of(processes, isThere) && std::chrono::steady_clock::now() < end) {
        sched_yield();
    }
    EXPECT_FALSE(std::ranges::any_of(processes, isThere));
}

}  // namespace

TEST_F(FleetTest, Telephones_CallEachOtherWithAudio)
{
    Process process(command({"4"}));
    process.readUntil("files in");

    EXPECT_THAT(say(process, "call pairs"), HasSubstr("2 calls connected\n"));
    EXPECT_THAT(say(process, "list"), HasSubstr("4 telephones, 4 registered, 4 in a call"));
    EXPECT_THAT(say(process, "do 2,4 lines"), HasSubstr("1002"));
    auto const received = [this](std::string const& number) {
        auto const state = stateOf(number);
        return state["calls"][0]["audio"]["received"].get<int>();
    };
    auto const end = std::chrono::steady_clock::now() + Process::kDeadline;
    while ((received("001") < 50 || received("004") < 50) && std::chrono::steady_clock::now() < end) {
        sched_yield();
    }
    EXPECT_GE(received("001"), 50);
    EXPECT_GE(received("004"), 50);

    process.write("quit\n");
    EXPECT_EQ(process.wait(), 0);
}

TEST_F(FleetTest, TelephoneThatIsKilled_IsReportedAndComesBack)
{
    Process process(command({"3"}));
    process.readUntil("files in");
    auto const before = telephonesOf(process.id());
    ASSERT_EQ(before.size(), 3U);

    kill(before[1], SIGKILL);

    std::string const output = process.readUntil("runs again\n");
    EXPECT_TRUE(std::regex_search(output, std::regex("telephone [123] ended by signal 9 \\(Killed\\); it is started "
                                                     "again in 1 s\ntelephone [123] runs again\n")))
        << output;
    EXPECT_THAT(say(process, "call 1 2"), HasSubstr("1 call connected\n"));
    EXPECT_THAT(say(process, "call 3 100"), HasSubstr("there is no telephone 100"));
    process.endInput();
    process.readAll();
    EXPECT_EQ(process.wait(), 1);
}

TEST_F(FleetTest, Lines_OfAPipe_AreRunAndRefusalsAreTheExitStatus)
{
    Ended const good =
        fleet({"2"}, "# a comment\n\ndo all OutgoingCallMakeRequest Line=1{number} CallID=1 Destination=100\n"
                     "do 1 <Method>GetServiceState</Method>\nwait 10ms\nstop 2\nwait 3\nlist 2\n");
    EXPECT_EQ(good.status, 0) << good.output;
    EXPECT_THAT(good.output, HasSubstr("\n1-2: sfiSuccess\nsfiSuccess,sfiServiceInService\n"));
    EXPECT_THAT(good.output, HasSubstr("telephone 2 is stopped\n"));
    EXPECT_THAT(good.output, HasSubstr("\n2                    stopped\n"));

    Ended const wrong = fleet({"1"}, "do 1 HoldCall Line=1001 CallID=7\nquit\n");
    EXPECT_EQ(wrong.status, 1);
    EXPECT_THAT(wrong.output, HasSubstr("sfiFailure: line 1001 has no call 7; the telephone has no calls\n"));
}

TEST_F(FleetTest, Signal_EndsAllTelephones)
{
    Process process(command({"3"}));
    process.readUntil("files in");
    auto const telephones = telephonesOf(process.id());

    process.signal(SIGINT);

    EXPECT_EQ(process.wait(), 0);
    waitUntilGone(telephones);
}

TEST_F(FleetTest, KilledFleet_LeavesNoTelephone)
{
    Process process(command({"3"}));
    process.readUntil("files in");
    auto const telephones = telephonesOf(process.id());
    ASSERT_EQ(telephones.size(), 3U);

    process.signal(SIGKILL);

    EXPECT_EQ(process.wait(), 128 + SIGKILL);
    waitUntilGone(telephones);
}

TEST_F(FleetTest, TwoFleets_RunAtOnce)
{
    Process first({TELEPHONE, "--time", "real", "fleet", "2"});
    first.readUntil("files in");
    Process second({TELEPHONE, "--time", "real", "fleet", "2"});
    second.readUntil("files in");

    EXPECT_THAT(say(first, "call 1 2"), HasSubstr("1 call connected"));
    EXPECT_THAT(say(second, "call 1 2"), HasSubstr("1 call connected"));

    for (Process* const each : {&first, &second}) {
        std::string const output = each->output();
        std::string const folder = std::regex_replace(output, std::regex("[^]*files in ([^\n]*)[^]*"), "$1");
        EXPECT_TRUE(std::filesystem::exists(folder)) << folder;
        each->endInput();
        EXPECT_EQ(each->wait(), 0);
        EXPECT_FALSE(std::filesystem::exists(folder)) << folder;
    }
}

TEST_F(FleetTest, WrongNumberOfTelephones_IsRefused)
{
    EXPECT_EQ(fleet({"0"}, "").status, 2);
    EXPECT_EQ(fleet({"1000"}, "").status, 2);
    EXPECT_EQ(fleet({"many"}, "").status, 2);
    EXPECT_EQ(fleet({}, "").status, 2);
}

TEST_F(FleetTest, WhatDoesNotFit_IsRefusedWithTheReason)
{
    Ended const timed = run({TELEPHONE, "--time", "virtual", "fleet", "2"});
    EXPECT_EQ(timed.status, 2);
    EXPECT_EQ(timed.output, "telephone: the telephones of a fleet are processes of their own, and virtual time moves "
                            "within one process: start the fleet with --time real\n");

    std::string const file = configuration("[[line]]\nid = \"4711\"\n");
    Ended const shared = fleet({"2", "--config", file}, "");
    EXPECT_EQ(shared.status, 2);
    EXPECT_EQ(shared.output, "telephone: " + file +
                                 ": all telephones of the fleet would have line.id = 4711; write "
                                 "{number} in it: id = \"1{number}\"\n");

    Ended const logged = fleet({"2", "--log-file", "log"}, "");
    EXPECT_EQ(logged.status, 2);
    EXPECT_EQ(logged.output, "telephone: each telephone of a fleet has a log and a socket of its own: leave out "
                             "--log-file, --socket, --record and --trace\n");
}

TEST_F(FleetTest, PortInUse_IsRefused)
{
    Process first(command({"1"}));
    std::string const port =
        std::regex_replace(first.readUntil("files in"), std::regex("[^]*127.0.0.1:([0-9]+)/fleet[^]*"), "$1");

    Ended const second = run({TELEPHONE, "--time", "real", "--config",
                              configuration("[http]\naddress = \"127.0.0.1:" + port + "\"\n"), "fleet", "1"});

    EXPECT_EQ(second.status, 1);
    EXPECT_THAT(second.output, HasSubstr("telephone: cannot listen at 127.0.0.1:" + port +
                                         " for HTTP: another program uses the port"));
}

TEST_F(FleetTest, TooFewOpenFiles_AreRefused)
{
    Ended const ended = run({"/bin/sh", "-c", "ulimit -n 300; exec \"$0\" --time real fleet 20", TELEPHONE});

    EXPECT_EQ(ended.status, 1);
    EXPECT_EQ(ended.output, "telephone: 20 telephones need 336 open files, and the system permits 300: raise it with "
                            "ulimit -n, or start fewer\n");
}

TEST_F(FleetTest, TelephoneThatCannotStart_EndsTheFleetWithItsReason)
{
    Ended const ended = fleet({"2", "--library", "/no/such/library.so"}, "");

    EXPECT_EQ(ended.status, 1);
    EXPECT_THAT(ended.output, MatchesRegex("panel: [^\n]*\ntelephone: telephone [12] ended with status 1: telephone: "
                                           "[^\n]*/no/such/library.so[^\n]*; its files are in [^\n]*\n"));
}
