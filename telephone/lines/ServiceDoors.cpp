#include "telephone/lines/ServiceDoors.h"

#include "CommunicationsServiceIfc.h"
#include "TeamServiceIfc.h"
#include "platform/framework/Executable.h"
#include "telephone/framework/Log.h"

namespace telephone {

namespace {

template <typename Interface>
Interface* orLog(Interface* found)
{
    if (found == nullptr) {
        log(kLogFailure, "keys", "the key does nothing: no communications service is loaded");
    }
    return found;
}

}  // namespace

void ServiceDoors::open(Executable* service)
{
    calls_ = dynamic_cast<CommunicationsServiceIfc*>(service);
    team_ = dynamic_cast<TeamServiceIfc*>(service);
}

CommunicationsServiceIfc* ServiceDoors::calls() const
{
    return orLog(calls_.load());
}

TeamServiceIfc* ServiceDoors::team() const
{
    return orLog(team_.load());
}

}  // namespace telephone
