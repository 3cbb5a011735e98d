// Call forwarding: the rules of the platform and their mirror in the configuration store.
#include "CommunicationsService.h"

#include <array>
#include <string_view>

#include "CommunicationsServiceGuards.h"
#include "CommunicationsServiceLog.h"
#include "platform/lines/ClientUtils.h"
#include "platform/lines/Line.h"
#include "platform/lines/LineManager.h"
#include "platform/management/DataNode.h"
#include "platform/management/LocalMgmtIfc.h"
#include "platform/management/ManageableData.h"
#include "platform/physical/PhysicalInterfaceServiceIfc.h"
#include "platform/sfi/CSfi.h"
#include "platform/sfi/SfiConfiguration.h"
#include "platform/team/TeamServiceFeatures.h"
#include "platform/team/TeamServiceKeyset.h"

namespace {

struct ForwardingRow
{
    sfiForwardingType type;
    int (*enabled)();
    void (*uri)(std::string&);
    std::string_view activationKey;
    std::string_view addressKey;
    bool hasDelay;
};

constexpr char const* kDelayKey = "cfnr-delay";

constexpr std::array kForwardingRows{
    ForwardingRow{sfiForwardUnconditional, sfiGetForwardUnconditionalEnable, sfiGetForwardUnconditionalUri,
                  "cfu-activated", "cfu-address", false},
    ForwardingRow{sfiForwardUnconditionalExternal, sfiGetForwardUnconditionalExtEnable,
                  sfiGetForwardUnconditionalExtUri, "cfu-ext-activated", "cfu-ext-address", false},
    ForwardingRow{sfiForwardUnconditionalInternal, sfiGetForwardUnconditionalIntEnable,
                  sfiGetForwardUnconditionalIntUri, "cfu-int-activated", "cfu-int-address", false},
    ForwardingRow{sfiForwardBusy, sfiGetForwardBusyEnable, sfiGetForwardBusyUri, "cfb-activated", "cfb-address", false},
    ForwardingRow{sfiForwardBusyExternal, sfiGetForwardBusyExtEnable, sfiGetForwardBusyExtUri, "cfb-ext-activated",
                  "cfb-ext-address", false},
    ForwardingRow{sfiForwardBusyInternal, sfiGetForwardBusyIntEnable, sfiGetForwardBusyIntUri, "cfb-int-activated",
                  "cfb-int-address", false},
    ForwardingRow{sfiForwardNoReply, sfiGetForwardNoReplyEnable, sfiGetForwardNoReplyUri, "cfnr-activated",
                  "cfnr-address", true},
    ForwardingRow{sfiForwardNoReplyExternal, sfiGetForwardNoReplyExtEnable, sfiGetForwardNoReplyExtUri,
                  "cfnr-ext-activated", "cfnr-ext-address", false},
    ForwardingRow{sfiForwardNoReplyInternal, sfiGetForwardNoReplyIntEnable, sfiGetForwardNoReplyIntUri,
                  "cfnr-int-activated", "cfnr-int-address", false},
};
static_assert(kForwardingRows.size() == 9);

// The index of a row is the value of its type, and no key appears twice.
constexpr bool isTableSound()
{
    for (std::size_t i = 0; i < kForwardingRows.size(); ++i) {
        if (kForwardingRows[i].type != static_cast<int>(i)) {
            return false;
        }
        for (std::size_t j = 0; j < i; ++j) {
            if (kForwardingRows[i].activationKey == kForwardingRows[j].activationKey ||
                kForwardingRows[i].addressKey == kForwardingRows[j].addressKey) {
                return false;
            }
        }
    }
    return true;
}
static_assert(isTableSound());

constexpr std::array kBaseTypes{sfiForwardUnconditional, sfiForwardBusy, sfiForwardNoReply};

// Null for a type without a rule in the store.
ForwardingRow const* findRow(sfiForwardingType type)
{
    auto const index = static_cast<std::size_t>(type);
    return index < kForwardingRows.size() ? &kForwardingRows[index] : nullptr;
}

// Tells the platform when forwarding settings begin and end to be written.
class PendingChanges
{
public:
    explicit PendingChanges(CommunicationsService& service)
        : service_(service)
    {
        service_.setCFChangesPending(true);
    }
    ~PendingChanges() { service_.setCFChangesPending(false); }
    PendingChanges(PendingChanges const&) = delete;
    PendingChanges& operator=(PendingChanges const&) = delete;

private:
    CommunicationsService& service_;
};

struct ForwardingRule
{
    bool on;
    std::string const& destination;
    int ringCount;
};

// Writes address, activation and delay, in this order; a refused value does not stop the rest.
void writeRule(CommunicationsService& service, ForwardingRow const& row, ForwardingRule const& rule, bool force)
{
    bool const inForce = row.enabled() != 0;
    std::string uriInForce;
    row.uri(uriInForce);
    bool const delayChanged = row.hasDelay && (force || sfiGetForwardNoReplyTime() != rule.ringCount);
    if (force || rule.destination != uriInForce) {
        service.setQORAValue(std::string(row.addressKey), rule.destination);
    }
    if (force || rule.on != inForce) {
        service.setQORAValue(std::string(row.activationKey), rule.on ? "true" : "false");
    }
    if (delayChanged) {
        service.setQORAValue(kDelayKey, std::to_string(rule.ringCount));
    }
}

}  // namespace

sfiResult CommunicationsService::setForwardingConfiguration(std::string const& lineURI, sfiForwardingType type, bool on,
                                                            std::string const& destination, int cfnrRingCount,
                                                            bool forceQORAUpdate)
{
    int const privacy = sfiGetCFPrivacyMode();
    SERVICE_DETAIL("setForwardingConfiguration: line(%s), type(%d), status(%d), destination(%s), cfnrRingCount(%d), "
                   "forceQORAUpdate(%d), privacy(%d)",
                   lineURI.c_str(), type, on, destination.c_str(), cfnrRingCount, forceQORAUpdate, privacy);
    if (localMgmt_ == nullptr) {
        return sfiFailure;
    }
    bool const keepsDestination = on || privacy == 0;
    std::string const kept = keepsDestination ? destination : std::string();
    if (TeamServiceKeyset::Instance()->isKeysetActive()) {
        bool const isCurrent = isCurrentMultiUser(lineURI);
        if (Line* const line = LineManager::Instance()->getLine(lineURI)) {
            line->setForwardingConfiguration(type, on, kept, cfnrRingCount);
        }
        if (!isCurrent) {
            return sfiSuccess;
        }
    }
    publishForwardingConfigurationViaQORA(type, on, kept, cfnrRingCount, forceQORAUpdate);
    return sfiSuccess;
}

sfiResult CommunicationsService::getForwardingConfiguration(sfiForwardingType type, bool& on, std::string& destination,
                                                            int& cfnrRingCount)
{
    // The platform expects this query before a rule is read; the answer makes no difference.
    static_cast<void>(sfiBuiltInForwardingEnabled());
    ForwardingRow const* const row = findRow(type);
    if (row == nullptr) {
        SERVICE_FAILURE("getForwardingConfiguration - unhandled forwarding type (%d)", type);
        return sfiFailure;
    }
    on = row->enabled() != 0;
    row->uri(destination);
    if (row->hasDelay) {
        cfnrRingCount = sfiGetForwardNoReplyTime();
    }
    return sfiSuccess;
}

void CommunicationsService::publishForwardingConfigurationViaQORA(sfiForwardingType type, bool on,
                                                                  std::string const& destination, int cfnrRingCount,
                                                                  bool force)
{
    PendingChanges const pending(*this);
    if (localMgmt_ == nullptr) {
        return;
    }
    SemaphoreGuard const hold(publicationLock_);
    FlagGuard const inProgress(publicationInProgress_);
    if (type == sfiForwardAlternative) {
        TeamServiceFeatures::Instance()->HandleForwardingAlternative(destination);
        return;
    }
    ForwardingRow const* const row = findRow(type);
    if (row == nullptr) {
        SERVICE_FAILURE("publishForwardingConfigurationViaQORA - unhandled forwarding type (%d)", type);
        return;
    }
    writeRule(*this, *row, {on, destination, cfnrRingCount}, force);
}

int CommunicationsService::setQORAValue(std::string const& key, std::string const& value)
{
    if (localMgmt_ == nullptr || key.empty()) {
        return 0;
    }
    ManageableData data;
    DataNode node;
    std::string text = value;
    node.setValue(text);
    data.setRootId(key, nullptr);
    data.populate(key, node);
    return localMgmt_->setManageableData(data);
}

void CommunicationsService::removeForwardingIfSet()
{
    if (localMgmt_ == nullptr) {
        return;
    }
    PendingChanges const pending(*this);
    {
        SemaphoreGuard const hold(publicationLock_);
        FlagGuard const inProgress(publicationInProgress_);
        for (auto const type : kBaseTypes) {
            ForwardingRow const& row = *findRow(type);
            if (row.enabled() == 1) {
                setQORAValue(std::string(row.activationKey), "false");
            }
        }
    }
    if (physicalInterface_ != nullptr) {
        physicalInterface_->forwardingCleared();
    }
}

void CommunicationsService::setCFChangesPending(bool pending)
{
    CSfi::GetInstance()->setCFChangesPending(pending);
}

bool CommunicationsService::isCurrentMultiUser(std::string const& lineURI)
{
    std::string const current = TeamServiceKeyset::Instance()->getCurrentMultiUser();
    std::string baseURI;
    int index = 0;
    ClientUtils::splitMCADeviceIndex(lineURI, baseURI, index);
    return baseURI == current;
}

void CommunicationsService::activateStoredFwd() {}
