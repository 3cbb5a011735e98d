#include "telephone/team/BusyLampFields.h"

#include <algorithm>
#include <mutex>

#include "telephone/framework/Log.h"
#include "telephone/lines/LineActions.h"
#include "telephone/lines/Lines.h"
#include "telephone/sip/Uri.h"

namespace telephone {

namespace {

constexpr char const* kComponent = "busy lamps";

Lamp lampOf(PartyStatus status, bool doNotDisturb)
{
    switch (status) {
    case PartyStatus::kRinging:
        return {PhysDefs::lampFlashing, PhysDefs::lampRed};
    case PartyStatus::kBusy:
    case PartyStatus::kHolding:
        return {PhysDefs::lampSteady, PhysDefs::lampRed};
    case PartyStatus::kUnknown:
    case PartyStatus::kIdle:
        break;
    }
    return doNotDisturb ? Lamp{PhysDefs::lampFluttering, PhysDefs::lampRed} : Lamp{};
}

}  // namespace

BusyLampFields::BusyLampFields(Lines& lines, PhysicalInterface& keys)
    : lines_(lines)
    , keys_(keys)
{
    for (auto const& key : keys.layout().keys()) {
        if (key.function() == PhysDefs::keyFunctionBusyLampField) {
            fields_.push_back({&key, {}, false});
        }
    }
}

void BusyLampFields::watch(PartyWatch& watch)
{
    for (auto const& field : fields_) {
        watch.watch(field.key->configuration.target,
                    [this, number = field.key->number()](WatchedParty const& party) { noteParty(number, party); });
    }
}

void BusyLampFields::pressed(int keyNumber, bool transfer)
{
    std::lock_guard const lock(lines_.calls());
    auto const* const field = find(keyNumber);
    if (field == nullptr) {
        log(kLogFailure, kComponent, "key {} is no busy-lamp field", keyNumber);
        return;
    }
    auto const& number = field->key->configuration.target;
    if (field->key->configuration.monitorOnly) {
        log(kLogFailure, kComponent, "key {} does nothing: it only shows {}", keyNumber, number);
        return;
    }
    auto context = lines_.calls().activeCall() ? eDSSContextConsultation : eDSSContextNone;
    if (transfer) {
        context = eDSSContextBlindTransfer;
    } else if (field->party.status == PartyStatus::kRinging) {
        context = eDSSContextPickup;
    }
    lines_.actions().stationPressed(number, context, {});
}

void BusyLampFields::setDoNotDisturb(std::string const& party, bool on)
{
    auto const user = sip::userOf(party);
    auto const& number = user.empty() ? party : user;
    std::lock_guard const lock(lines_.calls());
    bool found = false;
    for (auto& field : fields_) {
        if (field.key->configuration.target == number) {
            field.doNotDisturb = on;
            show(field);
            found = true;
        }
    }
    if (!found) {
        log(kLogFailure, kComponent, "do-not-disturb of \"{}\" is not shown: no busy-lamp field watches it", party);
    }
}

void BusyLampFields::noteParty(int keyNumber, WatchedParty const& party)
{
    if (auto* const field = find(keyNumber)) {
        field->party = party;
        show(*field);
    }
}

void BusyLampFields::show(Field const& field)
{
    keys_.lampBoard().setKey(field.key->number(), lampOf(field.party.status, field.doNotDisturb));
}

BusyLampFields::Field* BusyLampFields::find(int keyNumber)
{
    auto const field = std::find_if(fields_.begin(), fields_.end(),
                                    [keyNumber](Field const& each) { return each.key->number() == keyNumber; });
    return field == fields_.end() ? nullptr : &*field;
}

}  // namespace telephone
