// The context of the fake platform, with the interfaces that are registered by name. Every other fake is behind the
// platform's own accessors and answers from the calling thread's world.
#pragma once

#include <string>

#include "World.h"
#include "platform/framework/SvcRTEContext.h"

class FakeContext final : public SvcRTEContext
{
public:
    Executable* findExecutable(std::string const& name) override;

    Registered registered;
};
