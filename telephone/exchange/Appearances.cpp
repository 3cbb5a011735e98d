#include "telephone/exchange/Appearances.h"

#include <utility>

#include <spdlog/fmt/fmt.h>

namespace telephone::exchange {

namespace {

int firstFree(std::set<int> const& taken)
{
    int free = 1;
    while (taken.contains(free)) {
        ++free;
    }
    return free;
}

}  // namespace

Appearances::Appearances(std::function<int(std::string const& number)> count,
                         std::function<std::vector<sip::DialogEntry>(std::string const& number)> reported)
    : count_(std::move(count))
    , reported_(std::move(reported))
{}

Outcome<int> Appearances::take(std::string const& number, std::string const& owner, int wanted)
{
    int const count = count_(number);
    if (count == 0) {
        return 0;
    }
    auto& owners = taken_[number];
    if (auto const present = owners.find(owner); present != owners.end()) {
        return present->second;
    }
    auto taken = reportedOnes(number);
    for (auto const& [other, appearance] : owners) {
        taken.insert(appearance);
    }
    int const free = wanted == 0 ? firstFree(taken) : wanted;
    if (free > count) {
        return refuse(RefusalKind::kLimit, fmt::format("{} has no free appearance", number));
    }
    if (taken.contains(free)) {
        return refuse(RefusalKind::kLimit, fmt::format("appearance {} of {} is not free", free, number));
    }
    owners[owner] = free;
    return free;
}

void Appearances::release(std::string const& number, std::string const& owner)
{
    taken_[number].erase(owner);
}

void Appearances::noteReport(std::string const& number)
{
    for (auto const& entry : reported_(number)) {
        taken_[number].erase(entry.dialog.callId);
    }
}

// A call that is reported without its appearance has the first one that no other has.
std::set<int> Appearances::reportedOnes(std::string const& number) const
{
    std::set<int> taken;
    int unnamed = 0;
    for (auto const& entry : reported_(number)) {
        if (entry.state == sip::DialogState::kTerminated) {
            continue;
        }
        if (entry.appearance > 0) {
            taken.insert(entry.appearance);
        } else {
            ++unnamed;
        }
    }
    for (; unnamed > 0; --unnamed) {
        taken.insert(firstFree(taken));
    }
    return taken;
}

}  // namespace telephone::exchange
