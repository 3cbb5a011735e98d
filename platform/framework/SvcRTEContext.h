// The runtime context of a service: what `init` is given and every manager is handed. A default-constructed one is an
// empty context, whose look-ups find nothing.
#pragma once

#include "platform/framework/FrameworkContext.h"

class SvcRTEContext : public FrameworkContext
{};

using Context = SvcRTEContext;
