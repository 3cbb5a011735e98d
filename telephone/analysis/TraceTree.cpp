#include "telephone/analysis/TraceTree.h"

#include <algorithm>
#include <utility>

#include <spdlog/fmt/fmt.h>

#include "telephone/base/Names.h"
#include "telephone/display/ReadableLines.h"
#include "telephone/display/SafeText.h"

namespace telephone {

namespace {

constexpr std::size_t kMarkColumn = 10;
constexpr std::size_t kIndentation = 2;
constexpr std::size_t kDeepest = 24;  // deeper steps are not indented further

bool isOfLine(std::string_view line, std::string_view wanted)
{
    return line == wanted || (line.starts_with(wanted) && line.substr(wanted.size()).starts_with('#'));
}

}  // namespace

Outcome<std::set<StepKind>> TraceTree::readKinds(std::string_view names)
{
    std::set<StepKind> kinds;
    while (!names.empty()) {
        auto const end = std::min(names.find(','), names.size());
        std::string_view const name = names.substr(0, end);
        auto const* const found = std::find(kStepKindNames.begin(), kStepKindNames.end(), name);
        if (found == kStepKindNames.end()) {
            return refuse(RefusalKind::kBadInput,
                          fmt::format("there are no steps \"{}\"{}", safeText(name),
                                      suggestion(name, {kStepKindNames.begin(), kStepKindNames.end()})));
        }
        kinds.insert(static_cast<StepKind>(found - kStepKindNames.begin()));
        names.remove_prefix(std::min(end + 1, names.size()));
    }
    return kinds;
}

TraceTree::TraceTree(TraceContents const& contents, TracedCalls const& calls, Filter filter, Form form,
                     DisplayOptions options, Writer write)
    : contents_(contents)
    , filter_(std::move(filter))
    , form_(form)
    , options_(std::move(options))
    , write_(std::move(write))
    , lines_(contents, calls, options_)
    , subjects_(calls)
{}

void TraceTree::writeAll()
{
    std::unordered_map<std::uint64_t, std::vector<TracedStep const*>> effects;
    std::vector<TracedStep const*> next;  // the last one is the next to write
    for (auto step = contents_.steps.rbegin(); step != contents_.steps.rend(); ++step) {
        TracedStep const* const cause = contents_.causeOf(step->second);
        (cause != nullptr ? effects[cause->number] : next).push_back(&step->second);
    }
    while (!next.empty()) {
        TracedStep const& step = *next.back();
        next.pop_back();
        write(step);
        if (auto const found = effects.find(step.number); found != effects.end()) {
            next.insert(next.end(), found->second.begin(), found->second.end());
        }
    }
}

void TraceTree::write(TracedStep const& step)
{
    if (!isShown(step)) {
        return;
    }
    if (form_ == Form::kJson) {
        write_(step.line);
        return;
    }
    openPathTo(step);
    writeStep(step, false);
}

bool TraceTree::isShown(TracedStep const& step)
{
    // Also of a step that is not shown: its effects may be about the same.
    bool const isOfAll = filter_.line.empty() && filter_.call.empty();
    StepSubject const subject = isOfAll ? StepSubject() : subjects_.note(step);
    bool const isOfKind = filter_.kinds.empty() || filter_.kinds.contains(step.kind);
    bool const isOfPlace = filter_.line.empty() || isOfLine(subject.line, filter_.line);
    return isOfKind && isOfPlace && (filter_.call.empty() || subject.call == filter_.call);
}

void TraceTree::openPathTo(TracedStep const& step)
{
    std::vector<TracedStep const*> missing;
    TracedStep const* above = contents_.causeOf(step);
    while (above != nullptr && !places_.contains(above->number)) {
        missing.push_back(above);
        above = contents_.causeOf(*above);
    }
    std::size_t const kept = above != nullptr ? places_.at(above->number) + 1 : 0;
    while (path_.size() > kept) {
        places_.erase(path_.back()->number);
        path_.pop_back();
    }
    for (auto ancestor = missing.rbegin(); ancestor != missing.rend(); ++ancestor) {
        writeStep(**ancestor, true);
    }
}

void TraceTree::writeStep(TracedStep const& step, bool isAncestor)
{
    std::size_t const indentation = kIndentation * std::min(path_.size(), kDeepest);
    std::string const time = clockText(step.time, options_);
    auto const texts = form_ == Form::kTexts ? lines_.rawLines(step) : std::vector{lines_.line(step)};
    std::string mark = lines_.mark(step);
    for (std::size_t index = 0; index < texts.size(); ++index) {
        std::string const shownMark = index == 0 ? mark : "";
        std::string const shownTime = index == 0 ? time : std::string(time.size(), ' ');
        std::size_t const width = columnsOf(shownMark);
        StyledText line;
        line.add(shownTime, time == timeAbove_ || isAncestor ? Style::kDim : Style::kPlain)
            .add(std::string(width < kMarkColumn ? kMarkColumn - width : 1, ' '))
            .add(shownMark, isAncestor ? Style::kDim : lines_.markStyle(step))
            .add(std::string(2 + indentation, ' '))
            .add(texts[index]);
        write_(isAncestor ? line.dimmed().line(options_) : line.line(options_));
    }
    timeAbove_ = time;
    places_[step.number] = path_.size();
    path_.push_back(&step);
}

}  // namespace telephone
