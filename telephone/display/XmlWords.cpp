#include "telephone/display/XmlWords.h"

#include <vector>

#include <pugixml.hpp>
#include <spdlog/fmt/fmt.h>
#include <spdlog/fmt/ranges.h>

#include "telephone/display/Parties.h"
#include "telephone/display/SafeText.h"

namespace telephone {

namespace {

std::string sizeWords(std::string_view body)
{
    return fmt::format("{} byte{}", body.size(), body.size() == 1 ? "" : "s");
}

// Without the prefix of a name space.
std::string_view localName(pugi::xml_node node)
{
    std::string_view const name = node.name();
    return name.substr(name.find(':') + 1);
}

pugi::xml_node childOf(pugi::xml_node node, std::string_view name)
{
    return node.find_child([name](pugi::xml_node child) { return localName(child) == name; });
}

std::string userWords(pugi::xml_node user, DisplayOptions const& options)
{
    pugi::xml_node const status = childOf(childOf(user, "endpoint"), "status");
    bool const isOnHold = std::string_view(status.child_value()) == "on-hold";
    return partyText(user.attribute("entity").value(), childOf(user, "display-text").child_value(), options) +
           (isOnHold ? " (on hold)" : "");
}

}  // namespace

std::string bodyWords(std::string_view body)
{
    pugi::xml_document document;
    document.load_buffer(body.data(), body.size());
    pugi::xml_node const root = document.document_element();
    return root ? safeWord(root.name()) + ", " + sizeWords(body) : sizeWords(body);
}

std::string conferenceWords(std::string_view document, DisplayOptions const& options)
{
    pugi::xml_document parsed;
    parsed.load_buffer(document.data(), document.size());
    std::vector<std::string> parties;
    for (pugi::xml_node const user : childOf(parsed.document_element(), "users")) {
        if (localName(user) == "user") {
            parties.push_back(userWords(user, options));
        }
    }
    if (parties.empty()) {
        return "document names nobody, " + sizeWords(document);
    }
    return fmt::format("{} part{}: {}", parties.size(), parties.size() == 1 ? "y" : "ies", fmt::join(parties, ", "));
}

}  // namespace telephone
