#include "telephone/exchange/Steps.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <optional>

#include <spdlog/fmt/fmt.h>

#include "telephone/base/Names.h"
#include "telephone/media/ToneSource.h"

namespace telephone::exchange {

namespace {

using std::chrono::milliseconds;

constexpr milliseconds kLongestTime = std::chrono::hours(24);
constexpr std::size_t kLongestNumber = 64;
constexpr std::size_t kMostDigits = 64;

constexpr unsigned bits(CallPhase phase)
{
    return static_cast<unsigned>(phase);
}

constexpr unsigned kNoCall = bits(CallPhase::kNoCall);
constexpr unsigned kWaiting = bits(CallPhase::kOffered) | bits(CallPhase::kEarly);
constexpr unsigned kTalking = bits(CallPhase::kConnected);
constexpr unsigned kOnHold = bits(CallPhase::kHeld);
constexpr unsigned kAnswered = kTalking | kOnHold;
constexpr unsigned kSeized = bits(CallPhase::kSeized);

// clang-format off
constexpr std::array kRows{
    StepRow{StepKind::kRing,       "ring",        "[TIME]",        kWaiting,                                     StepRow::kUnchanged,   "sends 180 Ringing"},
    StepRow{StepKind::kEarlyMedia, "early-media", "[TIME]",        kWaiting,                                     CallPhase::kEarly,     "sends 183 Session Progress with audio: the caller hears the number before the answer"},
    StepRow{StepKind::kReliable,   "reliable",    "",              kWaiting,                                     StepRow::kUnchanged,   "repeats what it sends before the answer until the caller's PRACK, if the caller supports that"},
    StepRow{StepKind::kAnswer,     "answer",      "[TIME]",        kWaiting,                                     CallPhase::kConnected, "answers"},
    StepRow{StepKind::kSay,        "say",         "FILE",          bits(CallPhase::kEarly) | kTalking,           StepRow::kUnchanged,   "plays a WAV file once, instead of the echo; tone: a second of a tone"},
    StepRow{StepKind::kDigits,     "dtmf",        "DIGITS",        kTalking,                                     StepRow::kUnchanged,   "sends digits: 0 to 9, *, #, A to D"},
    StepRow{StepKind::kHold,       "hold",        "[TIME]",        kTalking,                                     CallPhase::kHeld,      "holds the call"},
    StepRow{StepKind::kRetrieve,   "retrieve",    "[TIME]",        kOnHold,                                      CallPhase::kConnected, "retrieves the held call"},
    StepRow{StepKind::kRefresh,    "refresh",     "",              kAnswered,                                    StepRow::kUnchanged,   "refreshes the call as a session timer does (RFC 4028)"},
    StepRow{StepKind::kTransfer,   "transfer",    "NUMBER",        kAnswered,                                    StepRow::kUnchanged,   "asks the far end to call NUMBER instead, and waits for the outcome"},
    StepRow{StepKind::kRedirect,   "redirect",    "NUMBER",        kWaiting,                                     CallPhase::kNoCall,    "sends the caller on to NUMBER (302)"},
    StepRow{StepKind::kBusy,       "busy",        "",              kWaiting,                                     CallPhase::kNoCall,    "refuses the call with 486 Busy Here"},
    StepRow{StepKind::kRefuse,     "refuse",      "STATUS",        kWaiting,                                     CallPhase::kNoCall,    "refuses the call with a status from 400 to 699"},
    StepRow{StepKind::kHangUp,     "hang-up",     "",              kAnswered | bits(CallPhase::kCalling),        CallPhase::kNoCall,    "ends the call"},
    StepRow{StepKind::kPreempt,    "preempt",     "",              kAnswered,                                    CallPhase::kNoCall,    "ends the call in favour of a more important one (RFC 4411)"},
    StepRow{StepKind::kCall,       "call",        "NUMBER [TIME]", kNoCall | kSeized,                            CallPhase::kConnected, "calls NUMBER, or the caller of the last call, and waits for the answer; gives up after TIME"},
    StepRow{StepKind::kWait,       "wait",        "TIME",          kNoCall | kSeized | kWaiting | kAnswered,     StepRow::kUnchanged,   "waits"},
    StepRow{StepKind::kSilent,     "silent",      "",              kWaiting | kAnswered,                         CallPhase::kSilent,    "no longer responds to anything in the call"},
    StepRow{StepKind::kGarbage,    "garbage",     "",              kWaiting | kAnswered,                         StepRow::kUnchanged,   "sends the far end datagrams that are not SIP, and damaged SIP"},
    StepRow{StepKind::kSeize,      "seize",       "[TIME]",        kNoCall,                                      CallPhase::kSeized,    "seizes an appearance of the number's shared line; ends the steps if none is free"},
    StepRow{StepKind::kRelease,    "release",     "",              kSeized,                                      CallPhase::kNoCall,    "gives the seized appearance back"},
    StepRow{StepKind::kPrivate,    "private",     "",              kSeized | kAnswered,                          StepRow::kUnchanged,   "keeps other telephones on the line from taking the call over or joining it"},
    StepRow{StepKind::kPublic,     "public",      "",              kSeized | kAnswered,                          StepRow::kUnchanged,   "permits both again"},
};
// clang-format on

constexpr bool rowsAreInOrder()
{
    for (std::size_t i = 0; i < kRows.size(); ++i) {
        if (kRows[i].kind != static_cast<StepKind>(i)) {
            return false;
        }
    }
    return true;
}
static_assert(rowsAreInOrder());

tl::unexpected<Refusal> wrong(std::string reason)
{
    return refuse(RefusalKind::kBadInput, std::move(reason));
}

std::string_view withoutBlanks(std::string_view text)
{
    constexpr std::string_view kBlanks = " \t";
    auto const first = text.find_first_not_of(kBlanks);
    return first == std::string_view::npos ? std::string_view()
                                           : text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

std::string usageOf(StepRow const& row)
{
    return fmt::format("{}{}{}", row.name, row.argument.empty() ? "" : " ", row.argument);
}

std::string listOf(unsigned phases)
{
    std::vector<std::string_view> names;
    for (StepRow const& row : kRows) {
        if ((row.possibleIn & phases) != 0) {
            names.push_back(row.name);
        }
    }
    return fmt::format("{}", fmt::join(names, ", "));
}

// "2s", "1.5s", "500ms".
Outcome<milliseconds> readTime(std::string_view text)
{
    double number = 0;
    auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    std::string_view const unit(end, static_cast<std::size_t>(text.data() + text.size() - end));
    double const time = unit == "s" ? number * 1000 : unit == "ms" ? number : -1;
    if (error != std::errc() || !(time >= 0 && time <= static_cast<double>(kLongestTime.count()))) {
        return wrong(fmt::format("\"{}\" is not a time; write 2s or 500ms, up to 86400s", text));
    }
    return milliseconds(static_cast<std::int64_t>(time));
}

std::string formatTime(milliseconds time)
{
    return time.count() % 1000 == 0 ? fmt::format("{}s", time.count() / 1000) : fmt::format("{}ms", time.count());
}

// One second.
std::shared_ptr<Samples const> toneSamples()
{
    constexpr int kFrames = 50;
    auto samples = std::make_shared<Samples>();
    ToneSource source;
    sip::AudioFrame frame{};
    for (int i = 0; i < kFrames; ++i) {
        source.readFrame(frame);
        samples->insert(samples->end(), frame.begin(), frame.end());
    }
    return samples;
}

Outcome<> readFile(Step& step)
{
    try {
        step.sound = step.text == "tone" ? toneSamples() : loadSamples(step.text);
        return {};
    } catch (std::runtime_error const& error) {
        return refuse(RefusalKind::kNotFound, error.what());
    }
}

Outcome<> readDigits(Step const& step)
{
    constexpr std::string_view kDigits = "0123456789*#ABCDabcd";
    if (step.text.size() > kMostDigits || step.text.find_first_not_of(kDigits) != std::string::npos) {
        return wrong(fmt::format("\"{}\" are not digits; dtmf takes 1 to 64 of 0 to 9, *, # and A to D", step.text));
    }
    return {};
}

// The argument that a row needs, in step.text.
Outcome<> readArgument(Step& step)
{
    switch (step.kind) {
    case StepKind::kSay:
        return readFile(step);
    case StepKind::kDigits:
        return readDigits(step);
    case StepKind::kRefuse:
        return readStatus(step.text).map([&step](int status) { step.status = status; });
    case StepKind::kTransfer:
    case StepKind::kRedirect:
    case StepKind::kCall:
        return checkNumber(fmt::format("the number of \"{}\"", rowOf(step.kind).name), step.text);
    case StepKind::kRing:
    case StepKind::kEarlyMedia:
    case StepKind::kReliable:
    case StepKind::kAnswer:
    case StepKind::kHold:
    case StepKind::kRetrieve:
    case StepKind::kRefresh:
    case StepKind::kBusy:
    case StepKind::kHangUp:
    case StepKind::kPreempt:
    case StepKind::kWait:
    case StepKind::kSilent:
    case StepKind::kGarbage:
    case StepKind::kSeize:
    case StepKind::kRelease:
    case StepKind::kPrivate:
    case StepKind::kPublic:
        break;
    }
    return {};
}

StepRow const* findRow(std::string_view name)
{
    auto const* const found =
        std::ranges::find_if(kRows, [name](StepRow const& row) { return equalIgnoringCase(row.name, name); });
    return found == kRows.end() ? nullptr : found;
}

// Takes the time from the end of the rest of a step, if the row has one there.
Outcome<milliseconds> takeTime(StepRow const& row, std::string_view& rest)
{
    bool const isWhole = row.argument == "TIME" || row.argument == "[TIME]";
    auto const blank = isWhole ? std::string_view::npos : rest.find_last_of(" \t");
    bool const isThere = row.argument.find("TIME") != std::string_view::npos && !rest.empty() &&
                         (isWhole || blank != std::string_view::npos);
    if (!isThere) {
        return milliseconds(0);
    }
    auto const begin = blank == std::string_view::npos ? 0 : blank + 1;
    auto time = readTime(rest.substr(begin));
    rest = withoutBlanks(rest.substr(0, begin));
    return time;
}

Outcome<Step> readStep(std::string_view text)
{
    text = withoutBlanks(text);
    auto const blank = std::min(text.find_first_of(" \t"), text.size());
    StepRow const* const row = findRow(text.substr(0, blank));
    if (row == nullptr) {
        return wrong(fmt::format("there is no step \"{}\"; the steps are {}", text, listOf(~0U)));
    }
    std::string_view rest = withoutBlanks(text.substr(blank));
    bool const isComplete = row->argument.empty() ? rest.empty() : !rest.empty() || row->argument.starts_with('[');
    if (!isComplete) {
        return wrong(fmt::format("\"{}\" is written as: {}", text, usageOf(*row)));
    }
    return takeTime(*row, rest).and_then([&](milliseconds time) -> Outcome<Step> {
        Step step{.kind = row->kind, .text = std::string(rest)};
        (row->kind == StepKind::kCall ? step.limit : step.time) = time;
        return readArgument(step).map([&step] { return std::move(step); });
    });
}

CallPhase phaseAfter(CallPhase before, StepRow const& row)
{
    return row.then == StepRow::kUnchanged ? before : row.then;
}

std::string_view describe(CallPhase phase)
{
    switch (phase) {
    case CallPhase::kNoCall:
        return "while there is no call";
    case CallPhase::kOffered:
    case CallPhase::kEarly:
        return "before the answer";
    case CallPhase::kConnected:
        return "in an answered call";
    case CallPhase::kHeld:
        return "in a held call";
    case CallPhase::kSilent:
        return "after silent";
    case CallPhase::kCalling:
        return "before the far end answers";
    case CallPhase::kSeized:
        return "on a seized line";
    }
    return "";
}

}  // namespace

std::span<StepRow const> stepRows()
{
    return kRows;
}

StepRow const& rowOf(StepKind kind)
{
    return kRows.at(static_cast<std::size_t>(kind));
}

std::string Step::format() const
{
    std::string written(rowOf(kind).name);
    if (!text.empty()) {
        written += " " + text;
    }
    if (auto const shown = std::max(time, limit); shown > milliseconds(0)) {
        written += " " + formatTime(shown);
    }
    return written;
}

std::string formatSteps(Steps const& steps)
{
    std::string written;
    for (Step const& step : steps) {
        written += (written.empty() ? "" : ", ") + step.format();
    }
    return written;
}

Outcome<> checkNumber(std::string_view which, std::string_view number)
{
    constexpr std::string_view kAllowed =
        "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz+-._*#";  // ASCII, whatever the locale
    if (number.empty() || number.size() > kLongestNumber ||
        number.find_first_not_of(kAllowed) != std::string_view::npos) {
        return wrong(fmt::format("{} must consist of 1 to 64 letters, digits, and + - . _ * #", which));
    }
    return {};
}

Outcome<int> readStatus(std::string_view text)
{
    constexpr int kFirst = 400;
    constexpr int kLast = 699;
    int status = 0;
    auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), status);
    if (error != std::errc() || end != text.data() + text.size() || status < kFirst || status > kLast) {
        return wrong(fmt::format("\"{}\" is not a status from 400 to 699", text));
    }
    return status;
}

Outcome<Steps> readSteps(std::vector<std::string> const& texts)
{
    Steps steps;
    for (std::string const& text : texts) {
        auto step = readStep(text);
        if (!step) {
            return tl::unexpected(step.error());
        }
        steps.push_back(*std::move(step));
    }
    if (steps.empty()) {
        return wrong("a number needs at least one step; the steps are " + listOf(~0U));
    }
    return steps;
}

Outcome<Steps> readSteps(std::string_view text)
{
    std::vector<std::string> texts;
    while (!withoutBlanks(text).empty()) {
        auto const comma = std::min(text.find(','), text.size());
        texts.emplace_back(text.substr(0, comma));
        text.remove_prefix(std::min(text.size(), comma + 1));
    }
    return readSteps(texts);
}

Outcome<> checkOrder(Steps const& steps, CallPhase phase)
{
    for (Step const& step : steps) {
        StepRow const& row = rowOf(step.kind);
        if ((row.possibleIn & bits(phase)) == 0) {
            auto const possible = listOf(bits(phase));
            return wrong(fmt::format("\"{}\" is not possible {}; possible there: {}", step.format(), describe(phase),
                                     possible.empty() ? "nothing" : possible));
        }
        phase = phaseAfter(phase, row);
    }
    return {};
}

}  // namespace telephone::exchange
