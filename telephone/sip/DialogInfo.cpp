#include "telephone/sip/DialogInfo.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <sstream>

#include <pugixml.hpp>

#include "telephone/sip/WireText.h"

namespace telephone::sip {

namespace {

struct StateName
{
    DialogState state;
    char const* name;
};

constexpr auto kStates = std::to_array<StateName>({
    {DialogState::kTrying, "trying"},
    {DialogState::kProceeding, "proceeding"},
    {DialogState::kEarly, "early"},
    {DialogState::kConfirmed, "confirmed"},
    {DialogState::kTerminated, "terminated"},
});

constexpr char const* kRendering = "+sip.rendering";

char const* nameOf(DialogState state)
{
    return std::ranges::find(kStates, state, &StateName::state)->name;
}

std::optional<DialogState> stateOf(std::string_view name)
{
    for (auto const& row : kStates) {
        if (name == row.name) {
            return row.state;
        }
    }
    return std::nullopt;
}

// Element names may have a namespace prefix.
bool isNamed(pugi::xml_node const& node, std::string_view name)
{
    std::string_view const full = node.name();
    auto const colon = full.find(':');
    return (colon == std::string_view::npos ? full : full.substr(colon + 1)) == name;
}

pugi::xml_node childNamed(pugi::xml_node const& parent, std::string_view name)
{
    for (auto const& node : parent.children()) {
        if (isNamed(node, name)) {
            return node;
        }
    }
    return {};
}

bool renders(pugi::xml_node const& target)
{
    for (auto const& node : target.children()) {
        if (isNamed(node, "param") && std::string_view(node.attribute("pname").as_string()) == kRendering) {
            return std::string_view(node.attribute("pvalue").as_string()) != "no";
        }
    }
    return true;
}

DialogParty readParty(pugi::xml_node const& node)
{
    auto const identity = childNamed(node, "identity");
    auto const target = childNamed(node, "target");
    return {plainText(identity.text().as_string()), plainText(identity.attribute("display").as_string()),
            target.attribute("uri").as_string(), renders(target)};
}

std::optional<DialogEntry> readDialog(pugi::xml_node const& node)
{
    auto const state = stateOf(childNamed(node, "state").text().as_string());
    if (!state) {
        return std::nullopt;
    }
    DialogEntry entry;
    entry.id = node.attribute("id").as_string();
    entry.dialog = {node.attribute("call-id").as_string(), node.attribute("local-tag").as_string(),
                    node.attribute("remote-tag").as_string()};
    entry.recipient = std::string_view(node.attribute("direction").as_string()) == "recipient";
    entry.state = *state;
    entry.local = readParty(childNamed(node, "local"));
    entry.remote = readParty(childNamed(node, "remote"));
    entry.appearance = std::max(childNamed(node, "appearance").text().as_int(), 0);
    entry.exclusive = childNamed(node, "exclusive").text().as_bool();
    return entry;
}

bool isOfSharedLine(DialogEntry const& entry)
{
    return entry.appearance > 0 || entry.exclusive;
}

void setUnlessEmpty(pugi::xml_node& node, char const* name, std::string const& value)
{
    if (!value.empty()) {
        node.append_attribute(name) = value.c_str();
    }
}

void writeParty(pugi::xml_node& dialog, char const* name, DialogParty const& party)
{
    if (party.identity.empty() && party.target.empty()) {
        return;
    }
    auto node = dialog.append_child(name);
    if (!party.identity.empty()) {
        auto identity = node.append_child("identity");
        setUnlessEmpty(identity, "display", party.displayName);
        identity.text() = party.identity.c_str();
    }
    if (party.target.empty()) {
        return;
    }
    auto target = node.append_child("target");
    target.append_attribute("uri") = party.target.c_str();
    if (!party.rendering) {
        auto param = target.append_child("param");
        param.append_attribute("pname") = kRendering;
        param.append_attribute("pvalue") = "no";
    }
}

void writeDialog(pugi::xml_node& root, DialogEntry const& entry)
{
    auto node = root.append_child("dialog");
    node.append_attribute("id") = entry.id.c_str();
    setUnlessEmpty(node, "call-id", entry.dialog.callId);
    setUnlessEmpty(node, "local-tag", entry.dialog.localTag);
    setUnlessEmpty(node, "remote-tag", entry.dialog.remoteTag);
    node.append_attribute("direction") = entry.recipient ? "recipient" : "initiator";
    node.append_child("state").text() = nameOf(entry.state);
    writeParty(node, "local", entry.local);
    writeParty(node, "remote", entry.remote);
    if (entry.appearance > 0) {
        node.append_child("sa:appearance").text() = entry.appearance;
    }
    if (entry.exclusive) {
        node.append_child("sa:exclusive").text() = "true";
    }
}

void skipBlanks(std::string_view& text)
{
    text.remove_prefix(std::min(text.find_first_not_of(" \t"), text.size()));
}

bool take(std::string_view& text, char expected)
{
    skipBlanks(text);
    if (text.empty() || text.front() != expected) {
        return false;
    }
    text.remove_prefix(1);
    return true;
}

// Digits without a sign; false if the number is too large.
bool takeNumber(std::string_view& text, unsigned& number)
{
    skipBlanks(text);
    auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc()) {
        return false;
    }
    text.remove_prefix(static_cast<std::size_t>(end - text.data()));
    return true;
}

bool takePair(std::string_view& text, unsigned& fresh, unsigned& old)
{
    return takeNumber(text, fresh) && take(text, '/') && takeNumber(text, old);
}

// "fresh/old (urgent fresh/urgent old)", RFC 3842 section 5.2. Malformed counts are 0.
MessageCounts readCounts(std::string_view text)
{
    MessageCounts all;
    MessageCounts urgent;
    if (!takePair(text, all.fresh, all.old)) {
        return {};
    }
    if (take(text, '(') && takePair(text, urgent.urgentFresh, urgent.urgentOld) && take(text, ')')) {
        all.urgentFresh = urgent.urgentFresh;
        all.urgentOld = urgent.urgentOld;
    }
    return all;
}

}  // namespace

std::optional<DialogInfo> DialogInfo::parse(std::string const& document)
{
    pugi::xml_document xml;
    if (!xml.load_buffer(document.data(), document.size())) {
        return std::nullopt;
    }
    auto const root = xml.document_element();
    if (!isNamed(root, "dialog-info")) {
        return std::nullopt;
    }
    DialogInfo info;
    info.version = root.attribute("version").as_uint();
    info.full = std::string_view(root.attribute("state").as_string("full")) != "partial";
    info.entity = root.attribute("entity").as_string();
    for (auto const& node : root.children()) {
        if (!isNamed(node, "dialog")) {
            continue;
        }
        if (auto entry = readDialog(node)) {
            info.dialogs.push_back(std::move(*entry));
        }
    }
    return info;
}

std::string DialogInfo::format() const
{
    pugi::xml_document xml;
    auto declaration = xml.append_child(pugi::node_declaration);
    declaration.append_attribute("version") = "1.0";
    declaration.append_attribute("encoding") = "UTF-8";
    auto root = xml.append_child("dialog-info");
    root.append_attribute("xmlns") = "urn:ietf:params:xml:ns:dialog-info";
    if (std::ranges::any_of(dialogs, isOfSharedLine)) {
        root.append_attribute("xmlns:sa") = "urn:ietf:params:xml:ns:sa-dialog-info";
    }
    root.append_attribute("version") = version;
    root.append_attribute("state") = full ? "full" : "partial";
    root.append_attribute("entity") = entity.c_str();
    for (auto const& entry : dialogs) {
        writeDialog(root, entry);
    }
    std::ostringstream out;
    xml.save(out, "", pugi::format_raw);
    return out.str();
}

std::optional<MessageSummary> MessageSummary::parse(std::string const& document)
{
    MessageSummary summary;
    bool found = false;
    std::istringstream lines(document);
    for (std::string line; std::getline(lines, line);) {
        auto const colon = line.find(':');
        if (colon == std::string::npos) {
            continue;
        }
        std::string const name = line.substr(0, colon);
        auto const first = line.find_first_not_of(" \t", colon + 1);
        std::string value = first == std::string::npos ? std::string() : line.substr(first);
        value.erase(value.find_last_not_of(" \t\r") + 1);
        MessageCounts& voice = summary.voice;
        if (equalsIgnoringCase(name, "Messages-Waiting")) {
            found = true;
            summary.waiting = equalsIgnoringCase(value, "yes");
        } else if (equalsIgnoringCase(name, "Message-Account")) {
            summary.account = value;
        } else if (equalsIgnoringCase(name, "Voice-Message")) {
            voice = readCounts(value);
        }
    }
    return found ? std::optional(summary) : std::nullopt;
}

std::string MessageSummary::format() const
{
    std::string text = std::string("Messages-Waiting: ") + (waiting ? "yes" : "no") + "\r\n";
    if (!account.empty()) {
        text += "Message-Account: " + account + "\r\n";
    }
    return text + "Voice-Message: " + std::to_string(voice.fresh) + "/" + std::to_string(voice.old) + " (" +
           std::to_string(voice.urgentFresh) + "/" + std::to_string(voice.urgentOld) + ")\r\n";
}

}  // namespace telephone::sip
