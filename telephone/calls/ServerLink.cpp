#include "telephone/calls/ServerLink.h"

#include <mutex>
#include <sstream>
#include <utility>

#include <pugixml.hpp>

#include "CommunicationsServiceEventIfc.h"
#include "telephone/calls/LogComponent.h"
#include "telephone/framework/Log.h"
#include "telephone/sip/EventLoop.h"

namespace telephone {

namespace {

constexpr char const* kCstaNamespace = "http://www.ecma-international.org/standards/ecma-323/csta/ed5";

std::string textOf(pugi::xml_document const& document)
{
    std::ostringstream text;
    document.save(text, "", pugi::format_raw);
    return text.str();
}

// The start and end of the server's reports about a device (ECMA-323).
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

ServerLink::ServerLink(sip::UserAgent& agent, LineDirectory const& lines, Availability const& availability,
                       EventPoster const& post)
    : agent_(agent)
    , lines_(lines)
    , availability_(availability)
    , post_(post)
{}

Outcome<LineAccount> ServerLink::activeLine(std::string const& lineURI) const
{
    if (auto const active = availability_.whenActive(); !active) {
        return tl::unexpected(active.error());
    }
    return lines_.accountNamed(lineURI);
}

Outcome<> ServerLink::request(LineAccount const& line, std::string const& body, sip::ResponseHandler done)
{
    if (!line.registers) {
        return refuse(RefusalKind::kNotSupported,
                      fmt::format("line {} has no server to send a CSTA request to", line.lineURI));
    }
    std::string const server = line.account.registrar.empty() ? "sip:" + line.account.domain : line.account.registrar;
    return agent_.request(line.account, "INFO", server, {}, {sip::kCstaType, body}, std::move(done));
}

Outcome<> ServerLink::send(std::string const& lineURI, std::string const& body)
{
    std::lock_guard const guard(agent_.loop());
    if (body.empty()) {
        return refuse(RefusalKind::kBadInput, "the CSTA request has no body");
    }
    return activeLine(lineURI).and_then([this, &body](LineAccount const& line) {
        return request(line, body, [this, lineURI = line.lineURI](sip::Response const& response) {
            bool const success = response.status >= 200 && response.status < 300;
            if (!success) {
                log(kLogWarning, kComponent, "line {}: the server refuses a CSTA request: {} {}", lineURI,
                    response.status, response.reason);
            }
            post_([lineURI, success, body = response.body](CommunicationsServiceEventIfc& event) {
                event.b2buaCSTAResponse(lineURI, success, body);
            });
        });
    });
}

Outcome<> ServerLink::requestFeatures(std::string const& lineURI, bool initialize)
{
    std::lock_guard const guard(agent_.loop());
    return activeLine(lineURI).and_then([this, initialize](LineAccount const& line) {
        auto const done = [this, lineURI = line.lineURI, initialize](sip::Response const& response) {
            bool const success = response.status >= 200 && response.status < 300;
            std::string const status = !success ? "failed" : initialize ? "initialized" : "finalized";
            log(kLogInfo, kComponent, "line {}: server features {}", lineURI, status);
            post_([lineURI, status](CommunicationsServiceEventIfc& event) {
                event.serverFeatureStatusChange(lineURI, status);
            });
        };
        return request(line, monitorDocument(line.account.addressOfRecord(), initialize), done);
    });
}

void ServerLink::tellAgentState(std::string const& lineURI, std::string const& state)
{
    std::lock_guard const guard(agent_.loop());
    auto const line = activeLine(lineURI);
    if (!line || !line->registers) {
        return;
    }
    auto const done = [lineURI = line->lineURI, state](sip::Response const& response) {
        log(kLogInfo, kComponent, "line {}: agent state {} sent to the server: {} {}", lineURI, state, response.status,
            response.reason);
    };
    if (auto const sent = request(*line, agentDocument(line->account.addressOfRecord(), state), done); !sent) {
        log(kLogWarning, kComponent, "line {}: agent state {} not sent: {}", line->lineURI, state, sent.error().reason);
    }
}

bool ServerLink::receive(std::string const& lineURI, sip::Content const& content)
{
    std::string const type = content.type.substr(0, content.type.find_first_of("; "));
    if (!sip::equalsIgnoringCase(type, sip::kCstaType)) {
        return false;
    }
    post_([lineURI, body = content.body](CommunicationsServiceEventIfc& event) {
        event.b2buaCSTAEventOrRequest(lineURI, body);
    });
    return true;
}

}  // namespace telephone
