#include "telephone/time/Thread.h"

#include <utility>

#include "telephone/time/Conductor.h"

namespace telephone {

struct Thread::Part
{
    Party party;
    bool hasEnded = false;
};

Thread::Thread(std::string name, std::function<void()> body)
{
    if (ownParty == nullptr) {
        thread_ = std::thread(std::move(body));
        return;
    }
    part_ = std::make_shared<Part>();
    part_->party.name = std::move(name);
    conductor().admit(part_->party);
    thread_ = std::thread([body = std::move(body), part = part_] {
        conductor().awaitTurn(part->party);
        ownParty = &part->party;
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

}  // namespace telephone
