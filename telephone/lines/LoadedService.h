// The loaded service as keys and team features call it: its interfaces, found by dynamic casts. Any thread.
#pragma once

#include <atomic>

#include "telephone/base/Refusal.h"

class CommunicationsServiceIfc;
class Executable;
class TeamServiceIfc;

namespace telephone {

class LoadedService
{
public:
    // Null when the service ends.
    void set(Executable* service);

    // Never null. Refused before the service is loaded and after its end.
    [[nodiscard]] Outcome<CommunicationsServiceIfc*> calls() const;
    [[nodiscard]] Outcome<TeamServiceIfc*> team() const;

private:
    std::atomic<CommunicationsServiceIfc*> calls_{nullptr};
    std::atomic<TeamServiceIfc*> team_{nullptr};
};

}  // namespace telephone
