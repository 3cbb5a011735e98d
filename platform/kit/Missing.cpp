#include "platform/kit/Missing.h"

#include <mutex>
#include <set>
#include <string>
#include <utility>

#include "platform/framework/Logging.h"

namespace {

// Two operations of one name have different tasks.
bool isFirstTime(std::string const& name, char const* task)
{
    static std::mutex mutex;
    static std::set<std::pair<std::string, std::string>> reported;
    std::lock_guard const hold(mutex);
    return reported.emplace(name, task).second;
}

}  // namespace

void kit::Missing::report(char const* operation, char const* task) const
{
    std::string const name = owner_ == nullptr ? operation : std::string(owner_) + "::" + operation;
    if (isFirstTime(name, task)) {
        logAppUni("Porting kit", header_, kLogFailure, 0, "%s is not there yet: %s", name.c_str(), task);
    }
}
