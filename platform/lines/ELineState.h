/// @file
/// The states of a line as its key shows them.
#pragma once

/// The state of a line or appearance.
enum ELineState : int
{
    eLineStateUnknown = 0,                   ///< not known, for example of a party that is not being watched yet
    eLineStateIdle = 1,                      ///< free
    eLineStateDialling = 2,                  ///< an outgoing call is on its way
    eLineStateRemoteRinging = 3,             ///< the far end rings
    eLineStateRinging = 4,                   ///< a call alerts here
    eLineStateActive = 5,                    ///< a connected call
    eLineStateDSSBusy = 6,                   ///< the party of a direct-station-select key is in a call
    eLineStateHold = 7,                      ///< held here
    eLineStateHoldConsult = 8,               ///< held here for a consultation
    eLineStateConference = 9,                ///< part of a conference
    eLineStateHoldElsewhere = 10,            ///< held by another telephone of a shared line; can be retrieved here
    eLineStateActiveElsewhere = 11,          ///< another telephone of a shared line talks
    eLineStateConferenceHoldElsewhere = 12,  ///< a conference held by another telephone; can be retrieved here
    eLineStateRingingElsewhere = 13,         ///< a call alerts at another telephone only
    eLineStateOutOfService = 14,             ///< not registered
    eLineStateSelected = 21,                 ///< seized: the next digits dial on it
    eLineStateReserved = 24,                 ///< kept free for a call that is about to be made
};
