#include "telephone/team/BusyLampFields.h"

#include <algorithm>
#include <mutex>

#include <spdlog/fmt/fmt.h>

#include "telephone/lines/LineActions.h"
#include "telephone/sip/Uri.h"

namespace telephone {

namespace {

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

BusyLampFields::BusyLampFields(PhysicalInterface& keys, PhoneCalls& calls, LineActions& actions)
    : keys_(keys)
    , calls_(calls)
    , actions_(actions)
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

Outcome<> BusyLampFields::pressed(int keyNumber, bool transfer)
{
    std::lock_guard const lock(calls_);
    auto const* const field = find(keyNumber);
    if (field == nullptr) {
        return refuse(RefusalKind::kNotFound, fmt::format("key {} is not a busy-lamp field", keyNumber));
    }
    auto const& number = field->key->configuration.target;
    if (field->key->configuration.monitorOnly) {
        return refuse(RefusalKind::kNotPermitted, fmt::format("key {} only shows {}", keyNumber, number));
    }
    auto context = calls_.activeCall() ? eDSSContextConsultation : eDSSContextNone;
    if (transfer) {
        context = eDSSContextBlindTransfer;
    } else if (field->party.status == PartyStatus::kRinging) {
        context = eDSSContextPickup;
    }
    return actions_.stationPressed(number, context, {});
}

Outcome<> BusyLampFields::setDoNotDisturb(std::string const& party, bool on)
{
    auto const user = sip::userOf(party);
    auto const& number = user.empty() ? party : user;
    std::lock_guard const lock(calls_);
    bool found = false;
    for (auto& field : fields_) {
        if (field.key->configuration.target == number) {
            field.doNotDisturb = on;
            show(field);
            found = true;
        }
    }
    return found ? Outcome<>()
                 : refuse(RefusalKind::kNotFound, fmt::format("no busy-lamp field watches \"{}\"", party));
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
