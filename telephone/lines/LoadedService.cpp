#include "telephone/lines/LoadedService.h"

#include "CommunicationsServiceIfc.h"
#include "TeamServiceIfc.h"
#include "platform/framework/Executable.h"

namespace telephone {

namespace {

template <typename Interface>
Outcome<Interface*> orRefusal(Interface* found)
{
    if (found == nullptr) {
        return refuse(RefusalKind::kUnavailable, "no communications service is loaded");
    }
    return found;
}

}  // namespace

void LoadedService::set(Executable* service)
{
    calls_ = dynamic_cast<CommunicationsServiceIfc*>(service);
    team_ = dynamic_cast<TeamServiceIfc*>(service);
}

Outcome<CommunicationsServiceIfc*> LoadedService::calls() const
{
    return orRefusal(calls_.load());
}

Outcome<TeamServiceIfc*> LoadedService::team() const
{
    return orRefusal(team_.load());
}

}  // namespace telephone
