// The busy-lamp fields: keys that show the state of a party and call it, consult it, transfer to it or pick up its
// call. Lamps: off: idle, flashing: ringing, steady: busy, fluttering: idle with do-not-disturb.
//
// TeamFeatures owns it. Keys are pressed on the service's threads; parties change with the phone lock held.
#pragma once

#include <string>
#include <vector>

#include "telephone/base/Refusal.h"
#include "telephone/lines/PartyWatch.h"
#include "telephone/physical/PhysicalInterface.h"

namespace telephone {

class LineActions;
class PhoneCalls;

class BusyLampFields
{
public:
    BusyLampFields(PhysicalInterface& keys, PhoneCalls& calls, LineActions& actions);

    // Once.
    void watch(PartyWatch& watch);
    // transfer: blind transfer of the current call to the party.
    [[nodiscard]] Outcome<> pressed(int keyNumber, bool transfer);
    // party: a number or an address.
    [[nodiscard]] Outcome<> setDoNotDisturb(std::string const& party, bool on);

private:
    struct Field
    {
        PhoneKey const* key;
        WatchedParty party;
        bool doNotDisturb = false;
    };

    void show(Field const& field);
    void noteParty(int keyNumber, WatchedParty const& party);
    Field* find(int keyNumber);

    PhysicalInterface& keys_;
    PhoneCalls& calls_;
    LineActions& actions_;
    std::vector<Field> fields_;  // phone lock
};

}  // namespace telephone
