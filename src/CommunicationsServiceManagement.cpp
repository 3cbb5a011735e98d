// The service as a management agent: it passes settings on to the platform, except those that the call server holds at
// the time. Also the items of the agent cockpit.
#include "CommunicationsService.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "CommunicationsServiceLog.h"
#include "platform/management/DxlCollection.h"
#include "platform/management/ManageableData.h"
#include "platform/recording/MediaRecordingService.h"
#include "platform/sfi/CSfi.h"
#include "platform/sfi/SfiConfiguration.h"
#include "platform/team/EACockpitHandler.h"
#include "platform/team/TeamServiceFeatures.h"

namespace {

using namespace std::string_view_literals;

constexpr char const* kServerBasedFeatures = "server-based-features";
constexpr auto kNoReplyDelay = "cfnr-delay"sv;

// The items that the server holds in server-based mode. External and internal rules are left out on purpose.
constexpr std::array kServerHeldItems{
    "call-dnd-activated"sv, "cfu-activated"sv,  "cfu-address"sv,  "cfb-activated"sv,
    "cfb-address"sv,        "cfnr-activated"sv, "cfnr-address"sv,
};
static_assert(kServerHeldItems.size() == 7);

std::vector<std::string> rootIdsOf(ManageableData& data)
{
    DxlCollection rows;
    data.getRootIds(rows);
    std::vector<std::string> ids;
    for (std::size_t row = 0; row < rows.size(); ++row) {
        ids.push_back(rows.value(row, ManageableData::kRootId));
    }
    return ids;
}

}  // namespace

int CommunicationsService::setData(ManageableData& data)
{
    // The service's own publications come back here and pass. No lock: they arrive on the publishing thread.
    if (!publicationInProgress_ && !setCentralisedFeatureData(data)) {
        return 0;
    }
    return CSfi::GetInstance()->ApplyManageableData(data, false);
}

int CommunicationsService::getData(ManageableData& data)
{
    return sipConfigManager_ == nullptr ? 0 : sipConfigManager_->getData(data);
}

void CommunicationsService::resetUserData()
{
    if (sipConfigManager_ != nullptr) {
        sipConfigManager_->resetUserData();
    }
}

void CommunicationsService::manageableDataChanged(ManageableData& data)
{
    if (sipConfigManager_ != nullptr) {
        CSfi::GetInstance()->ApplyManageableData(data, true);
    }
    mediaRecordingSvc()->dataChangedEvent(data);
}

bool CommunicationsService::setCentralisedFeatureData(ManageableData& data)
{
    return !extractNewValueForServerBasedFeatures(data) || extractInvalidDataItems(data);
}

bool CommunicationsService::extractNewValueForServerBasedFeatures(ManageableData& data)
{
    bool on = sfiGetServerBasedFeaturesEnabled();
    for (auto const& id : rootIdsOf(data)) {
        if (id != kServerBasedFeatures) {
            continue;
        }
        std::string value;
        data.interogate(id, "", value);
        SERVICE_TRACE("received server-based-features=%s:", value.c_str());
        // The item can set the flag but never clears it.
        on = on || value != "false";
    }
    return on;
}

bool CommunicationsService::extractInvalidDataItems(ManageableData& data)
{
    bool anyStayed = false;
    for (auto& id : rootIdsOf(data)) {
        if (isValidWhilstServerBasedFeaturesEnabled(id)) {
            anyStayed = true;
            continue;
        }
        data.removeRootId(id);
        SERVICE_FAILURE("failed to set data due to server based features being enabled %s", id.c_str());
    }
    return anyStayed;
}

bool CommunicationsService::isValidWhilstServerBasedFeaturesEnabled(std::string const& rootId)
{
    if (rootId == kNoReplyDelay) {
        return sfiGetServerType() == sfiServerWithNoReplyDelay;
    }
    return std::find(kServerHeldItems.begin(), kServerHeldItems.end(), rootId) == kServerHeldItems.end();
}

std::string CommunicationsService::getEACockpitData(std::string item)
{
    std::string value;
    if (auto* const handler = TeamServiceFeatures::Instance()->getEACockpitHandler()) {
        value = handler->getEACockpitData(item);
    }
    SERVICE_TRACE("getEACockpitData('%s')='%s'", item.c_str(), value.c_str());
    return value.empty() ? "??" : value;
}

bool CommunicationsService::setEACockpitData(std::string item, std::string value)
{
    auto* const handler = TeamServiceFeatures::Instance()->getEACockpitHandler();
    bool const result = handler != nullptr && handler->setEACockpitData(item, value);
    SERVICE_TRACE("setEACockpitData(item='%s', value='%s')='%s'", item.c_str(), value.c_str(),
                  result ? "true" : "false");
    return result;
}
