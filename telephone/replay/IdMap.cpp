#include "telephone/replay/IdMap.h"

#include <algorithm>

namespace telephone {

namespace {

MessagePart const* partNamed(MessageParts const& message, std::string const& tag)
{
    auto const found = std::find_if(message.parts.begin(), message.parts.end(),
                                    [&tag](MessagePart const& each) { return each.tag == tag; });
    return found == message.parts.end() ? nullptr : &*found;
}

}  // namespace

std::optional<std::string> IdMap::presentCall(std::string const& recorded) const
{
    auto const found = present_.find(recorded);
    return found == present_.end() ? std::nullopt : std::optional(found->second);
}

MessageParts IdMap::presented(MessageParts recorded) const
{
    for (MessagePart& each : recorded.parts) {
        each.value = each.isCall ? presentCall(each.value).value_or(each.value) : presented(std::move(each.value));
    }
    return recorded;
}

std::string IdMap::presented(std::string text) const
{
    if (recordedDomain_.empty() || presentDomain_.empty() || recordedDomain_ == presentDomain_) {
        return text;
    }
    for (auto at = text.find(recordedDomain_); at != std::string::npos;
         at = text.find(recordedDomain_, at + presentDomain_.size())) {
        text.replace(at, recordedDomain_.size(), presentDomain_);
    }
    return text;
}

bool IdMap::correspond(std::string const& recorded, std::string const& present) const
{
    auto const known = presentCall(recorded);
    return known ? *known == present : !isKnown(present);
}

std::vector<PartDifference> IdMap::differences(MessageParts const& recorded, MessageParts const& present) const
{
    std::vector<PartDifference> found;
    if (recorded.method != present.method) {
        found.push_back({"Method", recorded.method, present.method});
    }
    for (MessagePart const& each : recorded.parts) {
        MessagePart const* const other = partNamed(present, each.tag);
        bool const areCalls = each.isCall && other != nullptr && other->isCall;
        std::string const expected = each.isCall ? presentCall(each.value).value_or(each.value) : presented(each.value);
        if (areCalls ? !correspond(each.value, other->value) : other == nullptr || expected != other->value) {
            found.push_back({each.tag, expected, other == nullptr ? std::string() : other->value, each.values});
        }
    }
    for (MessagePart const& each : present.parts) {
        if (partNamed(recorded, each.tag) == nullptr) {
            found.push_back({each.tag, {}, each.value, each.values});
        }
    }
    return found;
}

void IdMap::bind(MessageParts const& recorded, MessageParts const& present)
{
    for (MessagePart const& each : recorded.parts) {
        MessagePart const* const other = partNamed(present, each.tag);
        bool const areCalls = each.isCall && other != nullptr && other->isCall;
        if (areCalls && present_.count(each.value) == 0 && recorded_.count(other->value) == 0) {
            present_[each.value] = other->value;
            recorded_[other->value] = each.value;
        }
    }
}

}  // namespace telephone
