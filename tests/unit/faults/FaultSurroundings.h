// What faults act on, for their tests: settings, keys and an event loop, without an exchange.
#pragma once

#include <atomic>

#include "telephone/configuration/Configuration.h"
#include "telephone/faults/FaultKinds.h"
#include "telephone/management/ConfigurationStore.h"
#include "telephone/management/Settings.h"
#include "telephone/physical/PhysicalInterface.h"
#include "telephone/sip/EventLoop.h"

namespace telephone {

struct FaultSurroundings
{
    ~FaultSurroundings() { physical.shutdown(); }

    Configuration configuration = Configuration::standard();
    sip::EventLoop loop;
    Settings settings{ConfigurationStore::open("").value(), configuration};
    PhysicalInterface physical{configuration};
    std::atomic<int> readingRate{0};
    FaultTargets targets{loop, nullptr, settings, physical, readingRate};
};

}  // namespace telephone
