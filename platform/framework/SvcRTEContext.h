/// @file
/// The runtime context of a service.
#pragma once

#include "platform/framework/FrameworkContext.h"

/// What `init` is given and every manager is handed. A default-constructed one is an empty context, whose look-ups find
/// nothing.
class SvcRTEContext : public FrameworkContext
{};

/// The name by which executables know the runtime context.
using Context = SvcRTEContext;
