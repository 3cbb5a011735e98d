#include "telephone/calls/ServerLink.h"

#include <sstream>
#include <utility>

#include <pugixml.hpp>

#include "CommunicationsServiceEventIfc.h"

namespace telephone {

namespace {

constexpr char const* kCstaType = "application/csta+xml";
constexpr char const* kCstaNamespace = "http://www.ecma-international.org/standards/ecma-323/csta/ed5";

std::string textOf(pugi::xml_document const& document)
{
    std::ostringstream text;
    document.save(text, "", pugi::format_raw);
    return text.str();
}

// ECMA-323: the start and end of the server's reports about a device.
std::string monitorDocument(std::string const& device, bool start)
{
    pugi::xml_document document;
    pugi::xml_node root = document.append_child(start ? "MonitorStart" : "MonitorStop");
    root.append_attribute("xmlns") = kCstaNamespace;
    if (start) {
        root.append_child("monitorObject").append_child("deviceObject").text() = device.c_str();
    } else {
        root.append_child("monitorCrossRefID").text() = device.c_str();
    }
    return textOf(document);
}

std::string agentDocument(std::string const& device, std::string const& state)
{
    pugi::xml_document document;
    pugi::xml_node root = document.append_child("SetAgentState");
    root.append_attribute("xmlns") = kCstaNamespace;
    root.append_child("device").text() = device.c_str();
    root.append_child("requestedAgentState").text() = state.c_str();
    return textOf(document);
}

}  // namespace

ServerLink::ServerLink(CallHost& host, sip::UserAgent& agent)
    : host_(host)
    , agent_(agent)
{}

bool ServerLink::request(LineAccount const& line, std::string const& body, sip::ResponseHandler done)
{
    if (!line.registers) {
        host_.log(sip::LogLevel::kWarning, "line " + line.lineURI + " has no server to send a CSTA request to");
        return false;
    }
    const std::string server = line.account.registrar.empty() ? "sip:" + line.account.domain : line.account.registrar;
    auto const sending = agent_.request(line.account, "INFO", server, {}, {kCstaType, body}, std::move(done));
    if (!sending) {
        host_.log(sip::LogLevel::kWarning, "line " + line.lineURI + ": no CSTA request: " + sending.error().reason);
    }
    return sending.has_value();
}

sfiResult ServerLink::send(LineAccount const& line, std::string const& body)
{
    auto const done = [this, lineURI = line.lineURI](sip::Response const& response) {
        const bool success = response.status >= 200 && response.status < 300;
        if (!success) {
            host_.log(sip::LogLevel::kWarning, "line " + lineURI + ": the server refuses a CSTA request: " +
                                                   std::to_string(response.status) + ' ' + response.reason);
        }
        host_.post([lineURI, success, body = response.body](CommunicationsServiceEventIfc& event) {
            event.b2buaCSTAResponse(lineURI, success, body);
        });
    };
    return request(line, body, done) ? sfiSuccess : sfiFailure;
}

sfiResult ServerLink::serverFeatures(LineAccount const& line, bool initialize)
{
    auto const done = [this, lineURI = line.lineURI, initialize](sip::Response const& response) {
        const bool success = response.status >= 200 && response.status < 300;
        const std::string status = !success ? "failed" : initialize ? "initialized" : "finalized";
        host_.log(sip::LogLevel::kInfo, "line " + lineURI + ": server features " + status);
        host_.post([lineURI, status](CommunicationsServiceEventIfc& event) {
            event.serverFeatureStatusChange(lineURI, status);
        });
    };
    const std::string body = monitorDocument(line.account.addressOfRecord(), initialize);
    return request(line, body, done) ? sfiSuccess : sfiFailure;
}

void ServerLink::tellAgentState(LineAccount const& line, std::string const& state)
{
    if (!line.registers) {
        return;
    }
    auto const done = [this, lineURI = line.lineURI, state](sip::Response const& response) {
        host_.log(sip::LogLevel::kInfo, "line " + lineURI + ": agent state " + state + " told to the server: " +
                                            std::to_string(response.status) + ' ' + response.reason);
    };
    request(line, agentDocument(line.account.addressOfRecord(), state), done);
}

bool ServerLink::receive(std::string const& lineURI, sip::Content const& content)
{
    const std::string type = content.type.substr(0, content.type.find_first_of("; "));
    if (!sip::equalsIgnoringCase(type, kCstaType)) {
        return false;
    }
    host_.post([lineURI, body = content.body](CommunicationsServiceEventIfc& event) {
        event.b2buaCSTAEventOrRequest(lineURI, body);
    });
    return true;
}

}  // namespace telephone
