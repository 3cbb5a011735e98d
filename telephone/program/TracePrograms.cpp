// The commands trace, why and ladder.
#include <array>
#include <chrono>
#include <fstream>
#include <iostream>
#include <optional>
#include <set>

#include "telephone/analysis/Explanation.h"
#include "telephone/analysis/Ladder.h"
#include "telephone/analysis/LadderSvg.h"
#include "telephone/analysis/LadderText.h"
#include "telephone/analysis/TraceFollower.h"
#include "telephone/analysis/TraceReader.h"
#include "telephone/analysis/TraceTree.h"
#include "telephone/framework/StopSignal.h"
#include "telephone/program/Output.h"
#include "telephone/program/Programs.h"
#include "telephone/protocol/Vocabulary.h"
#include "telephone/time/Waiting.h"

namespace telephone {

namespace {

constexpr int kNotShown = 2;
constexpr auto kLookInterval = std::chrono::milliseconds(200);

Outcome<std::ifstream> openTrace(std::string const& name)
{
    std::ifstream file(name);
    return file ? Outcome<std::ifstream>(std::move(file)) : refuse(RefusalKind::kNotFound, name + ": cannot be read");
}

Outcome<TraceContents> readTrace(CommandLine const& line)
{
    return openTrace(line.traced.file).and_then([&](std::ifstream file) {
        bool const wantsTexts = line.output.json || line.output.raw;
        TraceReader reader(line.traced.file, wantsTexts ? TraceReader::Keep::kTexts : TraceReader::Keep::kSteps);
        return reader.read(file).and_then([&](auto const&) { return reader.finish(); });
    });
}

void putLine(std::string const& text)
{
    std::cout << text << '\n';
}

int refused(Refusal const& why)
{
    std::cerr << "telephone: " << why.reason << std::endl;
    return kNotShown;
}

TraceTree::Form formOf(OutputChoice const& output)
{
    return output.json ? TraceTree::Form::kJson : output.raw ? TraceTree::Form::kTexts : TraceTree::Form::kWords;
}

// Until a signal ends this program, or nobody reads what it writes.
Outcome<> follow(CommandLine const& line, TraceTree::Filter const& filter, StopSignal const& stop)
{
    auto file = openTrace(line.traced.file);
    if (!file) {
        return tl::unexpected(file.error());
    }
    TraceFollower follower(
        line.traced.file, filter, formOf(line.output),
        [&](std::string const& domain) { return displayOptions(line, domain); }, putLine);
    while (!stop.isRaised() && std::cout) {
        if (auto const taken = follower.look(*file); !taken) {
            return taken;
        }
        std::cout << std::flush;
        std::array<pollfd, 1> waited{{{stop.descriptor(), POLLIN, 0}}};
        pollUntil(waited, SteadyClock::now() + kLookInterval, "the trace");
    }
    return {};
}

Outcome<> showTree(CommandLine const& line, TraceTree::Filter const& filter)
{
    return readTrace(line).map([&](TraceContents const& contents) {
        TracedCalls const calls(contents);
        TraceTree(contents, calls, filter, formOf(line.output), displayOptions(line, contents.domain), putLine)
            .writeAll();
    });
}

Outcome<Sentences> explain(CommandLine const& line, TraceContents const& contents)
{
    auto const& what = line.traced.what;
    DisplayOptions const options = displayOptions(line, contents.domain);
    if (what.size() == 2 && what.front() == "lamp") {
        return explainLamp(contents, what.back(), options);
    }
    auto const number = wholeNumber(what.front());
    return what.size() == 1 && number && *number > 0
               ? explainEvent(contents, static_cast<std::uint64_t>(*number), options)
               : refuse(RefusalKind::kBadInput, "write the number of an event, or lamp and the number of its key");
}

Outcome<> writeLadder(std::string const& name, std::string const& text)
{
    if (name == "-") {
        std::cout << text;
        return {};
    }
    std::ofstream file(name);
    file << text << std::flush;
    return file ? Outcome<>() : refuse(RefusalKind::kUnavailable, "cannot write the ladder " + name);
}

Outcome<> drawLadder(CommandLine const& line, TraceContents const& contents)
{
    DisplayOptions options = displayOptions(line, contents.domain);
    bool const isSvg = !line.traced.svg.empty();
    options.ascii = options.ascii && !isSvg;
    auto const call = line.traced.call.empty() ? std::nullopt : std::optional<std::string_view>(line.traced.call);
    return ladderOf(contents, call, isSvg ? kMostFarEndsInSvg : kMostFarEndsInText, options)
        .and_then([&](Ladder const& ladder) -> Outcome<> {
            if (isSvg) {
                return writeLadder(line.traced.svg, ladderSvg(ladder));
            }
            for (std::string const& each : ladderText(ladder, options)) {
                putLine(each);
            }
            return {};
        });
}

int statusOf(Outcome<> const& outcome)
{
    std::cout << std::flush;
    return outcome ? 0 : refused(outcome.error());
}

}  // namespace

Outcome<int> runTrace(CommandLine const& line, StopSignal const& stop)
{
    return statusOf(TraceTree::readKinds(line.traced.only).and_then([&](std::set<StepKind> const& kinds) {
        TraceTree::Filter const filter{kinds, line.traced.line, line.traced.call};
        return line.traced.follow ? follow(line, filter, stop) : showTree(line, filter);
    }));
}

Outcome<int> runWhy(CommandLine const& line)
{
    return statusOf(readTrace(line).and_then([&](TraceContents const& contents) {
        return explain(line, contents).map([](Sentences const& sentences) {
            for (std::string const& each : sentences) {
                putLine(each);
            }
        });
    }));
}

Outcome<int> runLadder(CommandLine const& line)
{
    return statusOf(
        readTrace(line).and_then([&](TraceContents const& contents) { return drawLadder(line, contents); }));
}

}  // namespace telephone
