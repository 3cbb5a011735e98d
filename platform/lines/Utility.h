// Small questions about lines that the platform answers.
#pragma once

#include "platform/lines/ELineState.h"

class Line;

class Utility
{
public:
    static bool isLineStateBusy(ELineState state);
    // Joins the call of a bridged line; false when it is not possible. The line may be null.
    static bool bridgeCall(Line* line);
};
