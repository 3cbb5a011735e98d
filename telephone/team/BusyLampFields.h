// The busy-lamp fields: keys that show what another party does and call it, consult it, transfer to it or pick up its
// call. Lamps: off idle, flashing rings, steady busy, fluttering idle with do-not-disturb.
//
// Owned by the team features. Presses come on the service's threads, changes of parties with the phone lock held.
#pragma once

#include <string>
#include <vector>

#include "telephone/lines/PartyWatch.h"
#include "telephone/physical/PhysicalInterface.h"

namespace telephone {

class Lines;

class BusyLampFields
{
public:
    BusyLampFields(Lines& lines, PhysicalInterface& keys);

    // Once, when subscriptions can be made.
    void watch(PartyWatch& watch);
    // A key that is no busy-lamp field is refused in the log.
    void pressed(int keyNumber, bool transfer);
    // By number or address.
    void setDoNotDisturb(std::string const& party, bool on);

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

    Lines& lines_;
    PhysicalInterface& keys_;
    std::vector<Field> fields_;  // phone lock
};

}  // namespace telephone
