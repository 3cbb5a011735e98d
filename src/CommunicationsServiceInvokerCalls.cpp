// The requests that act on calls. A missing number is passed on as -1 and a missing flag as true: the service decides.
#include "CommunicationsServiceInvoker.h"

#include "RequestText.h"

std::string CommunicationsServiceInvoker::OutgoingCallMakeRequest(CommunicationsServiceIfc* service,
                                                                  RequestText const& request)
{
    std::string const line = request.text("Line");
    int const callID = request.integer("CallID");
    std::string const destination = request.text("Destination");
    bool const dssDirectCall = request.flag("DSSDirectCall");
    bool const bridgeCall = request.flag("BridgeCall");
    bool const callCompletionCall = request.flag("CallCompletionCall");
    return genterateReturnString(
        service->outgoingCallMake(line, callID, destination.c_str(), dssDirectCall, bridgeCall, callCompletionCall));
}

std::string CommunicationsServiceInvoker::AcceptCallRequest(CommunicationsServiceIfc* service,
                                                            RequestText const& request)
{
    std::string const line = request.text("Line");
    int const callID = request.integer("CallID");
    bool const autoAnswer = request.flag("AutoAnswer");
    return genterateReturnString(service->acceptCall(line, callID, autoAnswer));
}

std::string CommunicationsServiceInvoker::AnswerCallRequest(CommunicationsServiceIfc* service,
                                                            RequestText const& request)
{
    std::string const line = request.text("Line");
    int const callID = request.integer("CallID");
    return genterateReturnString(service->answerCall(line, callID));
}

std::string CommunicationsServiceInvoker::DeflectCallRequest(CommunicationsServiceIfc* service,
                                                             RequestText const& request)
{
    std::string const line = request.text("Line");
    int const callID = request.integer("CallID");
    std::string const destination = request.text("Destination");
    return genterateReturnString(service->deflectCall(line, callID, destination.c_str()));
}

std::string CommunicationsServiceInvoker::HoldCallRequest(CommunicationsServiceIfc* service, RequestText const& request)
{
    std::string const line = request.text("Line");
    int const callID = request.integer("CallID");
    auto const reason = static_cast<sfiFeature>(request.integer("HoldCallReason"));
    bool const manual = request.flag("Manual");
    return genterateReturnString(service->holdCall(line, callID, reason, manual));
}

std::string CommunicationsServiceInvoker::RetrieveCallRequest(CommunicationsServiceIfc* service,
                                                              RequestText const& request)
{
    std::string const line = request.text("Line");
    int const callID = request.integer("CallID");
    return genterateReturnString(service->retrieveCall(line, callID));
}

std::string CommunicationsServiceInvoker::ConsultationCallRequest(CommunicationsServiceIfc* service,
                                                                  RequestText const& request)
{
    std::string const line = request.text("Line");
    int const callID = request.integer("CallID");
    std::string const destination = request.text("Destination");
    return genterateReturnString(service->consultationCall(line, callID, destination.c_str()));
}

std::string CommunicationsServiceInvoker::AttendedTransferCallRequest(CommunicationsServiceIfc* service,
                                                                      RequestText const& request)
{
    std::string const line = request.text("Line");
    int const activeCall = request.integer("activeCall");
    int const heldCall = request.integer("heldCall");
    return genterateReturnString(service->attendedTransferCall(line, activeCall, heldCall));
}

std::string CommunicationsServiceInvoker::BlindTransferCallRequest(CommunicationsServiceIfc* service,
                                                                   RequestText const& request)
{
    std::string const line = request.text("Line");
    int const callID = request.integer("CallID");
    std::string const destination = request.text("Destination");
    return genterateReturnString(service->blindTransferCall(line, callID, destination.c_str()));
}

std::string CommunicationsServiceInvoker::RefuseCallRequest(CommunicationsServiceIfc* service,
                                                            RequestText const& request)
{
    std::string const line = request.text("Line");
    int const callID = request.integer("CallID");
    auto const reason = static_cast<sfiRefuseCall>(request.integer("RefuseCallReason"));
    return genterateReturnString(service->refuseCall(line, callID, reason));
}

std::string CommunicationsServiceInvoker::CallClearRequest(CommunicationsServiceIfc* service,
                                                           RequestText const& request)
{
    std::string const line = request.text("Line");
    int const callID = request.integer("CallID");
    auto const cause = static_cast<CSTAEventCause>(request.integer("Cause"));
    return genterateReturnString(service->callClear(line, callID, cause));
}

std::string CommunicationsServiceInvoker::ActivateCallbackRinging(CommunicationsServiceIfc* service,
                                                                  RequestText const& request)
{
    std::string const line = request.text("Line");
    int const callID = request.integer("CallID");
    return genterateReturnString(service->activateCallbackRinging(line, callID));
}

std::string CommunicationsServiceInvoker::ActivateCallbackBusy(CommunicationsServiceIfc* service,
                                                               RequestText const& request)
{
    std::string const line = request.text("Line");
    int const callID = request.integer("CallID");
    return genterateReturnString(service->activateCallbackBusy(line, callID));
}

std::string CommunicationsServiceInvoker::CancelCallbacks(CommunicationsServiceIfc* service, RequestText const& request)
{
    std::string const line = request.text("Line");
    int const callID = request.integer("CallID");
    std::string const uri = request.text("URI");
    auto const type = static_cast<sfiCancelCallBackType>(request.integer("CancelCallBackType"));
    bool const displayOutcome = request.flag("DisplayOutcomeCallUI");
    return genterateReturnString(service->cancelCallbacks(line, callID, uri, type, displayOutcome));
}

std::string CommunicationsServiceInvoker::DirectedPickupCallRequest(CommunicationsServiceIfc* service,
                                                                    RequestText const& request)
{
    std::string const line = request.text("Line");
    int const callID = request.integer("CallID");
    std::string const callToBePickedUp = request.text("CallToBePickedUp");
    bool const blfPickup = request.flag("BLFPickup");
    return genterateReturnString(service->directedPickupCall(line, callID, callToBePickedUp, blfPickup));
}

std::string CommunicationsServiceInvoker::GroupPickupCallRequest(CommunicationsServiceIfc* service,
                                                                 RequestText const& request)
{
    std::string const line = request.text("Line");
    int const callID = request.integer("CallID");
    return genterateReturnString(service->groupPickupCall(line, callID));
}

std::string CommunicationsServiceInvoker::ConferenceCallRequest(CommunicationsServiceIfc* service,
                                                                RequestText const& request)
{
    std::string const line = request.text("Line");
    int const activeCall = request.integer("activeCall");
    int const heldCall = request.integer("heldCall");
    auto const feature = static_cast<sfiFeature>(request.integer("feature"));
    return genterateReturnString(service->conferenceCall(line, activeCall, heldCall, feature));
}

std::string CommunicationsServiceInvoker::GenerateDigits(CommunicationsServiceIfc* service, RequestText const& request)
{
    std::string const line = request.text("Line");
    int const activeCall = request.integer("activeCall");
    std::string const digits = request.text("digits");
    return genterateReturnString(service->generateDigits(line, activeCall, digits.c_str()));
}

std::string CommunicationsServiceInvoker::GetManualHoldIndication(CommunicationsServiceIfc* service,
                                                                  RequestText const& request)
{
    std::string const line = request.text("Line");
    int const callID = request.integer("CallID");
    return service->getManualHoldIndication(line, callID) ? "true" : "false";
}

std::string CommunicationsServiceInvoker::AlternateCallsRequest(CommunicationsServiceIfc* service,
                                                                RequestText const& request)
{
    std::string const line = request.text("Line");
    return genterateReturnString(service->alternateCalls(line));
}

std::string CommunicationsServiceInvoker::makeSecurityChangeReinvite(CommunicationsServiceIfc* service,
                                                                     RequestText const& request)
{
    std::string const line = request.text("Line");
    int const callID = request.integer("CallID");
    bool const force = request.flag("forceFlag");
    return genterateReturnString(service->makeSecurityChangeReinvite(line, callID, force));
}

void CommunicationsServiceInvoker::callbackDOFeatureCallID(CommunicationsServiceIfc* service,
                                                           RequestText const& request)
{
    std::string const callID = request.text("CallID");
    int const instanceID = request.integer("instanceId");
    service->callbackDOFeatureCallID(callID, instanceID);
}
