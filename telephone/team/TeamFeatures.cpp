#include "telephone/team/TeamFeatures.h"

#include <spdlog/fmt/fmt.h>

#include "CommunicationsServiceIfc.h"
#include "platform/sfi/SfiConfiguration.h"
#include "telephone/framework/Log.h"
#include "telephone/framework/Refusals.h"
#include "telephone/lines/Lines.h"
#include "telephone/management/ForwardingKeys.h"
#include "telephone/management/Settings.h"
#include "telephone/physical/PhysicalInterface.h"
#include "telephone/team/FeatureToggles.h"
#include "telephone/team/Keyset.h"
#include "telephone/team/LogComponent.h"
#include "telephone/team/PickupHandler.h"
#include "telephone/traced/TracedPlatform.h"

namespace telephone {

namespace {

constexpr ForwardingKeys const& kForwardAll = kForwardingKeys[sfiForwardUnconditional];

}  // namespace

TeamFeatures::TeamFeatures(Parts const& parts, std::string const& pushAddress)
    : parts_(parts)
    , busyLamps_(parts.keys, parts.calls, parts.actions)
    , cockpit_(parts.settings)
    , push_(pushAddress)
    , queue_("the team features")
{}

TeamFeatures::~TeamFeatures()
{
    stop();
}

void TeamFeatures::stop()
{
    queue_.stop();
    push_.stop();
    service_.set(nullptr);
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
    service_.set(service);
}

void TeamFeatures::Activate()
{
    if (!active_.exchange(true)) {
        busyLamps_.watch(parts_.watch);
        parts_.lines.watchParties(parts_.watch);
    }
}

void TeamFeatures::HandleButtonPressedEvent(int key, PhysDefs::keyFunctionType function, PhysDefs::actionType action)
{
    if (action == PhysDefs::actionPressed) {
        reportIfRefused(kComponent, keyPressed(key, function));
    }
}

Outcome<> TeamFeatures::keyPressed(int key, PhysDefs::keyFunctionType function)
{
    if (function == PhysDefs::keyFunctionForwarding) {
        auto const* const pressed = parts_.keys.layout().find(key);
        auto const destination = pressed == nullptr ? std::string() : pressed->configuration.target;
        return later(
            [this, destination] { return switchForwarding(!isOn(PhysDefs::keyFunctionForwarding, 0), destination); });
    }
    if (function == PhysDefs::keyFunctionDoNotDisturb) {
        return later([this] { return switchDoNotDisturb(!isOn(PhysDefs::keyFunctionDoNotDisturb, 0)); });
    }
    if (function == PhysDefs::keyFunctionMessages) {
        return later([this] { return dialVoiceMail(); });
    }
    return refuse(RefusalKind::kNotSupported, fmt::format("key {} does nothing: no team feature has key function {}",
                                                          key, static_cast<int>(function)));
}

Outcome<> TeamFeatures::later(std::function<Outcome<>()> work)
{
    return queue_.post([work = std::move(work)] { reportIfRefused(kComponent, work()); });
}

Outcome<> TeamFeatures::switchForwarding(bool on, std::string const& destination)
{
    auto const to = destination.empty() ? parts_.settings.text(kForwardAll.address) : destination;
    if (on && to.empty()) {
        return refuse(RefusalKind::kBadInput, "calls cannot be forwarded without a destination");
    }
    return service_.calls().and_then([&](CommunicationsServiceIfc* service) -> Outcome<> {
        auto const line = parts_.keyset.getCurrentMultiUser();
        if (service->setForwardingConfiguration(line, sfiForwardUnconditional, on, to, 0, false) != sfiSuccess) {
            return refuse(RefusalKind::kUnavailable,
                          fmt::format("the service refused to switch forwarding {}", on ? "on" : "off"));
        }
        return {};
    });
}

Outcome<> TeamFeatures::switchDoNotDisturb(bool on)
{
    return service_.calls().and_then([&](CommunicationsServiceIfc* service) -> Outcome<> {
        if (service->setDoNotDisturb(parts_.keyset.getCurrentMultiUser(), on) != sfiSuccess) {
            return refuse(RefusalKind::kUnavailable,
                          fmt::format("the service refused to switch do-not-disturb {}", on ? "on" : "off"));
        }
        return {};
    });
}

Outcome<> TeamFeatures::dialVoiceMail()
{
    auto const service = service_.calls();
    if (!service) {
        return tl::unexpected(service.error());
    }
    std::string voiceMail;
    sfiGetVoiceMailDialURI(voiceMail);
    if (voiceMail.empty()) {
        return refuse(RefusalKind::kNotFound, "no number of a mailbox is configured");
    }
    std::string lineURI;
    int callID = 0;
    {
        std::lock_guard const lock(parts_.calls);
        auto const line = parts_.lines.lineForNewCall();
        if (!line) {
            return tl::unexpected(line.error());
        }
        lineURI = (*line)->id();
        callID = parts_.calls.freeCallID();
    }
    if ((*service)->outgoingCallMake(lineURI, callID, voiceMail.c_str(), false, false, false) != sfiSuccess) {
        return refuse(RefusalKind::kUnavailable, fmt::format("the service refused to call the mailbox {}", voiceMail));
    }
    return {};
}

void TeamFeatures::processInvokeDOAction(int feature, int instanceId, bool on, std::string const& data)
{
    reportIfRefused(kComponent, invoke(feature, instanceId, on, data));
}

void TeamFeatures::processInvokeDVAction(ZEBLocalFeaturesDefs::LF_NOTIFICATION_ID notification, int feature,
                                         int instanceId, ZEBLocalFeaturesDefs::eActionType action)
{
    log(kLogInfo, kComponent, "feature {} of instance {}: notification {}, action {}", feature, instanceId,
        static_cast<int>(notification), static_cast<int>(action));
    reportIfRefused(kComponent, act(feature, instanceId, action));
}

Outcome<> TeamFeatures::act(int feature, int instanceId, ZEBLocalFeaturesDefs::eActionType action)
{
    switch (action) {
    case ZEBLocalFeaturesDefs::eActionNone:
        return {};
    case ZEBLocalFeaturesDefs::eActionOn:
        return invoke(feature, instanceId, true, {});
    case ZEBLocalFeaturesDefs::eActionOff:
        return invoke(feature, instanceId, false, {});
    case ZEBLocalFeaturesDefs::eActionToggle:
        return invoke(feature, instanceId, !isOn(feature, instanceId), {});
    }
    return refuse(RefusalKind::kBadInput, fmt::format("there is no feature action {}", static_cast<int>(action)));
}

bool TeamFeatures::isOn(int feature, int instanceId) const
{
    if (feature == PhysDefs::keyFunctionForwarding) {
        return parts_.settings.flag(kForwardAll.activated);
    }
    if (feature == PhysDefs::keyFunctionDoNotDisturb) {
        return parts_.settings.flag(SettingNames::kDoNotDisturb);
    }
    return parts_.toggles.isOn(instanceId);
}

Outcome<> TeamFeatures::invoke(int feature, int instanceId, bool on, std::string const& data)
{
    if (feature == PhysDefs::keyFunctionForwarding) {
        return later([this, on, data] { return switchForwarding(on, data); });
    }
    if (feature == PhysDefs::keyFunctionDoNotDisturb) {
        return later([this, on] { return switchDoNotDisturb(on); });
    }
    if (feature == PhysDefs::keyFunctionFeatureToggle) {
        return later([this, instanceId, on] { return parts_.toggles.set(instanceId, on); });
    }
    return refuse(RefusalKind::kNotSupported, fmt::format("this telephone has no feature {}", feature));
}

void TeamFeatures::callbackDOFeatureCallID(std::string const& callId, int instanceId)
{
    log(kLogInfo, kComponent, "the feature of instance {} has made call {}", instanceId, callId);
}

// Called while the service writes to the store, so it writes only this value, on the same thread.
void TeamFeatures::HandleForwardingAlternative(std::string const& destination)
{
    reportIfRefused(kComponent, parts_.settings.set(SettingNames::kForwardingAlternative, destination));
}

sfiResult TeamFeatures::BLFPickupRequest(sfiCallInfo* call, std::string& target)
{
    return reportIfRefused(kComponent, parts_.pickup.pickup(call, target)) ? sfiFailure : sfiSuccess;
}

void TeamFeatures::blfKeyPressedFPK(int keyNumber, bool transfer)
{
    reportIfRefused(kComponent, busyLamps_.pressed(keyNumber, transfer));
}

void TeamFeatures::setDNDStatusForBLF(std::string const& blfLedControlURI, bool dndOn)
{
    reportIfRefused(kComponent, busyLamps_.setDoNotDisturb(blfLedControlURI, dndOn));
}

void TeamFeatures::sendURLPushRequest(std::string& url, std::string& data)
{
    reportIfRefused(kComponent, push_.send(url, data));
}

}  // namespace telephone

TeamServiceFeatures* TeamServiceFeatures::Instance()
{
    return telephone::traced<TeamServiceFeatures>(telephone::OnlyObject<telephone::TeamFeatures>::get());
}
