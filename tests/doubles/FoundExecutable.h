// A mock as the framework finds it by name: an executable that also has the mocked interface.
#pragma once

#include "platform/framework/Executable.h"

template <class Mock>
class FoundExecutable : public Executable, public Mock
{
public:
    void init(Context& /*context*/) override {}
    void shutdown() override {}
};
