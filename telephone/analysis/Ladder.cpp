#include "telephone/analysis/Ladder.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <set>
#include <tuple>
#include <utility>

#include <spdlog/fmt/fmt.h>

#include "telephone/analysis/FarEndColumns.h"
#include "telephone/analysis/LadderSteps.h"
#include "telephone/analysis/StepWords.h"
#include "telephone/analysis/TracedCalls.h"
#include "telephone/display/AnswerWords.h"
#include "telephone/display/ElementWords.h"
#include "telephone/display/LadderParts.h"
#include "telephone/display/Parties.h"
#include "telephone/display/RequestWords.h"
#include "telephone/display/SafeText.h"
#include "telephone/protocol/MessageText.h"

namespace telephone {

namespace {

constexpr auto kShortestPause = std::chrono::milliseconds(100);

// What a call does, as its far end's column shows it.
enum class Activity
{
    kNone,
    kRings,
    kOnHold,
    kTalks,
};

struct ActivityRow
{
    std::string_view state;
    Activity activity;
};

constexpr ActivityRow kActivities[] = {
    {"remote ringing", Activity::kRings}, {"ringing", Activity::kRings}, {"connected", Activity::kTalks},
    {"conference", Activity::kTalks},     {"held", Activity::kOnHold},   {"remotely held", Activity::kOnHold},
    {"held by both", Activity::kOnHold},
};

Activity activityIn(std::string_view state)
{
    auto const* const found = std::find_if(std::begin(kActivities), std::end(kActivities),
                                           [state](ActivityRow const& each) { return each.state == state; });
    return found != std::end(kActivities) ? found->activity : Activity::kNone;
}

// Indexed by the activity.
constexpr std::string_view kActivityForms[] = {"", "it rings for {:.1f} s", "on hold for {:.1f} s",
                                               "they talk for {:.1f} s"};

std::string platformLabel(TracedStep const& step, DisplayOptions const& options)
{
    std::string_view name = step.text("name");
    name.remove_prefix(std::min(name.size(), name.rfind(':') + 1));
    std::string label = safeWord(name);
    for (ArgumentWords const& each : argumentWords(step, options)) {
        label += each.isTelling ? " " + each.value : "";
    }
    return label;
}

// Makes the rows, one step after the other.
class LadderMaker
{
public:
    LadderMaker(TraceContents const& contents, TracedCalls const& calls, LadderSteps const& chosen,
                DisplayOptions const& options)
        : contents_(contents)
        , calls_(calls)
        , chosen_(chosen)
        , options_(options)
    {
        ladder_.hasSeveralCalls = chosen.calls().size() > 1;
    }

    Ladder make(std::size_t mostFarEnds)
    {
        nameParties();
        farEnds_.arrange(mostFarEnds);
        for (auto const& [number, step] : contents_.steps) {
            if (chosen_.contains(step)) {
                take(step);
            }
        }
        endBars();
        ladder_.columns = {applications_.size() > 1 ? "applications" : "application", "service", "engine"};
        ladder_.columns.insert(ladder_.columns.end(), farEnds_.names().begin(), farEnds_.names().end());
        ladder_.title = title();
        return std::move(ladder_);
    }

private:
    // The name of each dialog's far end, and when it is there.
    void nameParties()
    {
        for (auto const& [number, step] : contents_.steps) {
            bool const isNamed = step.kind == StepKind::kEngine && step.has("dialog") && !step.text("party").empty();
            if (isNamed && chosen_.contains(step)) {
                names_.emplace(step.text("dialog"), addressText(step.text("party"), options_));
            }
            if (step.kind == StepKind::kRequest && chosen_.contains(step)) {
                applications_.insert(step.text("application"));
            }
        }
        for (auto const& [number, step] : contents_.steps) {
            bool const isAtFarEnd =
                step.kind == StepKind::kSip || (step.kind == StepKind::kEngine && step.has("dialog"));
            if (isAtFarEnd && chosen_.contains(step)) {
                farEnds_.note(nameOf(step.text("dialog")), number);
            }
        }
    }

    [[nodiscard]] std::string nameOf(std::string const& dialog) const
    {
        auto const found = names_.find(dialog);
        return found != names_.end() ? found->second : "far end";
    }

    [[nodiscard]] std::size_t columnOf(std::string const& dialog) const
    {
        return kFirstFarEnd + farEnds_.columnOf(nameOf(dialog));
    }

    [[nodiscard]] std::string title() const
    {
        constexpr std::size_t kMostNamed = 8;
        if (chosen_.calls().size() > kMostNamed) {
            return fmt::format("{} calls", chosen_.calls().size());
        }
        std::string text = ladder_.hasSeveralCalls ? "Calls" : "A call";
        for (TracedCall const* const call : chosen_.calls()) {
            std::string const party = addressText(call->party, options_);
            std::string_view const preposition = call->isIncoming ? "from" : call->isOutgoing ? "to" : "with";
            text += call == chosen_.calls().front() ? " " : ", ";
            text += fmt::format("{} {}", preposition, party.empty() ? "an unknown party" : party);
        }
        return text;
    }

    void take(TracedStep const& step)
    {
        switch (step.kind) {
        case StepKind::kRequest:
            return addRequest(step);
        case StepKind::kCommand:
            return add(step, LadderRowKind::kRequest, kApplicationColumn, kServiceColumn, safeText(step.text("text")));
        case StepKind::kAnswer:
            return addAnswer(step);
        case StepKind::kReason:
            return add(step, LadderRowKind::kNote, kApplicationColumn, kApplicationColumn,
                       std::string(ladderGlyphs(options_).cross) + " " + safeText(step.text("text")));
        case StepKind::kEvent:
            return addEvent(step);
        case StepKind::kPlatform:
            return addPlatformCall(step);
        case StepKind::kEngine:
            return follow(step);
        case StepKind::kKey:
            return addKey(step);
        case StepKind::kTimer:
            return add(step, LadderRowKind::kNote, kEngineColumn, kEngineColumn,
                       "timer: " + safeText(step.text("name")));
        case StepKind::kFault:
            return add(step, LadderRowKind::kNote, kEngineColumn, kEngineColumn,
                       "fault: " + safeText(step.text("fault") + " " + step.text("state")));
        case StepKind::kSip:
            return addSip(step);
        case StepKind::kLamp:
        case StepKind::kStore:
            break;
        }
    }

    void add(TracedStep const& step, LadderRowKind kind, std::size_t from, std::size_t to, std::string text)
    {
        // A platform call is written later than its effects, and a clock may be set back.
        auto const time = std::max(last_, step.time);
        first_ = first_.value_or(time);
        addPause(time);
        last_ = time;
        ladder_.rows.push_back({kind, from, to, std::move(text), sinceFirst(time), {}});
    }

    [[nodiscard]] std::chrono::milliseconds sinceFirst(TracedStep::Time time) const
    {
        return std::chrono::duration_cast<std::chrono::milliseconds>(time - *first_);
    }

    // What goes on until the next row.
    void addPause(TracedStep::Time time)
    {
        if (ladder_.rows.empty() || time - last_ < kShortestPause) {
            return;
        }
        double const seconds = std::chrono::duration<double>(time - last_).count();
        LadderRow row{LadderRowKind::kPause, 0, 0, fmt::format("{:.1f} s", seconds), sinceFirst(last_), {}};
        for (auto const& [column, activity] : activities()) {
            if (activity != Activity::kNone) {
                std::string_view const form = kActivityForms[static_cast<std::size_t>(activity)];
                row.pauses.push_back({column, activity == Activity::kOnHold, activity == Activity::kTalks,
                                      fmt::format(fmt::runtime(form), seconds)});
            }
        }
        ladder_.rows.push_back(std::move(row));
    }

    void addRequest(TracedStep const& step)
    {
        RequestWords words = requestWords(step.text("text"));
        words.call = ladder_.hasSeveralCalls ? words.call : "";
        std::string const sender = applications_.size() > 1 ? safeText(step.text("application")) + ": " : "";
        add(step, LadderRowKind::kRequest, kApplicationColumn, kServiceColumn, sender + requestLabel(words));
    }

    void addAnswer(TracedStep const& step)
    {
        TracedStep const* const request = contents_.causeOf(step);
        RequestWords const words = requestWords(request->text("text"));
        auto const text = step.has("text") ? std::optional<std::string_view>(step.text("text")) : std::nullopt;
        // A command has no description, and its answer is of any form.
        AnswerWords const answer = answerWords(words.description, text, options_);
        std::string const cross = answer.isFailure ? std::string(ladderGlyphs(options_).cross) + " " : "";
        add(step, answer.isFailure ? LadderRowKind::kFailure : LadderRowKind::kAnswer, kServiceColumn,
            kApplicationColumn, cross + answer.text);
    }

    void addEvent(TracedStep const& step)
    {
        auto const event = readEvent(step.text("text"));
        EventWords const words = eventWords(*event, options_);
        std::string const call = ladder_.hasSeveralCalls ? ", call " + words.call : "";
        add(step, LadderRowKind::kEvent, kServiceColumn, kApplicationColumn,
            fmt::format("event {}{}: {}", step.text("number"), call,
                        eventLabel(event->description->method, words.words)));
    }

    void addPlatformCall(TracedStep const& step)
    {
        add(step, LadderRowKind::kPlatform, kServiceColumn, kEngineColumn, platformLabel(step, options_));
        if (reportsFailure(step.text("result"))) {
            add(step, LadderRowKind::kFailure, kEngineColumn, kServiceColumn,
                std::string(ladderGlyphs(options_).cross) + " " + enumeratorInWords(step.text("result")));
        }
    }

    // A key that a command pressed is not drawn twice.
    void addKey(TracedStep const& step)
    {
        TracedStep const* const cause = contents_.causeOf(step);
        if (cause == nullptr || cause->kind != StepKind::kCommand) {
            add(step, LadderRowKind::kRequest, kApplicationColumn, kServiceColumn, keyInWords(step));
        }
    }

    void addSip(TracedStep const& step)
    {
        std::string const name = nameOf(step.text("dialog"));
        std::string label = sipLabel(step);
        auto const identity =
            std::tuple(step.text("direction"), step.text("transaction"), step.text("method"), step.text("status"));
        label += seen_.insert(identity).second || step.text("transaction").empty() ? "" : " again";
        bool const isFirst = named_.insert(step.text("dialog")).second;
        label += isFirst && farEnds_.shares(name) ? ", " + name : "";
        std::size_t const farEnd = columnOf(step.text("dialog"));
        bool const isOurs = isSent(step);
        add(step, LadderRowKind::kSip, isOurs ? kEngineColumn : farEnd, isOurs ? farEnd : kEngineColumn, label);
        sipRows_[step.number] = ladder_.rows.size() - 1;
    }

    // The state of a call changes what its far end does from now on.
    void follow(TracedStep const& step)
    {
        TracedCall const* const call = calls_.withId(step.text("call"), step.number);
        Activity const activity = activityIn(step.text("state"));
        if (step.has("dialog")) {
            calling_[call] = {columnOf(step.text("dialog")), activity};
        } else if (auto const known = calling_.find(call); known != calling_.end()) {
            known->second.second = activity;
        }
        updateBars(rowOfMessage(step));
        if (activity == Activity::kNone) {
            calling_.erase(call);
        }
    }

    // The row of the SIP message that changed the call, or else the last one.
    [[nodiscard]] std::size_t rowOfMessage(TracedStep const& step) const
    {
        TracedStep const* const cause = contents_.causeOf(step);
        auto const found = cause != nullptr ? sipRows_.find(cause->number) : sipRows_.end();
        return found != sipRows_.end() ? found->second : ladder_.rows.empty() ? 0 : ladder_.rows.size() - 1;
    }

    // By column: several calls may have the same.
    [[nodiscard]] std::map<std::size_t, Activity> activities() const
    {
        std::map<std::size_t, Activity> result;
        for (auto const& [call, where] : calling_) {
            Activity& activity = result[where.first];
            activity = std::max(activity, where.second);
        }
        return result;
    }

    void updateBars(std::size_t row)
    {
        for (auto const& [column, activity] : activities()) {
            bool const goesOn = activity == Activity::kTalks || activity == Activity::kOnHold;
            bool const isOnHold = activity == Activity::kOnHold;
            auto const open = openBars_.find(column);
            if (open != openBars_.end() && (!goesOn || open->second.isOnHold != isOnHold)) {
                close(open->second, row);
                openBars_.erase(open);
            }
            if (goesOn) {
                openBars_.try_emplace(column, LadderBar{column, row, row, isOnHold});
            }
        }
    }

    void close(LadderBar bar, std::size_t row)
    {
        bar.end = row;
        if (bar.end > bar.first) {
            ladder_.bars.push_back(bar);
        }
    }

    void endBars()
    {
        for (auto const& [column, bar] : openBars_) {
            close(bar, ladder_.rows.empty() ? 0 : ladder_.rows.size() - 1);
        }
    }

    TraceContents const& contents_;
    TracedCalls const& calls_;
    LadderSteps const& chosen_;
    DisplayOptions const& options_;
    Ladder ladder_;
    FarEndColumns farEnds_;
    std::map<std::string, std::string> names_;  // of far ends, by dialog
    std::set<std::string> applications_;
    std::set<std::string> named_;  // dialogs whose far end a row has named
    std::map<TracedCall const*, std::pair<std::size_t, Activity>> calling_;
    std::map<std::size_t, LadderBar> openBars_;                                      // by column
    std::map<std::uint64_t, std::size_t> sipRows_;                                   // by the number of the step
    std::set<std::tuple<std::string, std::string, std::string, std::string>> seen_;  // SIP messages
    std::optional<TracedStep::Time> first_;
    TracedStep::Time last_;
};

}  // namespace

Outcome<Ladder> ladderOf(TraceContents const& contents, std::optional<std::string_view> call, std::size_t mostFarEnds,
                         DisplayOptions const& options)
{
    TracedCalls const calls(contents);
    return LadderSteps::choose(contents, calls, call).map([&](LadderSteps const& steps) {
        return LadderMaker(contents, calls, steps, options).make(mostFarEnds);
    });
}

}  // namespace telephone
