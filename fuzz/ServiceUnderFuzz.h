// The real service on the fake platform of tests/model, as the targets that need a service use it. One for the whole
// process; each input starts with a new world.
#pragma once

#include "FuzzInput.h"
#include "src/CommunicationsService.h"
#include "src/CommunicationsServiceInvoker.h"
#include "tests/model/FakePlatform.h"
#include "tests/model/World.h"

class ServiceUnderFuzz
{
public:
    ServiceUnderFuzz()
    {
        world.enter();
        service.init(context);
        invoker.initInvoker(&context);
    }

    // A world of which the first bytes say what is unusual in it.
    void begin(FuzzInput& input)
    {
        world = World();
        world.service = &service;
        world.keysetActive = input.flag();
        world.keysetType = input.flag() ? "keyset" : "";
        world.serverFeatures = input.flag();
        world.serverType = input.below(8);
        world.phoneLocked = input.flag();
        world.storeTellsService = input.flag();
        world.answer = static_cast<sfiResult>(input.below(6));
    }

    // Checks what must hold after every operation.
    void check() const
    {
        require(!world.teamServiceLockHeld && !world.publicationLockHeld, "a lock of the service is still held");
        require(world.callControlDepth == 0, "the lock of the call control is still held");
        for (auto const& violation : world.violations) {
            complain(violation);
        }
    }

    World world;
    FakeContext context;
    CommunicationsService service;
    CommunicationsServiceInvoker invoker;
};
