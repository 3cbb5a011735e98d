// The call operations. Each builds the record of the call, takes the call control's lock, and calls it.
#include "CommunicationsService.h"

#include "CommunicationsServiceGuards.h"
#include "CommunicationsServiceLog.h"
#include "platform/services/DigitAnalysisServiceIfc.h"
#include "platform/sfi/CSfi.h"
#include "platform/sfi/SfiConfiguration.h"
#include "platform/team/DirectedPickupHandler.h"
#include "platform/team/TeamServiceFeatures.h"
#include "platform/team/TeamServiceKeyset.h"

using service_log::shown;

namespace {

// Fixed arguments; their meaning belongs to the call control.
constexpr int kCallMode = 1;
constexpr int kCallOption = 0;
constexpr int kFeatureMode = 1;

}  // namespace

sfiCallInfo CommunicationsService::callInfo(std::string const& lineURI, int callID)
{
    sfiCallInfo info{};
    generateCallInfoForLine(&info, lineURI, callID, true);
    return info;
}

bool CommunicationsService::numberFlag(std::string const& number)
{
    if (digitAnalysis_ == nullptr) {
        return false;
    }
    std::string answer = "false";
    digitAnalysis_->queryNumberFlag(number, answer);
    return answer == "true";
}

sfiResult CommunicationsService::callClear(std::string const& lineURI, int callID, CSTAEventCause cause)
{
    SERVICE_TRACE("callClear (callID = %d, cause = %d)", callID, cause);
    sfiCallInfo info{};
    // Clearing a call must not assign it an appearance.
    generateCallInfoForLine(&info, lineURI, callID, false);
    SfiGuard const hold;
    return CSfi::GetInstance()->CallClear(&info, cause);
}

sfiResult CommunicationsService::outgoingCallMake(std::string const& lineURI, int callID, char const* destination,
                                                  bool dssDirectCall, bool bridgeCall, bool callCompletionCall)
{
    SERVICE_TRACE("outgoingCallMake (callID = %d, Destination = %s)", callID, shown(destination));
    if (!isOutgoingCallAllowed(destination)) {
        return sfiFailure;
    }
    std::string const number(destination);
    bool const flag = numberFlag(number);
    if (!checkBCAForNextAppearanceReservation(lineURI)) {
        SERVICE_FAILURE("outgoingCallMake - cannot reserve next appearance for line(%s)", lineURI.c_str());
        return sfiFailure;
    }
    sfiCallInfo info = callInfo(lineURI, callID);
    return CSfi::GetInstance()->CallMake(&info, number, kCallMode, kCallOption, dssDirectCall, bridgeCall,
                                         callCompletionCall, flag);
}

sfiResult CommunicationsService::acceptCall(std::string const& lineURI, int callID, bool keysetOnly)
{
    SERVICE_TRACE("acceptCall (callID = %d)", callID);
    if (keysetOnly) {
        if (TeamServiceKeyset::Instance()->isKeysetActive()) {
            TeamServiceKeyset::Instance()->callStateChanged(lineURI, sfiCallStateAccepted, callID, 0);
        }
        return sfiSuccess;
    }
    sfiCallInfo info = callInfo(lineURI, callID);
    SfiGuard const hold;
    return CSfi::GetInstance()->CallAccept(&info);
}

sfiResult CommunicationsService::answerCall(std::string const& lineURI, int callID)
{
    SERVICE_TRACE("answerCall (callID = %d)", callID);
    sfiCallInfo info = callInfo(lineURI, callID);
    SfiGuard const hold;
    if (TeamServiceKeyset::Instance()->isKeysetActive()) {
        sfiResult const result = TeamServiceKeyset::Instance()->answerCall(lineURI);
        if (result != sfiSuccess) {
            SERVICE_FAILURE("TeamServiceKeyset.answerCall(%s) failed with code %d", lineURI.c_str(), result);
        }
        return result;
    }
    sfiResult const result = CSfi::GetInstance()->CallAnswer(&info);
    if (result != sfiSuccess) {
        SERVICE_FAILURE("Sfi->CallAnswer() for line %s failed with code %d", lineURI.c_str(), result);
    }
    return result;
}

sfiResult CommunicationsService::deflectCall(std::string const& lineURI, int callID, char const* destination)
{
    SERVICE_TRACE("deflectCall (callID = %d, Destination = %s)", callID, shown(destination));
    std::string const number(destination);
    // The dial plan is queried; its answer is not used here.
    static_cast<void>(numberFlag(number));
    sfiCallInfo info = callInfo(lineURI, callID);
    SfiGuard const hold;
    return CSfi::GetInstance()->CallFeature(&info, sfiFeatureDeflect, number.c_str(), kFeatureMode);
}

sfiResult CommunicationsService::holdCall(std::string const& lineURI, int callID, sfiFeature feature, bool manual)
{
    SERVICE_TRACE("holdCall (callID = %d)", callID);
    sfiCallInfo info = callInfo(lineURI, callID);
    SfiGuard const hold;
    CSfi::GetInstance()->SetManualHoldIndication(&info, manual);
    return CSfi::GetInstance()->CallFeature(&info, feature, "", kFeatureMode);
}

sfiResult CommunicationsService::retrieveCall(std::string const& lineURI, int callID)
{
    SERVICE_TRACE("retrieveCall (callID = %d)", callID);
    sfiCallInfo info = callInfo(lineURI, callID);
    SfiGuard const hold;
    if (TeamServiceKeyset::Instance()->isKeysetActive()) {
        TeamServiceKeyset::Instance()->retrieveCall(lineURI, callID);
        return sfiSuccess;
    }
    return CSfi::GetInstance()->CallRetrieve(&info);
}

sfiResult CommunicationsService::attendedTransferCall(std::string const& lineURI, int heldCallID, int activeCallID)
{
    SERVICE_TRACE("attendedTransferCall (%d,%d)", heldCallID, activeCallID);
    sfiCallInfo info = callInfo(lineURI, activeCallID);
    SfiGuard const hold;
    return CSfi::GetInstance()->CallFeature(&info, sfiFeatureAttendedTransfer, nullptr, kFeatureMode);
}

sfiResult CommunicationsService::blindTransferCall(std::string const& lineURI, int callID, char const* destination)
{
    SERVICE_TRACE("blindTransferCall (callID = %d, Destination = %s)", callID, shown(destination));
    std::string const number(destination);
    // As in deflectCall: queried, not used.
    static_cast<void>(numberFlag(number));
    sfiCallInfo info = callInfo(lineURI, callID);
    SfiGuard const hold;
    return CSfi::GetInstance()->CallFeature(&info, sfiFeatureBlindTransfer, number.c_str(), kFeatureMode);
}

sfiResult CommunicationsService::activateCallbackRinging(std::string const& lineURI, int callID)
{
    SERVICE_TRACE("activateCallbackRinging (%d)", callID);
    sfiCallInfo info = callInfo(lineURI, callID);
    SfiGuard const hold;
    return CSfi::GetInstance()->ActivateCallbackRinging(&info);
}

sfiResult CommunicationsService::activateCallbackBusy(std::string const& lineURI, int callID)
{
    SERVICE_TRACE("activateCallbackBusy (%d)", callID);
    sfiCallInfo info = callInfo(lineURI, callID);
    SfiGuard const hold;
    return CSfi::GetInstance()->ActivateCallbackBusy(&info);
}

sfiResult CommunicationsService::cancelCallbacks(std::string const& lineURI, int callID, std::string const& target,
                                                 sfiCancelCallBackType type, bool displayOutcome)
{
    SERVICE_TRACE("cancelCallbacks (%d)", callID);
    sfiCallInfo info = callInfo(lineURI, callID);
    std::string party = target;
    SfiGuard const hold;
    return CSfi::GetInstance()->CancelCallbacks(&info, party, type, displayOutcome);
}

sfiResult CommunicationsService::consultationCall(std::string const& lineURI, int callID, char const* destination)
{
    SERVICE_TRACE("consultationCall (consulationCallID = %d, Destination = %s)", callID, shown(destination));
    std::string const number(destination);
    bool const flag = numberFlag(number);
    sfiCallInfo info = callInfo(lineURI, callID);
    return CSfi::GetInstance()->CallMake(&info, number, kCallMode, kCallOption, false, false, false, flag);
}

sfiResult CommunicationsService::refuseCall(std::string const& lineURI, int callID, sfiRefuseCall reason)
{
    SERVICE_TRACE("refuseCall (%d,%d)", callID, reason);
    sfiCallInfo info = callInfo(lineURI, callID);
    SfiGuard const hold;
    return CSfi::GetInstance()->CallRefuse(&info, reason);
}

sfiResult CommunicationsService::directedPickupCall(std::string const& lineURI, int callID,
                                                    std::string const& callToBePickedUp, bool BLFPickup)
{
    SERVICE_TRACE("directedPickupCall (lineURI=%s, callID = %d, callToBePickedUp=%s, BLFPickup=%d)", lineURI.c_str(),
                  callID, callToBePickedUp.c_str(), BLFPickup);
    if (BLFPickup && !checkBCAForNextAppearanceReservation(lineURI)) {
        SERVICE_FAILURE("directedPickupCall - BLF pickup - cannot reserve next appearance for line(%s)",
                        lineURI.c_str());
        return sfiFailure;
    }
    sfiCallInfo info = callInfo(lineURI, callID);
    if (!BLFPickup && sfiGetServerType() != sfiServerWithPickup) {
        return pickUpByNumber(info, callToBePickedUp);
    }
    std::string target = callToBePickedUp;
    static_cast<void>(numberFlag(target));
    SfiGuard const hold;
    return BLFPickup ? TeamServiceFeatures::Instance()->BLFPickupRequest(&info, target)
                     : DirectedPickupHandler::Instance()->directedPickupRequest(&info, target);
}

sfiResult CommunicationsService::pickUpByNumber(sfiCallInfo& info, std::string const& callToBePickedUp)
{
    if (callToBePickedUp.empty()) {
        return sfiFailure;
    }
    std::string uri;
    sfiGetDirectedPickupUri(uri);
    if (uri.empty()) {
        return sfiFailure;
    }
    uri += callToBePickedUp;
    return CSfi::GetInstance()->CallMake(&info, uri, kCallMode, kCallOption, false, false, false, false);
}

sfiResult CommunicationsService::groupPickupCall(std::string const& lineURI, int callID)
{
    SERVICE_TRACE("groupPickupCall (callID = %d)", callID);
    sfiCallInfo info = callInfo(lineURI, callID);
    SfiGuard const hold;
    return CSfi::GetInstance()->GroupPickup(&info);
}

sfiResult CommunicationsService::generateDigits(std::string const& lineURI, int callID, char const* digits)
{
    SERVICE_TRACE("generateDigits activeCallID=%d,digits=%s", callID, shown(digits));
    sfiCallInfo info = callInfo(lineURI, callID);
    SfiGuard const hold;
    return CSfi::GetInstance()->GenerateDigits(&info, digits);
}

sfiResult CommunicationsService::conferenceCall(std::string const& lineURI, int heldCallID, int activeCallID,
                                                sfiFeature feature)
{
    SERVICE_TRACE("conferenceCall (Device: %s - %d,%d)", lineURI.c_str(), heldCallID, activeCallID);
    sfiCallInfo info = callInfo(lineURI, activeCallID);
    SfiGuard const hold;
    return CSfi::GetInstance()->CallFeature(&info, feature, nullptr, kFeatureMode);
}

bool CommunicationsService::getManualHoldIndication(std::string const& lineURI, int callID)
{
    SERVICE_TRACE("getManualHoldIndication");
    sfiCallInfo info = callInfo(lineURI, callID);
    SfiGuard const hold;
    return CSfi::GetInstance()->GetManualHoldIndication(&info) != 0;
}

sfiResult CommunicationsService::alternateCalls(std::string const& lineURI)
{
    SERVICE_TRACE("alternateCalls");
    sfiCallInfo info = callInfo(lineURI, 0);
    SfiGuard const hold;
    return CSfi::GetInstance()->CallFeature(&info, sfiFeatureAlternate, nullptr, kFeatureMode);
}

sfiResult CommunicationsService::makeSecurityChangeReinvite(std::string const& lineURI, int callID, bool secure)
{
    // Here the lock is taken before the record is built.
    SfiGuard const hold;
    sfiCallInfo info = callInfo(lineURI, callID);
    return CSfi::GetInstance()->SecurityChangeReinvite(&info, secure);
}
