#include "telephone/time/Thread.h"

#include <utility>

#include <unistd.h>

#include "telephone/time/Conductor.h"

namespace telephone {

namespace {

thread_local std::string ownName = getpid() == gettid() ? "main" : "other";

}  // namespace

struct Thread::Part
{
    Party party;
    bool hasEnded = false;
};

Thread::Thread(std::string name, std::function<void()> body)
{
    if (ownParty == nullptr) {
        thread_ = std::thread([name = std::move(name), body = std::move(body)]() mutable {
            ownName = std::move(name);
            body();
        });
        return;
    }
    part_ = std::make_shared<Part>();
    part_->party.name = std::move(name);
    conductor().admit(part_->party);
    thread_ = std::thread([body = std::move(body), part = part_] {
        conductor().awaitTurn(part->party);
        ownParty = &part->party;
        ownName = part->party.name;
        body();
        part->hasEnded = true;
        ownParty = nullptr;
        conductor().leave();
    });
}

void Thread::join()
{
    if (part_ != nullptr && ownParty != nullptr) {
        auto hasEnded = [this] { return part_->hasEnded; };
        conductor().wait(*ownParty, {.what = "the end of a thread", .isReady = ReadyCheck(hasEnded)});
    }
    thread_.join();
}

std::string_view threadName()
{
    return ownName;
}

}  // namespace telephone
