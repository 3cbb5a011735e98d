#include "telephone/program/CommandLine.h"

#include <utility>

#include <CLI/CLI.hpp>

#include "telephone/base/Version.h"
#include "telephone/time/TimeText.h"
#include "telephone/time/VirtualTime.h"

namespace telephone {

namespace {

constexpr char const* kFooter =
    "Without a command: the console.\n"
    "Pages such as docs/trace.md are in share/doc/telephone of an installation, and in the project.\n"
    "A request is written as METHOD Tag=value ..., or in full: '<Method>GetDevices</Method>'.";

CLI::App* add(CLI::App& app, CommandLine& line, Action action, char const* name, char const* meaning)
{
    CLI::App* const command = app.add_subcommand(name, meaning);
    command->fallthrough();
    command->callback([&line, action] { line.action = action; });
    return command;
}

// What a value is, for help, manual and completion.
constexpr char const* kFileValue = "FILE";
constexpr char const* kFolderValue = "FOLDER";

constexpr std::string_view kVirtual = "virtual";
constexpr std::string_view kVirtualFrom = "virtual=";

// "2025-03-30T00:59:00Z" or with milliseconds.
std::optional<std::chrono::system_clock::time_point> beginningOf(std::string word)
{
    if (!word.starts_with(kVirtualFrom)) {
        return std::nullopt;
    }
    word.erase(0, kVirtualFrom.size());
    if (word.ends_with('Z') && word.find('.') == std::string::npos) {
        word.insert(word.size() - 1, ".000");
    }
    return readTime(word);
}

void addOptions(CLI::App& app, CommandLine& line)
{
    app.add_option("-c,--config", line.configuration, "Configuration file (docs/configuration.md)")
        ->check(CLI::ExistingFile);
    app.add_option("-s,--socket", line.socket, "Socket of the applications")->type_name(kFileValue);
    app.add_option("-l,--library", line.library,
                   "Service library; default: the one beside the program, or of its installation")
        ->type_name(kFileValue);
    app.add_option("--log-level", line.logLevel, "0 (nothing) to 6 (every request and SIP message)")
        ->check(CLI::Range(0, 6));
    app.add_option("--log-file", line.logFile, "File of the log; default: standard error")->type_name(kFileValue);
    app.add_option("--record", line.record, "Record what crosses to applications in this file (docs/replay.md)")
        ->type_name(kFileValue);
    app.add_option("--trace", line.trace, "Write all that happens, with its causes, to this file (docs/trace.md)")
        ->type_name(kFileValue);
    CLI::Option* const time =
        app.add_option_function<std::string>(
               "--time", [&line](std::string const& word) { static_cast<void>(line.setTime(word)); },
               "real, virtual, or virtual=2025-03-30T00:59:00Z (its beginning)")
            ->envname("TELEPHONE_TIME")
            ->check(
                [](std::string const& word) {
                    auto const set = CommandLine().setTime(word);
                    return set ? std::string() : set.error().reason;
                },
                "");
    app.add_option("--seed", line.seed,
                   "Of virtual time: draws who runs first and how long a datagram takes; 0: neither")
        ->needs(time);
    app.add_flag("--no-exchange", line.withoutExchange, "Start without the built-in exchange");
    app.add_option_function<std::string>(
           "--check", [&line](std::string const& word) { line.checked = *checkedTraffic(word); },
           "End with status 4 at the first message that contradicts the description of the protocol: events, or all "
           "(requests, too); default: none")
        ->envname("TELEPHONE_CHECK")
        ->check(CLI::IsMember(std::vector<std::string>(kCheckedTrafficWords.begin(), kCheckedTrafficWords.end())));
}

ColourUse colourUse(std::string const& word)
{
    if (word == "always") {
        return ColourUse::kAlways;
    }
    return word == "never" ? ColourUse::kNever : ColourUse::kAuto;
}

// How words are written.
void addWords(CLI::App& command, OutputChoice& output)
{
    command
        .add_option_function<std::string>(
            "--color", [&output](std::string const& word) { output.colour = colourUse(word); },
            "auto (on a terminal, unless NO_COLOR is set), always or never")
        ->check(CLI::IsMember({"auto", "always", "never"}));
    command.add_flag("--addresses", output.addresses, "Parties as complete addresses");
    command.add_flag("--date", output.date, "The day before the time");
    command.add_flag("--utc", output.utc, "Times in UTC");
}

// Of the commands that write what happens.
void addOutput(CLI::App& command, OutputChoice& output)
{
    CLI::Option* const raw = command.add_flag("--raw", output.raw, "What happens with its tags, not in words");
    command.add_flag("--json", output.json, "What happens as JSON, one object a line")->excludes(raw);
    addWords(command, output);
}

// Returns the command, for its output.
CLI::App* addWatch(CLI::App& app, CommandLine& line)
{
    CLI::App* const watch = add(app, line, Action::kWatch, "watch", "Prints the events of a running telephone");
    watch->add_option("--line", line.lines, "Only events of these lines; 4711 includes 4711#2");
    watch->add_option("--only", line.events, "Only these events, such as CallHeldEvent,CallRetrievedEvent")
        ->type_name("EVENTS");
    watch->add_option("--after", line.after, "Begin with the event after this number");
    return watch;
}

void addReplay(CLI::App& app, CommandLine& line)
{
    ReplayChoice& choice = line.replay;
    CLI::App* const replay =
        add(app, line, Action::kReplay, "replay", "Repeats a recording, and says what is different");
    replay->add_option("FILE", choice.recording, "Recording, made with --record or the command record")->required();
    CLI::Option* const side =
        replay->add_flag("--as-telephone", choice.asTelephone,
                         "Play the telephone to an application at the socket, without a telephone");
    replay
        ->add_option("--session", choice.sessions, "Recorded session of the application; default: all but the console")
        ->needs(side);
    replay
        ->add_option_function<std::string>(
            "--report", [&choice](std::string const& file) { choice.report = file; },
            "Table of all messages and their differences, in a file; - is standard output")
        ->type_name(kFileValue)
        ->expected(0, 1)
        ->default_str("-")
        ->trigger_on_parse();
    replay->add_flag("--json", line.output.json, "The report as JSON");
}

// The commands that read a trace.
void addTraceCommands(CLI::App& app, CommandLine& line)
{
    constexpr char const* kFile = "Trace, made with --trace or the command trace";
    TraceChoice& choice = line.traced;
    CLI::App* const trace =
        add(app, line, Action::kTrace, "trace", "Shows a trace: each request with everything it caused");
    trace->add_option("FILE", choice.file, kFile)->required();
    trace->add_option("--only", choice.only, "Only these steps and what led to them, such as request,event,sip");
    trace->add_option("--line", choice.line, "Only steps of this line; 4711 includes 4711#2");
    trace->add_option("--call", choice.call, "Only steps of the call with this id");
    trace->add_flag("--follow", choice.follow, "Go on as the file grows, until a signal ends it");
    CLI::App* const why =
        add(app, line, Action::kWhy, "why", "Explains what led to an event, or to the light of a lamp");
    why->add_option("FILE", choice.file, kFile)->required();
    why->add_option("WHAT", choice.what, "Number of an event, or: lamp KEY")->required()->expected(1, 2);
    CLI::App* const ladder = add(app, line, Action::kLadder, "ladder", "Draws the calls of a trace as a ladder");
    ladder->add_option("FILE", choice.file, kFile)->required();
    ladder->add_option("--call", choice.call, "The call with this id; default: all calls");
    ladder->add_option("--svg", choice.svg, "File for the ladder as SVG; - is standard output; default: as text")
        ->type_name(kFileValue);
    addOutput(*trace, line.output);
    for (CLI::App* const each : {why, ladder}) {
        addWords(*each, line.output);
    }
}

Seeds readSeeds(std::string const& text)
{
    auto const seeds = Seeds::parse(text);
    return seeds ? *seeds : throw CLI::ValidationError("--seeds", seeds.error().reason);
}

void addTest(CLI::App& app, CommandLine& line)
{
    TestChoice& choice = line.test;
    constexpr int kMostJobs = 1000;
    constexpr double kLongestLimit = 86400;
    CLI::App* const test = add(app, line, Action::kTest, "test", "Plays scripts, each in a telephone of its own");
    test->add_option("PATHS", choice.scripts, "Scripts, and folders with files *.script")->required();
    test->add_option("-j,--jobs", choice.jobs, "Telephones at a time; default: one for each processor")
        ->check(CLI::Range(1, kMostJobs));
    test->add_option_function<std::string>(
        "--seeds", [&choice](std::string const& text) { choice.seeds = readSeeds(text); },
        "Plays each script with each of the seeds A-B; default: that of --seed, or 0");
    test->add_option("--limit", choice.limit, "Seconds after which a script is ended; default: 120")
        ->check(CLI::Range(0.001, kLongestLimit));
    test->add_option("--junit", line.junit, "File for the results, as JUnit XML")->type_name(kFileValue);
    test->add_option("--files", choice.files, "Folder for the logs of what failed; default: a new one")
        ->type_name(kFolderValue);
    test->add_flag("--coverage{}", choice.coverage,
                   "What the scripts touched, as a table; --coverage=FILE: as JSON, too");
}

void addChaos(CLI::App& app, CommandLine& line)
{
    constexpr int kMostHours = 1'000'000;
    CLI::App* const chaos = add(app, line, Action::kChaos, "chaos", "Random calls, keys and settings in virtual time");
    chaos->add_option("--seed", line.seed, "The first hour has the next seed; default: 0");
    chaos->add_option("--hours", line.hours, "Of virtual time; default: 1")->check(CLI::Range(1, kMostHours));
    chaos->add_option("-j,--jobs", line.test.jobs, "Telephones at a time; default: one for each processor");
    chaos->add_option("--files", line.test.files, "Folder for the script and log of a failure; default: a new one")
        ->type_name(kFolderValue);
}

void addFleet(CLI::App& app, CommandLine& line)
{
    constexpr int kMostTelephones = 999;
    CLI::App* const fleet =
        add(app, line, Action::kFleet, "fleet", "Many telephones on one exchange, and a prompt for them");
    fleet->add_option("N", line.count, "Telephones")->required()->check(CLI::Range(1, kMostTelephones));
    fleet->add_option("--files", line.test.files, "Folder for their files; default: a new one")
        ->type_name(kFolderValue);
}

void addCommands(CLI::App& app, CommandLine& line)
{
    CLI::App* const console =
        add(app, line, Action::kConsole, "console", "Telephone with a console (help lists its commands)");
    CLI::App* const tour =
        add(app, line, Action::kTour, "tour", "Demonstration of the telephone, then the console on a terminal");
    CLI::App* const play = add(app, line, Action::kPlay, "play", "Telephone that plays a script and ends");
    play->add_option("FILE", line.script, "Script; - is standard input")->required();
    play->add_option("--junit", line.junit, "File for the result, as JUnit XML")->type_name(kFileValue);
    play->add_option("--report", line.report)->group("");  // of the command test
    addTest(app, line);
    addChaos(app, line);
    add(app, line, Action::kServe, "serve", "Telephone for applications only, until a signal ends it");
    add(app, line, Action::kPanel, "panel", "Telephone shown in a browser, at the address that it prints");
    CLI::App* const exchange = add(app, line, Action::kExchange, "exchange", "The exchange without a telephone");
    exchange->add_option("--port", line.port, "Its port; 0: any free one")->check(CLI::Range(0, 65535));
    addFleet(app, line);
    CLI::App* const command = add(app, line, Action::kDo, "do", "Gives a command to a running telephone");
    command->add_option("WORDS", line.words, "Command of the console: press 1, lines, state, ...")->required();
    CLI::App* const request = add(app, line, Action::kRequest, "request", "Sends a request to a running telephone");
    request->add_option("WORDS", line.words, "METHOD Tag=value ...")->required();
    request->add_flag("--lenient", line.lenient, "Send it unchecked, as applications may");
    CLI::App* const watch = addWatch(app, line);
    addReplay(app, line);
    addTraceCommands(app, line);
    CLI::App* const store = add(app, line, Action::kStore, "store", "Reads and writes the configuration store");
    store->add_option("WORDS", line.words, "list | get KEY | set KEY VALUE");
    // A value may begin with a minus sign.
    store->allow_extras(false);
    add(app, line, Action::kDevices, "devices", "Lists the microphones and loudspeakers of this machine");
    CLI::App* const describe = add(app, line, Action::kDescribe, "describe", "Explains the protocol, or a name of it");
    CLI::Option* const name =
        describe->add_option("NAME", line.words, "Request, event, enumeration, element or value; without: an overview");
    describe->add_flag("--json", line.output.json, "Everything, as JSON")->excludes(name);
    for (CLI::App* const each : {console, tour, play, watch}) {
        addOutput(*each, line.output);
    }
    for (CLI::App* const each : {console, tour, play}) {
        each->add_flag("--lamps", line.lamps, "Changes of lamps, too");
    }
    app.require_subcommand(0, 1);
}

}  // namespace

Outcome<> CommandLine::setTime(std::string const& word)
{
    auto const beginning = word == kVirtual ? std::optional(VirtualTime::Settings().start) : beginningOf(word);
    if (!beginning && word != kRealTime) {
        return refuse(RefusalKind::kBadInput, "write real, virtual or virtual=2025-03-30T00:59:00Z");
    }
    time = word;
    virtualStart = beginning;
    return {};
}

void CommandLine::offer(CLI::App& app)
{
    app.name("telephone");
    app.description("Reference telephone of the SIP communications service");
    app.footer(kFooter);
    app.set_version_flag("--version", std::string("telephone ") + kTelephoneVersion);
    addOptions(app, *this);
    addCommands(app, *this);
}

std::optional<CommandLine> CommandLine::read(int count, char const* const* arguments, int& exitStatus)
{
    CommandLine line;
    CLI::App app;
    line.offer(app);
    try {
        app.parse(count, arguments);
    } catch (CLI::ParseError const& error) {
        constexpr int kUsage = 2;
        exitStatus = app.exit(error) == 0 ? 0 : kUsage;
        return std::nullopt;
    }
    return line;
}

}  // namespace telephone
