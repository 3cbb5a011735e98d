// The loaded service as keys and team features call it: the interfaces of one executable, found by checked casts.
#pragma once

#include <atomic>

class CommunicationsServiceIfc;
class Executable;
class TeamServiceIfc;

namespace telephone {

class ServiceDoors
{
public:
    // Null: there is no service any more.
    void open(Executable* service);

    // Null, with the reason in the log, before the service is there or when it does not have the interface.
    CommunicationsServiceIfc* calls() const;
    TeamServiceIfc* team() const;

private:
    std::atomic<CommunicationsServiceIfc*> calls_{nullptr};
    std::atomic<TeamServiceIfc*> team_{nullptr};
};

}  // namespace telephone
