/// @file
/// Small questions about lines that the platform answers.
#pragma once

#include "platform/lines/ELineState.h"

class Line;

/// The telephone defines it. Thread: any.
class Utility
{
public:
    /// Asks whether a line in a state cannot carry another call. A line held for a consultation can: the consultation.
    /// @return true when it cannot, also for a call at another telephone of a shared line.
    static bool isLineStateBusy(ELineState state);
    /// Joins the call of a bridged line. `line` may be null.
    /// @return true once under way; false when it is null, not bridged or without an active call
    ///     elsewhere, or when that call is private.
    static bool bridgeCall(Line* line);
};
