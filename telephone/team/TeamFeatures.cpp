#include "telephone/team/TeamFeatures.h"

#include <atomic>
#include <stdexcept>

#include "CommunicationsServiceIfc.h"
#include "platform/sfi/SfiConfiguration.h"
#include "telephone/framework/Log.h"
#include "telephone/lines/Lines.h"
#include "telephone/management/Settings.h"
#include "telephone/physical/PhysicalInterface.h"
#include "telephone/team/FeatureToggles.h"
#include "telephone/team/Keyset.h"
#include "telephone/team/PickupHandler.h"

namespace telephone {

namespace {

constexpr char const* kComponent = "team features";
constexpr std::string_view kForwardAll = "cfu-activated";
constexpr std::string_view kForwardAllTo = "cfu-address";

std::atomic<TeamFeatures*> theFeatures{nullptr};

}  // namespace

TeamFeatures::TeamFeatures(Configuration const& configuration, Lines& lines, Keyset& keyset, FeatureToggles& toggles,
                           PhysicalInterface& keys, Settings& settings, PartyWatch& watch)
    : lines_(lines)
    , keyset_(keyset)
    , toggles_(toggles)
    , keys_(keys)
    , settings_(settings)
    , watch_(watch)
    , busyLamps_(lines, keys)
    , cockpit_(settings)
    , push_(configuration.push.address)
    , queue_("team features")
{
    TeamFeatures* nobody = nullptr;
    if (!theFeatures.compare_exchange_strong(nobody, this)) {
        throw std::runtime_error("there are team features already");
    }
}

TeamFeatures::~TeamFeatures()
{
    stop();
    theFeatures = nullptr;
}

void TeamFeatures::stop()
{
    queue_.stop();
    push_.stop();
    service_.open(nullptr);
}

void TeamFeatures::setPhysicalInterface(PhysicalInterfaceServiceIfc* physicalInterface)
{
    if (physicalInterface == nullptr) {
        log(kLogWarning, kComponent, "the service found no keys and lamps");
    }
}

void TeamFeatures::setLocalMgmtInterface(LocalMgmtIfc* localMgmt)
{
    if (localMgmt == nullptr) {
        log(kLogWarning, kComponent, "the service found no configuration store");
    }
}

void TeamFeatures::setCertMgmtInterface(CertificateMgmtSvcIfc* certificateMgmt)
{
    if (certificateMgmt == nullptr) {
        log(kLogWarning, kComponent, "the service found no certificate management");
    }
}

void TeamFeatures::setCommsSrv(SvcRTEContext* /*context*/, Executable* service)
{
    service_.open(service);
}

void TeamFeatures::Activate()
{
    {
        std::lock_guard const lock(mutex_);
        if (active_) {
            return;
        }
        active_ = true;
    }
    busyLamps_.watch(watch_);
    lines_.watchParties(watch_);
}

void TeamFeatures::timerExpired(int /*timerId*/) {}

void TeamFeatures::HandleButtonPressedEvent(int key, PhysDefs::keyFunctionType function, PhysDefs::actionType action)
{
    if (action != PhysDefs::actionPressed) {
        return;
    }
    switch (function) {
    case PhysDefs::keyFunctionForwarding: {
        auto const* const pressed = keys_.layout().find(key);
        auto const destination = pressed == nullptr ? std::string() : pressed->configuration.target;
        queue_.post([this, destination] { switchForwarding(!settings_.flag(kForwardAll), destination); });
        return;
    }
    case PhysDefs::keyFunctionDoNotDisturb:
        queue_.post([this] { switchDoNotDisturb(!settings_.flag(SettingNames::kDoNotDisturb)); });
        return;
    case PhysDefs::keyFunctionMessages:
        queue_.post([this] { dialVoiceMail(); });
        return;
    default:
        log(kLogFailure, kComponent, "key {} does nothing: no team feature has key function {}", key,
            static_cast<int>(function));
        return;
    }
}

void TeamFeatures::switchForwarding(bool on, std::string const& destination)
{
    auto* const service = service_.calls();
    auto const to = destination.empty() ? settings_.text(kForwardAllTo) : destination;
    if (on && to.empty()) {
        log(kLogFailure, kComponent, "calls are not forwarded: no destination is set");
        return;
    }
    if (service != nullptr &&
        service->setForwardingConfiguration(userLine(), sfiForwardUnconditional, on, to, 0, false) != sfiSuccess) {
        log(kLogFailure, kComponent, "forwarding is not switched {}: the service refuses it", on ? "on" : "off");
    }
}

void TeamFeatures::switchDoNotDisturb(bool on)
{
    auto* const service = service_.calls();
    if (service != nullptr && service->setDoNotDisturb(userLine(), on) != sfiSuccess) {
        log(kLogFailure, kComponent, "do-not-disturb is not switched {}: the service refuses it", on ? "on" : "off");
    }
}

void TeamFeatures::dialVoiceMail()
{
    auto* const service = service_.calls();
    std::string voiceMail;
    sfiGetVoiceMailDialURI(voiceMail);
    if (service == nullptr || voiceMail.empty()) {
        log(kLogFailure, kComponent, "the mailbox is not called: {}",
            service == nullptr ? "no service" : "it has no number");
        return;
    }
    std::string lineURI;
    int callID = 0;
    {
        std::lock_guard const lock(lines_.calls());
        auto const* const line = lines_.lineForNewCall();
        lineURI = line == nullptr ? std::string() : line->id();
        callID = lines_.calls().freeCallID();
    }
    if (lineURI.empty()) {
        log(kLogFailure, kComponent, "the mailbox is not called: no line is free");
    } else if (service->outgoingCallMake(lineURI, callID, voiceMail.c_str(), false, false, false) != sfiSuccess) {
        log(kLogFailure, kComponent, "the mailbox {} is not called: the service refuses it", voiceMail);
    }
}

std::string TeamFeatures::userLine()
{
    return keyset_.getCurrentMultiUser();
}

void TeamFeatures::processInvokeDOAction(int feature, int instanceId, bool on, std::string const& data)
{
    invoke(feature, instanceId, on, data);
}

void TeamFeatures::processInvokeDVAction(ZEBLocalFeaturesDefs::LF_NOTIFICATION_ID notification, int feature,
                                         int instanceId, ZEBLocalFeaturesDefs::eActionType action)
{
    log(kLogInfo, kComponent, "feature {} of instance {}: notification {}, action {}", feature, instanceId,
        static_cast<int>(notification), static_cast<int>(action));
    switch (action) {
    case ZEBLocalFeaturesDefs::eActionNone:
        return;
    case ZEBLocalFeaturesDefs::eActionOn:
        return invoke(feature, instanceId, true, {});
    case ZEBLocalFeaturesDefs::eActionOff:
        return invoke(feature, instanceId, false, {});
    case ZEBLocalFeaturesDefs::eActionToggle:
        return invoke(feature, instanceId, !isOn(feature, instanceId), {});
    }
    log(kLogFailure, kComponent, "feature {} is left as it is: there is no action {}", feature,
        static_cast<int>(action));
}

bool TeamFeatures::isOn(int feature, int instanceId) const
{
    switch (feature) {
    case PhysDefs::keyFunctionForwarding:
        return settings_.flag(kForwardAll);
    case PhysDefs::keyFunctionDoNotDisturb:
        return settings_.flag(SettingNames::kDoNotDisturb);
    default:
        return settings_.flag(std::string(SettingNames::kFeatureTogglePrefix) + std::to_string(instanceId));
    }
}

void TeamFeatures::invoke(int feature, int instanceId, bool on, std::string const& data)
{
    switch (feature) {
    case PhysDefs::keyFunctionForwarding:
        queue_.post([this, on, data] { switchForwarding(on, data); });
        return;
    case PhysDefs::keyFunctionDoNotDisturb:
        queue_.post([this, on] { switchDoNotDisturb(on); });
        return;
    case PhysDefs::keyFunctionFeatureToggle:
        queue_.post([this, instanceId, on] { toggles_.set(instanceId, on); });
        return;
    default:
        log(kLogFailure, kComponent, "feature {} is not switched: this telephone does not have it", feature);
        return;
    }
}

void TeamFeatures::callbackDOFeatureCallID(std::string const& callId, int instanceId)
{
    std::lock_guard const lock(mutex_);
    featureCalls_[instanceId] = callId;
}

std::string TeamFeatures::featureCall(int instanceId) const
{
    std::lock_guard const lock(mutex_);
    auto const call = featureCalls_.find(instanceId);
    return call == featureCalls_.end() ? std::string() : call->second;
}

// Called while the service writes to the store: only this one value, on the same thread.
void TeamFeatures::HandleForwardingAlternative(std::string const& destination)
{
    auto const outcome = settings_.set(SettingNames::kForwardingAlternative, destination);
    if (!outcome) {
        log(kLogFailure, kComponent, "the alternative forwarding is not set: {}", outcome.error().reason);
    }
}

sfiResult TeamFeatures::BLFPickupRequest(sfiCallInfo* call, std::string& target)
{
    return pickupForRecord(lines_, call, target);
}

void TeamFeatures::blfKeyPressedFPK(int keyNumber, bool transfer)
{
    busyLamps_.pressed(keyNumber, transfer);
}

void TeamFeatures::setDNDStatusForBLF(std::string const& blfLedControlURI, bool dndOn)
{
    busyLamps_.setDoNotDisturb(blfLedControlURI, dndOn);
}

void TeamFeatures::sendURLPushRequest(std::string& url, std::string& data)
{
    static_cast<void>(push_.send(url, data));
}

}  // namespace telephone

TeamServiceFeatures* TeamServiceFeatures::Instance()
{
    return telephone::theFeatures.load();
}
