// Whether the telephone makes and takes calls. CallEngine owns and changes it; the subjects only ask.
#pragma once

#include <atomic>

#include "platform/sfi/SfiTypes.h"
#include "telephone/base/Refusal.h"

namespace telephone {

struct Availability
{
    std::atomic<bool> active{false};
    std::atomic<sfiServiceState> serviceState{sfiServiceInService};

    [[nodiscard]] Outcome<> whenActive() const
    {
        return active ? Outcome<>() : refuse(RefusalKind::kUnavailable, "the telephone is not active");
    }
    // Calls in progress go on while the telephone is out of service, but no call begins.
    [[nodiscard]] Outcome<> forNewCalls() const
    {
        if (active && serviceState == sfiServiceOutOfService) {
            return refuse(RefusalKind::kUnavailable, "the telephone is out of service");
        }
        return whenActive();
    }
};

}  // namespace telephone
