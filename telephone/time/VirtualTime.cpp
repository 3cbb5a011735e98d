#include "telephone/time/VirtualTime.h"

#include <memory>
#include <random>

#include "telephone/time/Conductor.h"

namespace telephone {

namespace {

std::unique_ptr<Conductor> current;

// Of the thread that made the VirtualTime, and of threads that were not made here.
Party& partyOf(char const* name)
{
    thread_local Party party{name};
    return party;
}

}  // namespace

std::atomic<bool> detail::timeIsVirtual{false};

Conductor& conductor()
{
    return *current;
}

VirtualTime::VirtualTime(Settings settings)
{
    current = std::make_unique<Conductor>(settings);
    Party& party = partyOf("main");
    ++party.driving;
    current->begin(party);
    ownParty = &party;
    detail::timeIsVirtual = true;
}

VirtualTime::~VirtualTime()
{
    detail::timeIsVirtual = false;
    --ownParty->driving;
    ownParty = nullptr;
    current.reset();
}

Driving::Driving()
{
    if (ownParty != nullptr) {
        ++ownParty->driving;
    }
}

Driving::~Driving()
{
    if (ownParty != nullptr) {
        --ownParty->driving;
    }
}

Visit::Visit()
    : enters_(isVirtual() && ownParty == nullptr)
{
    if (enters_) {
        Party& party = partyOf("a visitor");
        current->enter(party);
        ownParty = &party;
    }
}

Visit::~Visit()
{
    if (enters_) {
        ownParty = nullptr;
        current->leave();
    }
}

Absence::Absence()
    : left_(ownParty)
{
    if (left_ != nullptr) {
        ownParty = nullptr;
        current->leaveForAWhile(*left_);
    }
}

Absence::~Absence()
{
    if (left_ != nullptr) {
        current->enter(*left_);
        ownParty = left_;
    }
}

std::uint64_t randomNumber()
{
    if (isVirtual()) {
        return current->randomNumber();
    }
    std::random_device device;
    return std::uniform_int_distribution<std::uint64_t>()(device);
}

std::uint64_t virtualSeed()
{
    return isVirtual() ? current->settings().seed : 0;
}

}  // namespace telephone
