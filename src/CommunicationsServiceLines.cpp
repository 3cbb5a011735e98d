// The presentation of lines, and the key applications' requests to the keyset and the team features. The answers for a
// line that does not exist or has no configuration are part of the interface.
#include "CommunicationsService.h"

#include "platform/lines/Line.h"
#include "platform/lines/LineData.h"
#include "platform/lines/LineManager.h"
#include "platform/sfi/SfiConfiguration.h"
#include "platform/team/FeatureToggle.h"
#include "platform/team/TeamServiceFeatures.h"
#include "platform/team/TeamServiceKeyset.h"

namespace {

constexpr int kFirstOverviewPosition = 1;
constexpr int kNoAudibleAlert = -1;

LineData* findLineData(std::string const& lineURI)
{
    Line* const line = LineManager::Instance()->getLine(lineURI);
    return line == nullptr ? nullptr : line->getLineData();
}

}  // namespace

bool CommunicationsService::isKeyset()
{
    return !LineManager::Instance()->getKeysetType().empty();
}

int CommunicationsService::getPrimary(std::string const& lineURI)
{
    if (isKeyset()) {
        LineData* const data = findLineData(lineURI);
        return data == nullptr ? 0 : data->getPrimary();
    }
    if (lineURI.empty()) {
        return 0;
    }
    std::string phoneNumber;
    sfiGetCurrentPhoneNumber(phoneNumber);
    return lineURI == phoneNumber ? 1 : 0;
}

std::string CommunicationsService::getRemoteURI(std::string const& lineURI)
{
    Line* const line = LineManager::Instance()->getLine(lineURI);
    return line == nullptr ? std::string() : line->getLastNotifyRemoteURI();
}

std::string CommunicationsService::getShortDescription(std::string const& lineURI)
{
    LineData* const data = findLineData(lineURI);
    return data == nullptr ? std::string() : data->getShortDescription();
}

int CommunicationsService::getLineRing(std::string const& lineURI)
{
    LineData* const data = findLineData(lineURI);
    return data == nullptr ? 0 : data->getRing();
}

int CommunicationsService::getLineRingDelay(std::string const& lineURI)
{
    LineData* const data = findLineData(lineURI);
    return data == nullptr ? 0 : data->getRingDelay();
}

int CommunicationsService::getOverviewPosition(std::string const& lineURI)
{
    LineData* const data = findLineData(lineURI);
    return data == nullptr ? kFirstOverviewPosition : data->getOverviewPosition();
}

bool CommunicationsService::getVisibleOnOverview(std::string const& lineURI)
{
    LineData* const data = findLineData(lineURI);
    return data != nullptr && data->getVisibleOnOverview();
}

int CommunicationsService::getLineAudibleAlert(std::string const& lineURI)
{
    LineData* const data = findLineData(lineURI);
    return data == nullptr ? kNoAudibleAlert : data->getLineAudibleAlert();
}

int CommunicationsService::getState(std::string const& lineURI)
{
    Line* const line = LineManager::Instance()->getLine(lineURI);
    return line == nullptr ? 0 : line->getLineState();
}

std::string CommunicationsService::getHotWarmLineDialInfo(std::string const& lineURI)
{
    LineData* const data = findLineData(lineURI);
    if (data == nullptr || data->getHotWarmType() == LineData::kHotWarmNone) {
        return {};
    }
    return data->getHotWarmDigits();
}

std::string CommunicationsService::getURIforFPK(int keyNumber)
{
    LineData* const data = findLineData(LineManager::Instance()->getURIforFPK(keyNumber));
    return data == nullptr ? std::string() : data->getURI();
}

int CommunicationsService::getFPKforUri(std::string const& lineURI)
{
    return LineManager::Instance()->getFPKforUri(lineURI);
}

bool CommunicationsService::lineConsideredAsPrivate(std::string const& lineURI)
{
    return LineManager::Instance()->lineConsideredAsPrivate(lineURI);
}

bool CommunicationsService::reserveNextSCA(std::string const& lineURI)
{
    return TeamServiceKeyset::Instance()->reserveNextSCA(lineURI);
}

bool CommunicationsService::unreserveLine(std::string const& lineURI)
{
    TeamServiceKeyset::Instance()->unreserveLine(lineURI);
    return true;
}

int CommunicationsService::getIncomingCallPriority(std::string const& lineURI)
{
    return TeamServiceKeyset::Instance()->getIncomingCallPriority(lineURI);
}

bool CommunicationsService::getImmediateRing()
{
    return TeamServiceKeyset::Instance()->getImmediateRing();
}

void CommunicationsService::setImmediateRing(bool on)
{
    std::string outcome;
    TeamServiceKeyset::Instance()->setImmediateRing(on, outcome);
}

void CommunicationsService::callIgnored(std::string const& lineURI)
{
    TeamServiceKeyset::Instance()->callIgnored(lineURI);
}

void CommunicationsService::callIsolation(std::string const& lineURI, bool on)
{
    TeamServiceKeyset::Instance()->callIsolation(lineURI, on);
}

void CommunicationsService::terminatePreview()
{
    TeamServiceKeyset::Instance()->terminatePreview();
}

void CommunicationsService::initiateBCAOutgoingCall(std::string const& lineURI, std::string const& destination)
{
    TeamServiceKeyset::Instance()->initiateBCAOutgoingCall(lineURI, destination);
}

void CommunicationsService::setIsInServiceInitiatedState(std::string const& lineURI, bool initiated)
{
    TeamServiceKeyset::Instance()->setIsInServiceInitiatedState(lineURI, initiated);
}

void CommunicationsService::pushRequest(std::string& url, std::string& data)
{
    TeamServiceFeatures::Instance()->sendURLPushRequest(url, data);
}

void CommunicationsService::processInvokeDOAction(int feature, int instanceId, bool on, std::string const& data)
{
    TeamServiceFeatures::Instance()->processInvokeDOAction(feature, instanceId, on, data);
}

void CommunicationsService::processInvokeDVAction(ZEBLocalFeaturesDefs::LF_NOTIFICATION_ID notification, int feature,
                                                  int instanceId, ZEBLocalFeaturesDefs::eActionType action)
{
    TeamServiceFeatures::Instance()->processInvokeDVAction(notification, feature, instanceId, action);
}

void CommunicationsService::callbackDOFeatureCallID(std::string const& callId, int instanceId)
{
    TeamServiceFeatures::Instance()->callbackDOFeatureCallID(callId, instanceId);
}

void CommunicationsService::ftToggleKeyPressed(int keyNumber)
{
    FeatureToggle::Instance()->ftToggleKeyPressed(keyNumber);
}

std::string CommunicationsService::getWarmLine()
{
    return {};
}
