// The platform's semaphore and log. The arguments of their construction tell the service's two locks apart: the team
// lock asks for priority inheritance, the publication lock does not.
#include <array>
#include <condition_variable>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <mutex>
#include <stdexcept>

#include "World.h"
#include "platform/framework/Logging.h"
#include "platform/framework/Semaphore.h"

class Semaphore::State
{
public:
    State(int initial, int maximum, bool inheritPriority)
        : inheritPriority_(inheritPriority)
        , free_(initial)
        , maximum_(maximum)
    {}

    void take()
    {
        auto& world = World::current();
        if (world.teamServiceLockHeld || world.publicationLockHeld) {
            world.violation("a lock was taken by a thread that holds one");
            throw std::logic_error("this thread would wait for ever");
        }
        {
            std::unique_lock hold(mutex_);
            changed_.wait(hold, [this] { return free_ > 0; });
            --free_;
        }
        mine(world) = true;
        world.effect(inheritPriority_ ? "take(team)" : "take(publication)");
    }

    void give()
    {
        auto& world = World::current();
        if (!mine(world)) {
            world.violation("a lock was given back by a thread that does not hold it");
            return;
        }
        mine(world) = false;
        world.effect(inheritPriority_ ? "give(team)" : "give(publication)");
        std::lock_guard const hold(mutex_);
        ++free_;
        if (free_ > maximum_) {
            world.violation("a lock has more units than it was built with");
        }
        changed_.notify_one();
    }

private:
    bool& mine(World& world) const { return inheritPriority_ ? world.teamServiceLockHeld : world.publicationLockHeld; }

    bool const inheritPriority_;
    int free_;
    int const maximum_;
    std::mutex mutex_;
    std::condition_variable changed_;
};

Semaphore::Semaphore(int initial, int maximum, bool inheritPriority)
    : state_(std::make_unique<State>(initial, maximum, inheritPriority))
{}

Semaphore::~Semaphore() = default;

bool Semaphore::take(int timeoutMilliseconds)
{
    if (timeoutMilliseconds != kNoTimeLimit) {
        World::current().violation("a lock was taken with a time limit");
    }
    state_->take();
    return true;
}

void Semaphore::give()
{
    state_->give();
}

bool loggingOnAppUni(char const* /*component*/, int /*level*/)
{
    return World::current().logging;
}

void logAppUni(char const* component, char const* /*source*/, int level, int /*line*/, char const* format, ...)
{
    std::array<char, 1024> text{};
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(text.data(), text.size(), format, arguments);
    va_end(arguments);

    auto& world = World::current();
    if (std::strcmp(component, "SIP Communications Service") != 0) {
        world.violation(std::string("a line of component ") + component);
    }
    if (level == kLogFailure) {
        world.effect(std::string("failure: ") + text.data());
    } else if (!world.logging) {
        world.violation(std::string("a trace was written that is switched off: ") + text.data());
    }
}
