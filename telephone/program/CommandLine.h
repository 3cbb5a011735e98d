// The telephone's command line.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "telephone/base/Refusal.h"
#include "telephone/console/Terminal.h"
#include "telephone/program/TrafficCheck.h"
#include "telephone/testing/Seeds.h"

namespace CLI {
class App;
}  // namespace CLI

namespace telephone {

enum class Action
{
    kConsole,
    kTour,
    kPlay,
    kReplay,
    kTrace,
    kWhy,
    kLadder,
    kServe,
    kPanel,
    kTest,
    kChaos,
    kExchange,
    kFleet,
    kDo,
    kRequest,
    kWatch,
    kStore,
    kDevices,
    kDescribe,
};

// Whether it is a telephone for other programs alone, without a console.
constexpr bool servesOthers(Action action)
{
    return action == Action::kServe || action == Action::kPanel;
}

// How what happens is written.
struct OutputChoice
{
    bool raw = false;   // with the tags
    bool json = false;  // also of the description of the protocol
    ColourUse colour = ColourUse::kAuto;
    bool addresses = false;  // as in DisplayOptions
    bool date = false;
    bool utc = false;
};

// What the command test plays, and how.
struct TestChoice
{
    std::vector<std::string> scripts;     // files and folders
    std::optional<int> jobs;              // telephones at a time; nothing: one for each processor
    std::optional<Seeds> seeds;           // nothing: that of --seed
    double limit = 120;                   // seconds for each script
    std::string files;                    // folder for those of failed scripts; empty: a new one
    std::optional<std::string> coverage;  // nothing: none; a file for JSON beside the table; empty: only the table
};

// What the command replay does.
struct ReplayChoice
{
    std::string recording;              // file
    bool asTelephone = false;           // the telephone's side
    std::vector<std::string> sessions;  // recorded ones of the application; empty: all but the console
    std::optional<std::string> report;  // file for the report; "-": standard output
};

// What the commands trace, why and ladder read, and what they show of it.
struct TraceChoice
{
    std::string file;
    std::string only;               // kinds of steps, separated by commas; empty: all
    std::string line;               // empty: all
    std::string call;               // empty: all
    bool follow = false;            // goes on as the file grows
    std::vector<std::string> what;  // to explain: the number of an event, or "lamp" and a lamp
    std::string svg;                // file for the ladder; "-": standard output; empty: as text
};

struct CommandLine
{
    Action action = Action::kConsole;
    bool lamps = false;         // console, tour and play write changes of lamps
    std::string configuration;  // file; empty: the standard telephone
    std::string socket;         // empty: the configured one, else the standard one
    std::string library;        // empty: see ServiceLibrary::find
    std::string logFile;
    std::optional<int> logLevel;
    bool withoutExchange = false;
    std::string time;                                                   // as --time has it; empty: it does not say
    std::optional<std::chrono::system_clock::time_point> virtualStart;  // nothing: in real time
    std::uint64_t seed = 0;                                             // of virtual time
    CheckedTraffic checked = CheckedTraffic::kNone;
    int port = 0;            // of the exchange without a telephone; 0: the configured one
    std::string script;      // to play; "-": standard input
    std::string scriptText;  // read from the file before the telephone is made (withScript)
    std::string junit;       // file for the results of scripts; empty: none
    std::string report;      // file for the test runner; empty: none plays this script
    std::string record;      // file for a recording from the start on; empty: none
    std::string trace;       // the same for a trace
    TestChoice test;
    int hours = 1;  // of chaos
    int count = 1;  // telephones of a fleet
    ReplayChoice replay;
    TraceChoice traced;
    std::vector<std::string> words;  // of a request or a command, or the name to describe
    bool lenient = false;            // request: the telephone does not check it
    OutputChoice output;
    std::string lines;                   // watch: separated by commas; empty: all
    std::string events;                  // watch: names, separated by commas; empty: all
    std::optional<std::uint64_t> after;  // watch: begin with the event after this one; nothing: with the next one

    static constexpr std::string_view kRealTime = "real";

    // As --time does. Refused for a wrong word.
    [[nodiscard]] Outcome<> setTime(std::string const& word);

    // Adds all options and commands to a parser, which then sets this one. Help, manual and completion are made from
    // it.
    void offer(CLI::App& app);

    // Nothing: the program ends at once with the exit status, after --help or after a mistake, which is on standard
    // error.
    static std::optional<CommandLine> read(int count, char const* const* arguments, int& exitStatus);
};

}  // namespace telephone
