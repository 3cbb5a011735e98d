#include "telephone/replay/EventTracker.h"

#include <algorithm>

#include "telephone/display/ElementWords.h"
#include "telephone/protocol/MessageText.h"
#include "telephone/replay/SequenceComparison.h"

namespace telephone {

namespace {

// An event without a call belongs to its line, or to the whole telephone.
std::string groupOf(std::string const& call, std::string const& text)
{
    auto const event = readEvent(text);
    return call.empty() ? "line " + std::string(event ? event->line() : "") : call;
}

std::string nameOf(MessageParts const& event)
{
    return event.method.empty() ? "unknown event" : event.method;
}

}  // namespace

EventTracker::EventTracker(Recording const& recording, IdMap& ids)
    : ids_(ids)
{
    for (std::size_t i = 0; i < recording.entries.size(); ++i) {
        RecordedEntry const& entry = recording.entries[i];
        if (auto const* const event = std::get_if<RecordedEvent>(&entry.what)) {
            expected_.push_back({i, entry.line, event->text, eventParts(event->text)});
        }
    }
}

void EventTracker::came(std::string const& text)
{
    came_.push_back({text, eventParts(text)});
    MessageParts const& present = came_.back().parts;
    if (Expected* const found = find(present)) {
        ids_.bind(found->parts, present);
        found->isDone = true;
        skipDone();
    }
}

void EventTracker::skipDone()
{
    while (firstOpen_ < expected_.size() && expected_[firstOpen_].isDone) {
        ++firstOpen_;
    }
}

EventTracker::Expected* EventTracker::find(MessageParts const& present)
{
    auto const open = expected_.begin() + static_cast<std::ptrdiff_t>(firstOpen_);
    auto const equal = std::find_if(open, expected_.end(), [&](Expected const& each) {
        return !each.isDone && ids_.differences(each.parts, present).empty();
    });
    if (equal != expected_.end()) {
        return &*equal;
    }
    std::string const call = present.call();
    bool const begins = !call.empty() && !ids_.isKnown(call);
    auto const first = std::find_if(open, expected_.end(), [&](Expected const& each) {
        return begins && !each.isDone && each.parts.method == present.method &&
               !ids_.presentCall(each.parts.call()).has_value();
    });
    return first == expected_.end() ? nullptr : &*first;
}

bool EventTracker::haveComeBefore(std::size_t entry) const
{
    return firstOpen_ == expected_.size() || expected_[firstOpen_].entry >= entry;
}

void EventTracker::giveUpBefore(std::size_t entry)
{
    for (std::size_t i = firstOpen_; i < expected_.size() && expected_[i].entry < entry; ++i) {
        expected_[i].isDone = true;
    }
    skipDone();
}

std::map<std::string, EventTracker::Group> EventTracker::groups() const
{
    std::map<std::string, Group> groups;
    for (Expected const& each : expected_) {
        std::string const call = each.parts.call();
        std::string const present = call.empty() ? call : ids_.presentCall(call).value_or("recorded " + call);
        groups[groupOf(present, each.text)].expected.push_back(&each);
    }
    for (Came const& each : came_) {
        groups[groupOf(each.parts.call(), each.text)].came.push_back(&each);
    }
    return groups;
}

void EventTracker::compare(ReplayReport& report, DisplayOptions const& options) const
{
    for (auto const& [name, group] : groups()) {
        compare(group, report, options);
    }
}

void EventTracker::compare(Group const& group, ReplayReport& report, DisplayOptions const& options) const
{
    auto const likeness = [&](std::size_t recorded, std::size_t present) {
        MessageParts const& was = group.expected[recorded]->parts;
        MessageParts const& is = group.came[present]->parts;
        if (was.method != is.method) {
            return Likeness::kUnlike;
        }
        return ids_.differences(was, is).empty() ? Likeness::kEqual : Likeness::kSimilar;
    };
    Unpaired unpaired;
    int line = group.expected.empty() ? 0 : group.expected.front()->line;
    for (SequencePair const& each : pairSequences(group.expected.size(), group.came.size(), likeness)) {
        Expected const* const was = each.recorded ? group.expected[*each.recorded] : nullptr;
        Came const* const is = each.present ? group.came[*each.present] : nullptr;
        line = was == nullptr ? line : was->line;
        if (was == nullptr) {
            unpaired.extra.emplace_back(is, line);
        } else if (is == nullptr) {
            unpaired.missing.push_back(was);
        } else {
            addPair(*was, *is, report, options);
        }
    }
    addUnpaired(std::move(unpaired), report, options);
}

void EventTracker::addPair(Expected const& was, Came const& is, ReplayReport& report,
                           DisplayOptions const& options) const
{
    auto parts = ids_.differences(was.parts, is.parts);
    if (parts.empty()) {
        return report.addEqual(nameOf(was.parts));
    }
    report.add(
        {DifferenceKind::kDifferent, was.line, nameOf(was.parts), eventInWords(is.text, options), std::move(parts)});
}

void EventTracker::addUnpaired(Unpaired unpaired, ReplayReport& report, DisplayOptions const& options) const
{
    auto& extra = unpaired.extra;
    for (Expected const* const was : unpaired.missing) {
        auto const moved = std::find_if(extra.begin(), extra.end(), [&](auto const& each) {
            return ids_.differences(was->parts, each.first->parts).empty();
        });
        bool const isMoved = moved != extra.end();
        if (isMoved) {
            extra.erase(moved);
        }
        report.add({isMoved ? DifferenceKind::kOutOfOrder : DifferenceKind::kMissing, was->line, nameOf(was->parts),
                    eventInWords(textOf(ids_.presented(was->parts)), options)});
    }
    for (auto const& [is, line] : extra) {
        report.add({DifferenceKind::kExtra, line, nameOf(is->parts), eventInWords(is->text, options)});
    }
}

}  // namespace telephone
