#include "telephone/calls/ConferenceDocument.h"

#include <sstream>

#include <pugixml.hpp>

namespace telephone {

namespace {

void addUser(pugi::xml_node users, std::string const& uri, std::string const& name, char const* status)
{
    pugi::xml_node user = users.append_child("user");
    user.append_attribute("entity") = uri.c_str();
    user.append_attribute("state") = "full";
    if (!name.empty()) {
        user.append_child("display-text").text() = name.c_str();
    }
    pugi::xml_node endpoint = user.append_child("endpoint");
    endpoint.append_attribute("entity") = uri.c_str();
    endpoint.append_child("status").text() = status;
}

}  // namespace

std::string formatConference(std::string const& focus, int version, std::vector<CallSnapshot> const& calls)
{
    pugi::xml_document document;
    pugi::xml_node info = document.append_child("conference-info");
    info.append_attribute("xmlns") = "urn:ietf:params:xml:ns:conference-info";
    info.append_attribute("entity") = focus.c_str();
    info.append_attribute("state") = "full";
    info.append_attribute("version") = version;
    pugi::xml_node state = info.append_child("conference-state");
    state.append_child("user-count").text() = static_cast<unsigned>(calls.size() + 1);
    state.append_child("active").text() = calls.size() > 1;
    pugi::xml_node users = info.append_child("users");
    addUser(users, focus, {}, "connected");
    for (CallSnapshot const& call : calls) {
        addUser(users, call.remoteURI, call.remoteName, call.held || call.heldByRemote ? "on-hold" : "connected");
    }
    std::ostringstream text;
    document.save(text, "", pugi::format_raw | pugi::format_no_declaration);
    return text.str();
}

}  // namespace telephone
