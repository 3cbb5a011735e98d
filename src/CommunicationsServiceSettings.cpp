// Do-not-disturb, agent state and the user of a keyset: settings of a line that the store and the platform share. The
// platform is told of a value once the store has accepted it.
#include "CommunicationsService.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "CommunicationsServiceGuards.h"
#include "CommunicationsServiceLog.h"
#include "platform/lines/ClientUtils.h"
#include "platform/lines/Line.h"
#include "platform/lines/LineManager.h"
#include "platform/management/LocalMgmtIfc.h"
#include "platform/management/ManageableData.h"
#include "platform/sfi/CSfi.h"
#include "platform/sfi/SfiConfiguration.h"
#include "platform/team/TeamServiceKeyset.h"

namespace {

using namespace std::string_view_literals;

constexpr char const* kDoNotDisturbKey = "call-dnd-activated";
constexpr char const* kAgentStateKey = "agent-state";

// Logging off is possible even while the feature is disabled.
constexpr auto kLoggedOff = "loggedOff"sv;
constexpr std::array kAgentStates{"loggedOn"sv, kLoggedOff, "notReady"sv, "ready"sv, "workingAfterCall"sv};
static_assert(kAgentStates.size() == 5);

bool isAgentState(std::string const& state)
{
    return std::find(kAgentStates.begin(), kAgentStates.end(), state) != kAgentStates.end();
}

// 0, the whole phone, for a line that does not exist.
int lineNumberOf(std::string const& lineURI)
{
    Line* const line = LineManager::Instance()->getLine(lineURI);
    return line == nullptr ? 0 : line->getLineID();
}

}  // namespace

sfiResult CommunicationsService::setDoNotDisturb(std::string const& lineURI, bool on)
{
    SERVICE_TRACE("setDoNotDisturb (%s, %d)", lineURI.c_str(), on);
    bool enabled = true;
    CSfi::GetInstance()->GetDNDEnabled(enabled);
    if (on && !enabled) {
        SERVICE_TRACE("setDoNotDisturb can't set, call-dnd-enabled is false");
        return sfiFailure;
    }
    if (TeamServiceKeyset::Instance()->isKeysetActive()) {
        bool const isCurrent = isCurrentMultiUser(lineURI);
        if (Line* const line = LineManager::Instance()->getLine(lineURI)) {
            line->setDNDConfiguration(on);
        }
        if (!isCurrent) {
            return sfiSuccess;
        }
    }
    publishDNDConfigurationViaQORA(lineURI, on);
    return sfiSuccess;
}

void CommunicationsService::publishDNDConfigurationViaQORA(std::string const& lineURI, bool on)
{
    if (localMgmt_ == nullptr) {
        return;
    }
    SemaphoreGuard const hold(publicationLock_);
    FlagGuard const inProgress(publicationInProgress_);
    if (setQORAValue(kDoNotDisturbKey, on ? "true" : "false") != 0) {
        CSfi::GetInstance()->SetDoNotDisturb(lineNumberOf(lineURI), on);
    }
}

void CommunicationsService::removeDNDIfSet()
{
    bool active = false;
    CSfi::GetInstance()->GetDoNotDisturb(0, active);
    if (active) {
        CSfi::GetInstance()->SetDoNotDisturb(0, false);
    }
}

sfiResult CommunicationsService::setAgentState(std::string const& lineURI, std::string const& state)
{
    SERVICE_TRACE("setAgentState(%s, %s)", lineURI.c_str(), state.c_str());
    bool enabled = true;
    CSfi::GetInstance()->GetAgentFeatureEnabled(enabled);
    if (!enabled && state != kLoggedOff) {
        SERVICE_TRACE("setAgentState can't set, agent-feature-enabled is false");
        return sfiFailure;
    }
    if (!isAgentState(state)) {
        SERVICE_TRACE("setAgentState invalid state");
        return sfiFailure;
    }
    if (localMgmt_ == nullptr) {
        return sfiSuccess;
    }
    SemaphoreGuard const hold(publicationLock_);
    FlagGuard const inProgress(publicationInProgress_);
    if (setQORAValue(kAgentStateKey, state) != 0) {
        CSfi::GetInstance()->SetAgentState(lineNumberOf(lineURI), state);
    }
    return sfiSuccess;
}

void CommunicationsService::changeMultiUser(std::string const& lineURI)
{
    if (!TeamServiceKeyset::Instance()->changeMultiUser(lineURI)) {
        return;
    }
    std::string baseURI;
    int index = 0;
    ClientUtils::splitMCADeviceIndex(lineURI, baseURI, index);
    Line* const line = LineManager::Instance()->getLine(baseURI);
    if (line == nullptr || !sfiGetServerBasedFeaturesEnabled()) {
        return;
    }
    Line::serverFeaturesSettings settings;
    line->getServerFeaturesSettings(settings);
    Line::singleCFSetting const off;
    for (int value = sfiForwardUnconditional; value <= sfiForwardAlternative; ++value) {
        auto const type = static_cast<sfiForwardingType>(value);
        auto const found = settings.forwarding.find(type);
        auto const& rule = found == settings.forwarding.end() ? off : found->second;
        publishForwardingConfigurationViaQORA(type, rule.status, rule.destination, rule.ringCount, false);
    }
    publishDNDConfigurationViaQORA(baseURI, settings.dnd);
}
