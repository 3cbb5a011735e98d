// Events of keys and plugs from the physical interface.
#include "CommunicationsService.h"

#include <array>
#include <vector>

#include "CommunicationsServiceLog.h"
#include "platform/physical/PhysicalInterfaceServiceIfc.h"
#include "platform/sfi/CSfi.h"
#include "platform/team/TeamServiceFeatures.h"
#include "platform/team/TeamServiceKeyset.h"

namespace {

// The part of the telephone that acts on a key function.
enum class KeyHandler
{
    nobody,
    teamFeatures,
    keyset,
    callControl,
};

struct KeyRow
{
    PhysDefs::keyFunctionType function;
    KeyHandler handler;
};

constexpr std::array kKeyRows{
    KeyRow{PhysDefs::keyFunctionForwarding, KeyHandler::teamFeatures},
    KeyRow{PhysDefs::keyFunctionPreview, KeyHandler::keyset},
    KeyRow{PhysDefs::keyFunctionIgnoreCall, KeyHandler::keyset},
    KeyRow{PhysDefs::keyFunctionHold, KeyHandler::callControl},
    KeyRow{PhysDefs::keyFunctionDoNotDisturb, KeyHandler::teamFeatures},
    KeyRow{PhysDefs::keyFunctionMessages, KeyHandler::teamFeatures},
};
static_assert(kKeyRows.size() == 6);

constexpr bool areKeysAscending()
{
    for (std::size_t i = 1; i < kKeyRows.size(); ++i) {
        if (kKeyRows[i - 1].function >= kKeyRows[i].function) {
            return false;
        }
    }
    return true;
}
static_assert(areKeysAscending(), "a key function has one handler");

KeyHandler handlerOf(PhysDefs::keyFunctionType function)
{
    for (auto const& row : kKeyRows) {
        if (row.function == function) {
            return row.handler;
        }
    }
    return KeyHandler::nobody;
}

// Numbers of the groups that the service subscribes to.
constexpr int kButtonGroupFixedKeys = 6;
constexpr int kOtherGroup = 2;
constexpr int kActionGroup = 1;
constexpr int kButtonGroupProgrammableKeys = 4;

std::vector<PhysDefs::SubscriptionGrp> physicalSubscriptions()
{
    std::vector<PhysDefs::SubscriptionGrp> groups;
    groups.emplace_back(PhysDefs::KeyGrpButtonEvents(kButtonGroupFixedKeys, PhysDefs::actionPressed));
    groups.emplace_back(PhysDefs::KeyGrpOther(kOtherGroup, PhysDefs::actionReleased));
    groups.emplace_back(PhysDefs::ActionGrp(kActionGroup, PhysDefs::actionChanged));
    groups.emplace_back(PhysDefs::KeyGrpButtonEvents(kButtonGroupProgrammableKeys, PhysDefs::actionPressed));
    return groups;
}

std::vector<PhysDefs::SubscriptionGrp> functionalSubscriptions()
{
    std::vector<PhysDefs::SubscriptionGrp> functions;
    for (auto const function :
         {PhysDefs::keyFunctionDoNotDisturb, PhysDefs::keyFunctionMessages, PhysDefs::keyFunctionForwarding}) {
        functions.emplace_back(PhysDefs::FunctionalEventSubscription(function, PhysDefs::actionAny));
    }
    return functions;
}

}  // namespace

void CommunicationsService::subscribePhysicalInterfaceEvents()
{
    if (physicalInterface_ == nullptr) {
        return;
    }
    auto groups = physicalSubscriptions();
    physicalInterface_->subscribePhysicalEvents(this, groups);
    auto functions = functionalSubscriptions();
    physicalInterface_->subscribeFunctionalEvents(this, functions);
}

void CommunicationsService::keyPressedEvent(PhysDefs::keyFunctionType function, int key, PhysDefs::actionType action)
{
    if (CSfi::GetInstance()->IsPhoneLocked()) {
        SERVICE_TRACE("Key presses are ignored while the phone is locked.");
        return;
    }
    switch (handlerOf(function)) {
    case KeyHandler::teamFeatures:
        TeamServiceFeatures::Instance()->HandleButtonPressedEvent(key, function, action);
        return;
    case KeyHandler::keyset:
        TeamServiceKeyset::Instance()->handleButtonPressedEvent(function);
        return;
    case KeyHandler::callControl:
        CSfi::GetInstance()->HandleKeyFunction(function);
        return;
    case KeyHandler::nobody:
        break;
    }
    SERVICE_TRACE("Unsupported function - ignored");
}

void CommunicationsService::buttonPressedEvent(PhysDefs::keyFunctionType function, int key, PhysDefs::actionType action,
                                               std::string /*text*/)
{
    // The log line shows the function where it names the key number; log readers rely on it.
    SERVICE_TRACE("buttonPressedEvent FPK=%d)", function);
    keyPressedEvent(function, key, action);
}

void CommunicationsService::functionPressedEvent(PhysDefs::keyFunctionType function, int key,
                                                 PhysDefs::actionType action, std::string /*text*/)
{
    SERVICE_TRACE("functionPressedEvent Function=%d)(Action=%d)", function, action);
    keyPressedEvent(function, key, action);
}

void CommunicationsService::hookswitchEvent(PhysDefs::actionType /*action*/) {}

void CommunicationsService::jackEvent(PhysDefs::plugIdentifier plug, PhysDefs::plugStatus status)
{
    SERVICE_TRACE("jackEvent plugID %d , plugStatus %d", plug, status);
    if (status != PhysDefs::plugOut && status != PhysDefs::plugIn) {
        return;
    }
    if (plug == PhysDefs::plugHeadset) {
        CSfi::GetInstance()->SetHeadsetPlugged(status == PhysDefs::plugIn);
    } else if (plug == PhysDefs::plugLine) {
        CSfi::GetInstance()->JackEvent();
    }
}

void CommunicationsService::fpkAvailableEvent()
{
    SERVICE_TRACE("fpkAvailableEvent");
    CSfi::GetInstance()->NotifyFPKAvailable();
}
