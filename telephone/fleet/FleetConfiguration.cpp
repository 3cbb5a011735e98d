#include "telephone/fleet/FleetConfiguration.h"

#include <array>
#include <sstream>

#include <spdlog/fmt/fmt.h>

#include "telephone/configuration/ConfigurationFile.h"
#include "telephone/configuration/TomlFile.h"

namespace telephone {

namespace {

constexpr std::string_view kPlaceholder = "{number}";

// What a file without lines means in a fleet.
constexpr char const* kStandardLine = R"([[line]]
id = "1{number}"
display-name = "Telephone {number}"
)";
constexpr char const* kStandardKeys = R"([[key]]
number = 1
function = "line"
target = "1{number}"
label = "1{number}"
[[key]]
number = 2
function = "hold"
label = "Hold"
[[key]]
number = 3
function = "dnd"
label = "Do not disturb"
[[key]]
number = 4
function = "mute"
label = "Mute"
[[key]]
number = 5
function = "release"
label = "Release"
)";

// What two telephones must not have in common. A relative path begins in the telephone's own folder.
struct OwnSetting
{
    std::string_view name;
    std::string_view advice;
    std::string (*value)(Configuration const&);
};

std::string ifAbsolute(std::string const& path)
{
    return path.starts_with('/') ? path : std::string();
}

// clang-format off
constexpr std::array kOwnSettings{
    OwnSetting{"line.id", "write {number} in it: id = \"1{number}\"", [](Configuration const& c) { return c.lines.front().id; }},
    OwnSetting{"sip.port", "leave it out, or write {number} in it: port = 5{number}", [](Configuration const& c) { return c.sip.port == 0 ? std::string() : std::to_string(c.sip.port); }},
    OwnSetting{"store.path", "write {number} in it, or make it a relative path", [](Configuration const& c) { return ifAbsolute(c.store.path); }},
    OwnSetting{"recording.folder", "write {number} in it, or make it a relative path", [](Configuration const& c) { return ifAbsolute(c.recording.folder); }},
    OwnSetting{"media.heard", "write {number} in it, or make it a relative path", [](Configuration const& c) { return ifAbsolute(c.media.heard); }},
};
// clang-format on

void insertDefaults(toml::table& file, int number)
{
    auto const insert = [&](char const* name, char const* text) {
        if (!file.contains(name)) {
            file.insert(name, *toml::parse(withFleetNumber(text, number)).get(name));
        }
    };
    bool const hasLines = file.contains("line");
    insert("line", kStandardLine);
    if (!hasLines) {
        insert("key", kStandardKeys);
    }
}

toml::table& sectionOf(toml::table& file, char const* name)
{
    return *file.insert(name, toml::table()).first->second.as_table();
}

std::string textOf(toml::table const& file)
{
    std::ostringstream text;
    text << file << '\n';
    return text.str();
}

}  // namespace

std::string fleetNumber(int number)
{
    return fmt::format("{:03}", number);
}

std::string withFleetNumber(std::string_view text, int number)
{
    std::string result;
    for (std::size_t at = 0; (at = text.find(kPlaceholder)) != std::string_view::npos;) {
        result.append(text.substr(0, at)).append(fleetNumber(number));
        text.remove_prefix(at + kPlaceholder.size());
    }
    return result.append(text);
}

Outcome<FleetConfiguration> FleetConfiguration::read(std::string const& path, int count)
{
    auto text = path.empty() ? Outcome<std::string>(std::string()) : readFileText(path, "configuration file");
    if (!text) {
        return tl::unexpected(text.error());
    }
    FleetConfiguration read(path, *std::move(text));
    auto const first = read.configurationOf(1);
    auto const second = first ? read.configurationOf(2) : first;
    if (!second) {
        return tl::unexpected(second.error());
    }
    for (OwnSetting const& each : kOwnSettings) {
        std::string const value = each.value(*first);
        if (count > 1 && !value.empty() && value == each.value(*second)) {
            return refuse(RefusalKind::kBadInput, fmt::format("{}: all telephones of the fleet would have {} = {}; {}",
                                                              path, each.name, value, each.advice));
        }
    }
    read.first_ = *first;
    return read;
}

// Read twice: as it is, so that mistakes are named with their line, and with what it means in a fleet.
Outcome<Configuration> FleetConfiguration::configurationOf(int number) const
{
    ConfigurationFile const file(path_);
    std::string const text = withFleetNumber(text_, number);
    return file.parse(text).and_then([&](Configuration const&) {
        return parseToml(text, path_).and_then([&](toml::table table) {
            insertDefaults(table, number);
            return file.parse(textOf(table));
        });
    });
}

std::string FleetConfiguration::textFor(int number, ServerConfiguration const& server,
                                        std::string const& password) const
{
    toml::table file = toml::parse(withFleetNumber(text_, number));
    insertDefaults(file, number);
    file.erase("exchange");
    if (!server.registrar.empty()) {
        toml::table& section = sectionOf(file, "server");
        section.insert_or_assign("registrar", server.registrar);
        section.insert_or_assign("directed-pickup", server.directedPickup);
        section.insert_or_assign("group-pickup", server.groupPickup);
    }
    for (toml::node& line : *file["line"].as_array()) {
        if (!password.empty()) {
            line.as_table()->insert("password", password);
        }
    }
    // Of its own, so that its panel can be opened.
    file.insert_or_assign("http", toml::table{{"address", "127.0.0.1:0"}});
    if (server.registrar.empty()) {
        file.insert_or_assign("exchange", toml::table{{"enabled", false}});
    }
    return textOf(file);
}

}  // namespace telephone
