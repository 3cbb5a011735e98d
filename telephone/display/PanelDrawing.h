// The telephone as a drawing of text: its display above its keys and lamps, always in the same places. It has no times,
// so that scripts can compare it with a file. Pure functions.
//
//     +----------------------------------------------------------------+
//     | 4711     ringing           registered                          |
//     | 1001     ringing           "Alice Example" 4713                |
//     +----------------------------------------------------------------+
//       1  4711              [==  ==] G    2  4712              [      ]
#pragma once

#include "telephone/display/StateTables.h"

namespace telephone {

TableRows panelRows(TelephoneState const& state, DisplayOptions const& options);

}  // namespace telephone
