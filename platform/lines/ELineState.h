// The states of a line as its key shows them.
#pragma once

enum ELineState : int
{
    eLineStateUnknown = 0,
    eLineStateIdle = 1,
    eLineStateDialling = 2,
    eLineStateRemoteRinging = 3,
    eLineStateRinging = 4,
    eLineStateActive = 5,
    eLineStateDSSBusy = 6,  // the party of a direct-station-select key is in a call
    eLineStateHold = 7,
    eLineStateHoldConsult = 8,  // on hold for a consultation
    eLineStateConference = 9,
    eLineStateHoldElsewhere = 10,  // held by another telephone of a shared line; can be retrieved here
    eLineStateActiveElsewhere = 11,
    eLineStateConferenceHoldElsewhere = 12,  // a conference held by another telephone; can be retrieved here
    eLineStateRingingElsewhere = 13,
    eLineStateOutOfService = 14,
    eLineStateSelected = 21,  // seized: the next digits dial on it
    eLineStateReserved = 24,
};
