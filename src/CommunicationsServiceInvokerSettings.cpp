// The requests that set and query settings and states. Outputs that the service does not set are answered as zero or
// empty.
#include "CommunicationsServiceInvoker.h"

#include <cstddef>
#include <iterator>
#include <vector>

#include "CommunicationsServiceRequests.h"
#include "Elements.h"
#include "RequestText.h"
#include "TaggedText.h"

using elements::element;
using elements::join;

namespace {
std::string withTruth(std::string const& resultWord, bool value)
{
    return resultWord + (value ? ",true" : ",false");
}

// Everything after the line's closing tag. Without a line the first six characters are cut off instead: npos plus the
// length of the tag wraps around to six, and servers have always received it that way.
std::string bodyAfterLine(RequestText const& request)
{
    constexpr std::string_view kLineEnd = "</Line>";
    std::string body(request.whole());
    body.erase(0, body.find(kLineEnd) + kLineEnd.size());
    return body;
}
}  // namespace

std::string CommunicationsServiceInvoker::setServiceState(CommunicationsServiceIfc* service, RequestText const& request)
{
    sfiServiceState const state = tagged_text::serviceStateBetween("<state>", request.whole(), "</state>");
    return genterateReturnString(service->setServiceState(state));
}

std::string CommunicationsServiceInvoker::getServiceState(CommunicationsServiceIfc* service,
                                                          RequestText const& /*request*/)
{
    auto state = sfiServiceInService;
    std::string answer = genterateReturnString(service->getServiceState(state));
    auto const index = static_cast<std::size_t>(state);
    if (index < std::size(kRequestServiceStates)) {
        answer.append(",").append(kRequestServiceStates[index]);
    }
    return answer;
}

std::string CommunicationsServiceInvoker::setDoNotDisturb(CommunicationsServiceIfc* service, RequestText const& request)
{
    std::string const line = request.text("Line");
    bool const on = request.flag("doNotDisturbOn");
    return genterateReturnString(service->setDoNotDisturb(line, on));
}

// Names a device, where other requests name a line.
std::string CommunicationsServiceInvoker::getDoNotDisturb(CommunicationsServiceIfc* service, RequestText const& request)
{
    std::string const device = request.text("deviceID");
    bool on = false;
    sfiResult const result = service->getDoNotDisturb(device, on);
    return withTruth(genterateReturnString(result), on);
}

std::string CommunicationsServiceInvoker::setAgentState(CommunicationsServiceIfc* service, RequestText const& request)
{
    std::string const line = request.text("Line");
    std::string const agentState = request.text("agentState");
    return genterateReturnString(service->setAgentState(line, agentState));
}

std::string CommunicationsServiceInvoker::GetDevices(CommunicationsServiceIfc* service, RequestText const& /*request*/)
{
    std::vector<std::string> devices;
    if (service->getDevices(devices) != sfiSuccess) {
        return genterateReturnString(sfiFailure);
    }
    std::string answer;
    for (std::string const& device : devices) {
        answer += device;
    }
    return answer;
}

std::string CommunicationsServiceInvoker::SetMicrophoneMuteRequest(CommunicationsServiceIfc* service,
                                                                   RequestText const& request)
{
    bool const mute = request.flag("Status");
    return genterateReturnString(service->setMicrophoneMute(mute));
}

std::string CommunicationsServiceInvoker::GetMicrophoneMuteRequest(CommunicationsServiceIfc* service,
                                                                   RequestText const& /*request*/)
{
    bool mute = false;
    sfiResult const result = service->getMicrophoneMute(mute);
    return withTruth(genterateReturnString(result), mute);
}

std::string CommunicationsServiceInvoker::Activate(CommunicationsServiceIfc* service, RequestText const& /*request*/)
{
    return genterateReturnString(service->activate());
}

std::string CommunicationsServiceInvoker::Deactivate(CommunicationsServiceIfc* service, RequestText const& request)
{
    bool const allowAutoActivate = request.flag("AllowAutoActivate");
    return genterateReturnString(service->deactivate(allowAutoActivate));
}

std::string CommunicationsServiceInvoker::SendCSTARequest(CommunicationsServiceIfc* service, RequestText const& request)
{
    std::string const line = request.text("Line");
    std::string const body = bodyAfterLine(request);
    return genterateReturnString(service->SendCSTARequest(line, body));
}

void CommunicationsServiceInvoker::InitializeOrFinalizeServerFeatures(CommunicationsServiceIfc* service,
                                                                      RequestText const& request)
{
    std::string const line = request.text("Line");
    bool const initialize = request.flag("initialize");
    service->InitializeOrFinalizeServerFeatures(line, initialize);
}

std::string CommunicationsServiceInvoker::getMessageWaitingIndicator(CommunicationsServiceIfc* service,
                                                                     RequestText const& /*request*/)
{
    sfiMessageWaitingRecord record{};
    std::string voiceMailNumber;
    sfiResult const result = service->getMessageWaitingIndicator(
        record.type, record.newMessages, record.oldMessages, record.newUrgentMessages, record.oldUrgentMessages,
        record.returnType, record.availableInfo, record.messagesWaiting, voiceMailNumber);
    std::string const word = genterateReturnString(result);
    return join(element("Type", record.type), element("newMsgs", record.newMessages),
                element("oldMsgs", record.oldMessages), element("newUrgMsgs", record.newUrgentMessages),
                element("oldUrgMsgs", record.oldUrgentMessages), element("return_type", record.returnType),
                element("available_info", record.availableInfo), element("messages_waiting", record.messagesWaiting),
                element("voiceMailNumber", voiceMailNumber), element("func_return_val", word));
}

std::string CommunicationsServiceInvoker::setAssociatedCalls(CommunicationsServiceIfc* service,
                                                             RequestText const& request)
{
    bool const associated = request.flag("associated");
    return genterateReturnString(service->setAssociatedCalls(associated));
}

std::string CommunicationsServiceInvoker::setLampMode(CommunicationsServiceIfc* service, RequestText const& request)
{
    std::string const line = request.text("Line");
    std::string const lampId = request.text("lampId");
    int const lampMode = request.integer("lampMode");
    return genterateReturnString(service->setLampMode(line, lampId, lampMode));
}

std::string CommunicationsServiceInvoker::setForwardingConfiguration(CommunicationsServiceIfc* service,
                                                                     RequestText const& request)
{
    std::string const line = request.text("Line");
    auto const type = static_cast<sfiForwardingType>(request.integer("fwType"));
    bool const status = request.flag("status");
    std::string const uri = request.text("uri");
    int const cfnrRingCount = request.integer("cfnrRingCount");
    bool const forceQORAUpdate = request.flag("forceQORAUpdate");
    return genterateReturnString(
        service->setForwardingConfiguration(line, type, status, uri, cfnrRingCount, forceQORAUpdate));
}

std::string CommunicationsServiceInvoker::getForwardingConfiguration(CommunicationsServiceIfc* service,
                                                                     RequestText const& request)
{
    auto const type = static_cast<sfiForwardingType>(request.integer("fwType"));
    bool status = false;
    std::string uri;
    int ringCount = 0;
    std::string const word = genterateReturnString(service->getForwardingConfiguration(type, status, uri, ringCount));
    return join(element("sfiResult", word), element("status", status), element("uri", uri),
                element("cfnrRingCount", ringCount));
}

void CommunicationsServiceInvoker::setIsInServiceInitiatedState(CommunicationsServiceIfc* service,
                                                                RequestText const& request)
{
    std::string const line = request.text("Line");
    bool const initiated = request.word("IsInServiceInitiatedState");
    service->setIsInServiceInitiatedState(line, initiated);
}

std::string CommunicationsServiceInvoker::sendUACSTAServerMessage(CommunicationsServiceIfc* service,
                                                                  RequestText const& request)
{
    std::string line = request.text("Line");
    std::string body = bodyAfterLine(request);
    service->sendUACSTAServerMessage(line, body);
    return "UACSTA message is sent.";
}
