// The way into the service for text requests: reads the request's method and parameters, calls one operation of
// CommunicationsServiceIfc and answers with a short text. Notices of the signalling component ("SigEvent:...") pass
// straight through to the service.
//
// The framework creates it with createCommunicationsServiceInvoker, owns it, binds it with initInvoker and then passes
// it requests from any of its threads, several at once: it keeps nothing between requests and takes no lock.
#pragma once

#include <string>
#include <string_view>

#include "CommunicationsServiceIfc.h"
#include "platform/framework/Invoker.h"

class RequestText;
class RequestTable;

class CommunicationsServiceInvoker : public Invoker
{
public:
    // Handles one request: sends the answer, if there is one, to `response` and then finishes it. Without a service
    // every request fails; without a response nothing is answered.
    void handleMessage(Executable* service, char const* message, int length, InvokerResponse* response) override;
    // Keeps the context, in which Subscribe finds the application's event proxy.
    void initInvoker(FrameworkContext* context) override;

    // The text between the first opening tag and the first closing tag after it; empty when either is missing.
    static std::string getParamAsString(std::string const& opening, std::string const& message,
                                        std::string const& closing);
    // The same as a decimal number as strtol reads it, held to the range of 32 bits; -1 when either tag is missing.
    static int getParamAsLong(std::string const& opening, std::string const& message, std::string const& closing);
    // The same as a service state; sfiServiceOutOfService for any other word. The closing tag may be anywhere: when it
    // is missing or comes first, the value runs to the end of the message.
    static sfiServiceState getParamAsServiceState(std::string const& opening, std::string const& message,
                                                  std::string const& closing);
    // The answer word of a result.
    static std::string genterateReturnString(sfiResult result);

private:
    friend class RequestTable;

    void passSignallingEvent(CommunicationsServiceIfc* service, std::string const& notice);
    void handleRequest(CommunicationsServiceIfc* service, char const* message, std::string_view counted,
                       InvokerResponse* response);

    // The handlers, in the order of the request table. Each returns the answer; void: the request has none.
    std::string OutgoingCallMakeRequest(CommunicationsServiceIfc* service, RequestText const& request);
    std::string AcceptCallRequest(CommunicationsServiceIfc* service, RequestText const& request);
    std::string AnswerCallRequest(CommunicationsServiceIfc* service, RequestText const& request);
    std::string DeflectCallRequest(CommunicationsServiceIfc* service, RequestText const& request);
    std::string HoldCallRequest(CommunicationsServiceIfc* service, RequestText const& request);
    std::string RetrieveCallRequest(CommunicationsServiceIfc* service, RequestText const& request);
    std::string ConsultationCallRequest(CommunicationsServiceIfc* service, RequestText const& request);
    std::string AttendedTransferCallRequest(CommunicationsServiceIfc* service, RequestText const& request);
    std::string BlindTransferCallRequest(CommunicationsServiceIfc* service, RequestText const& request);
    std::string RefuseCallRequest(CommunicationsServiceIfc* service, RequestText const& request);
    std::string CallClearRequest(CommunicationsServiceIfc* service, RequestText const& request);
    std::string SystemStatus(CommunicationsServiceIfc* service, RequestText const& request, InvokerResponse* response);
    std::string Subscribe(CommunicationsServiceIfc* service, RequestText const& request, InvokerResponse* response);
    std::string ActivateCallbackRinging(CommunicationsServiceIfc* service, RequestText const& request);
    std::string ActivateCallbackBusy(CommunicationsServiceIfc* service, RequestText const& request);
    std::string CancelCallbacks(CommunicationsServiceIfc* service, RequestText const& request);
    std::string DirectedPickupCallRequest(CommunicationsServiceIfc* service, RequestText const& request);
    std::string GroupPickupCallRequest(CommunicationsServiceIfc* service, RequestText const& request);
    std::string ConferenceCallRequest(CommunicationsServiceIfc* service, RequestText const& request);
    std::string setServiceState(CommunicationsServiceIfc* service, RequestText const& request);
    std::string getServiceState(CommunicationsServiceIfc* service, RequestText const& request);
    std::string setDoNotDisturb(CommunicationsServiceIfc* service, RequestText const& request);
    std::string getDoNotDisturb(CommunicationsServiceIfc* service, RequestText const& request);
    std::string setAgentState(CommunicationsServiceIfc* service, RequestText const& request);
    std::string GenerateDigits(CommunicationsServiceIfc* service, RequestText const& request);
    std::string GetDevices(CommunicationsServiceIfc* service, RequestText const& request);
    std::string SetMicrophoneMuteRequest(CommunicationsServiceIfc* service, RequestText const& request);
    std::string GetMicrophoneMuteRequest(CommunicationsServiceIfc* service, RequestText const& request);
    std::string GetManualHoldIndication(CommunicationsServiceIfc* service, RequestText const& request);
    std::string Activate(CommunicationsServiceIfc* service, RequestText const& request);
    std::string Deactivate(CommunicationsServiceIfc* service, RequestText const& request);
    std::string SendCSTARequest(CommunicationsServiceIfc* service, RequestText const& request);
    void InitializeOrFinalizeServerFeatures(CommunicationsServiceIfc* service, RequestText const& request);
    std::string AlternateCallsRequest(CommunicationsServiceIfc* service, RequestText const& request);
    std::string getMessageWaitingIndicator(CommunicationsServiceIfc* service, RequestText const& request);
    std::string setAssociatedCalls(CommunicationsServiceIfc* service, RequestText const& request);
    std::string setLampMode(CommunicationsServiceIfc* service, RequestText const& request);
    std::string makeSecurityChangeReinvite(CommunicationsServiceIfc* service, RequestText const& request);
    std::string setForwardingConfiguration(CommunicationsServiceIfc* service, RequestText const& request);
    std::string getForwardingConfiguration(CommunicationsServiceIfc* service, RequestText const& request);
    void setIsInServiceInitiatedState(CommunicationsServiceIfc* service, RequestText const& request);
    std::string sendUACSTAServerMessage(CommunicationsServiceIfc* service, RequestText const& request);
    void callbackDOFeatureCallID(CommunicationsServiceIfc* service, RequestText const& request);

    FrameworkContext* context_ = nullptr;  // not owned
};
