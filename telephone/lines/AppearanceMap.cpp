#include "telephone/lines/AppearanceMap.h"

#include <algorithm>
#include <utility>

#include <spdlog/fmt/fmt.h>

#include "telephone/framework/Refusals.h"
#include "telephone/lines/LogComponent.h"

namespace telephone {

AppearanceMap::AppearanceMap(Clock clock)
    : clock_(std::move(clock))
{}

void AppearanceMap::addLine(int lineNumber, std::string lineID, std::vector<int> virtualLines)
{
    std::lock_guard const lock(mutex_);
    int index = 0;
    for (int const virtualLine : virtualLines) {
        appearances_[virtualLine] = {lineNumber, ++index};
    }
    lines_[lineNumber] = {std::move(lineID), std::move(virtualLines)};
}

void AppearanceMap::assignCallToLine(int lineID, int callID, int& appearanceIndex)
{
    std::lock_guard const lock(mutex_);
    removeExpired();
    int const virtualLine = lines_.count(lineID) != 0 ? firstFree(lineID) : lineID;
    auto const appearance = appearances_.find(virtualLine);
    if (appearance == appearances_.end()) {
        return;
    }
    auto& mapping = mappings_[callID];
    mapping.virtualLine = virtualLine;
    mapping.madeAt = clock_();
    appearanceIndex = appearance->second.index;
}

int AppearanceMap::findFirstFreeVirtualLine(int lineID) const
{
    std::lock_guard const lock(mutex_);
    return firstFree(lineID);
}

bool AppearanceMap::findVirtualLineforCallID(int callID, int& lineID, int& appearanceIndex) const
{
    std::lock_guard const lock(mutex_);
    auto const mapping = mappings_.find(callID);
    if (mapping == mappings_.end() || !isCurrent(mapping->second)) {
        return false;
    }
    lineID = mapping->second.virtualLine;
    appearanceIndex = appearances_.at(lineID).index;
    return true;
}

int AppearanceMap::seizeForIncoming(int lineNumber, int callID)
{
    std::lock_guard const lock(mutex_);
    removeExpired();
    auto const line = lines_.find(lineNumber);
    if (line == lines_.end()) {
        return 0;
    }
    auto const& all = line->second.virtualLines;
    auto const free = std::ranges::find_if(all, [this](int virtualLine) {
        return reserved_.count(virtualLine) == 0 && elsewhere_.count(virtualLine) == 0 && !carriesCall(virtualLine);
    });
    if (free == all.end()) {
        return 0;
    }
    mappings_[callID] = {*free, true, clock_()};
    return *free;
}

void AppearanceMap::callBegan(int callID, int virtualLine)
{
    std::lock_guard const lock(mutex_);
    if (appearances_.count(virtualLine) == 0) {
        return;
    }
    mappings_[callID] = {virtualLine, true, clock_()};
    reserved_.erase(virtualLine);
}

void AppearanceMap::callEnded(int callID)
{
    std::lock_guard const lock(mutex_);
    mappings_.erase(callID);
}

void AppearanceMap::callUnknown(int callID)
{
    std::lock_guard const lock(mutex_);
    std::erase_if(mappings_, [callID](auto const& entry) { return entry.first == callID && !entry.second.callExists; });
}

void AppearanceMap::reserve(int virtualLine)
{
    std::lock_guard const lock(mutex_);
    if (appearances_.count(virtualLine) != 0 && !carriesCall(virtualLine)) {
        reserved_.insert(virtualLine);
    }
}

void AppearanceMap::unreserve(int virtualLine)
{
    std::lock_guard const lock(mutex_);
    reserved_.erase(virtualLine);
}

void AppearanceMap::setElsewhere(int virtualLine, bool elsewhere)
{
    std::lock_guard const lock(mutex_);
    if (elsewhere) {
        elsewhere_.insert(virtualLine);
    } else {
        elsewhere_.erase(virtualLine);
    }
}

bool AppearanceMap::isCurrent(Mapping const& mapping) const
{
    return mapping.callExists || clock_() - mapping.madeAt < kMappingTimeout;
}

bool AppearanceMap::carriesCall(int virtualLine) const
{
    return std::any_of(mappings_.begin(), mappings_.end(), [this, virtualLine](auto const& entry) {
        return entry.second.virtualLine == virtualLine && isCurrent(entry.second);
    });
}

int AppearanceMap::firstFree(int lineNumber) const
{
    auto const line = lines_.find(lineNumber);
    if (line == lines_.end()) {
        return 0;
    }
    auto const isFree = [this](int virtualLine) {
        return elsewhere_.count(virtualLine) == 0 && !carriesCall(virtualLine);
    };
    auto const& all = line->second.virtualLines;
    auto free = std::ranges::find_if(all, [&](int each) { return reserved_.count(each) != 0 && isFree(each); });
    if (free == all.end()) {
        free = std::ranges::find_if(all, isFree);
    }
    if (free == all.end()) {
        reportRefusal(kComponent,
                      {RefusalKind::kLimit, fmt::format("all appearances of line {} are taken", line->second.lineID)});
        return 0;
    }
    return *free;
}

void AppearanceMap::removeExpired()
{
    std::erase_if(mappings_, [this](auto const& entry) { return !isCurrent(entry.second); });
}

}  // namespace telephone
