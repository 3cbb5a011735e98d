#include "telephone/configuration/ConfigurationFile.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <optional>
#include <sstream>
#include <utility>

#include <spdlog/fmt/fmt.h>
#include <toml++/toml.h>

#include "telephone/base/Names.h"
#include "telephone/configuration/Choices.h"
#include "telephone/configuration/ConfigurationFields.h"
#include "telephone/configuration/ConfigurationRules.h"

namespace telephone {

namespace {

int lineOf(toml::source_region const& region)
{
    return static_cast<int>(region.begin.line);
}

// A value of the file as messages name it.
std::string found(toml::node const& node)
{
    if (auto const text = node.value_exact<std::string>()) {
        return fmt::format("the text \"{}\"", *text);
    }
    if (auto const number = node.value_exact<std::int64_t>()) {
        return fmt::format("the integer {}", *number);
    }
    if (auto const flag = node.value_exact<bool>()) {
        return *flag ? "true" : "false";
    }
    std::ostringstream type;
    type << node.type();
    return "a value of type " + type.str();
}

bool isPlain(std::string const& text)
{
    return std::none_of(text.begin(), text.end(), [](unsigned char c) { return c < 0x20 || c == 0x7f; });
}

template <typename Value>
bool assign(std::optional<Value> const& value, Value& target)
{
    target = value.value_or(Value());
    return value.has_value();
}

// Assigns one value to its member; false if the field does not take it.
template <typename Section>
struct Assign
{
    toml::node const& node;
    ConfigurationField<Section> const& field;
    Section& section;

    bool operator()(bool Section::*member) const { return assign(node.value_exact<bool>(), section.*member); }
    bool operator()(int Section::*member) const
    {
        if (auto const word = node.value_exact<std::string>()) {
            return isWord(*word) && assign(placeOfChoice(field.choices, *word), section.*member);
        }
        auto const value = node.value_exact<std::int64_t>();
        if (!value || *value < field.minimum || *value > field.maximum) {
            return false;
        }
        section.*member = static_cast<int>(*value);
        return field.choices.empty() || placeOfChoice(field.choices, std::to_string(*value)).has_value();
    }
    bool operator()(std::string Section::*member) const
    {
        auto const value = node.value_exact<std::string>();
        return assign(value, section.*member) && isPlain(*value) &&
               (field.choices.empty() || placeOfChoice(field.choices, *value));
    }
    bool operator()(std::vector<std::string> Section::*member) const { return assignTexts(section.*member); }
    bool operator()(Texts Section::*member) const
    {
        auto const text = node.value_exact<std::string>();
        if (!text) {
            return assignTexts((section.*member).list);
        }
        (section.*member).list = {*text};
        return isPlain(*text);
    }
    bool operator()(Transport Section::*member) const
    {
        auto const place = placeOfChoice(field.choices, node.value_exact<std::string>().value_or(std::string()));
        section.*member = static_cast<Transport>(place.value_or(0));
        return place.has_value();
    }

    bool assignTexts(std::vector<std::string>& texts) const
    {
        auto const* values = node.as_array();
        if (values == nullptr) {
            return false;
        }
        for (auto const& element : *values) {
            auto const text = element.template value_exact<std::string>();
            if (!text || text->empty() || !isPlain(*text)) {
                return false;
            }
            texts.push_back(*text);
        }
        return true;
    }

    static bool isWord(std::string const& text) { return !text.empty() && (text[0] < '0' || text[0] > '9'); }
};

// One reading of one file.
class Reading
{
public:
    explicit Reading(std::string const& path) { places_.file = path; }

    Outcome<Configuration> read(toml::table const& file)
    {
        auto outcome = checkNames(file).and_then([&] { return readFields("", file, configuration_, fields::kPhone); });
        forEachSection([&](std::string_view name, auto member, auto const& sectionFields) {
            auto const* node = file.at_path(name).node();
            if (outcome && node != nullptr) {
                outcome = readSection(name, *node, configuration_.*member, sectionFields);
            }
        });
        return outcome
            .and_then([&] {
                notePlaces(file);
                return completeConfiguration(configuration_, places_);
            })
            .map([this] { return std::move(configuration_); });
    }

private:
    // Every name at the top is a section or a key of the telephone itself.
    Outcome<> checkNames(toml::table const& file) const
    {
        auto known = namesOf(fields::kPhone, &ConfigurationField<Configuration>::name);
        addSectionsIn("", known);
        return checkNames(file, known, "section or key", "");
    }

    // Adds the names of the sections within a section, "exchange."; those at the top for an empty one.
    static void addSectionsIn(std::string const& section, std::vector<std::string_view>& names)
    {
        forEachSection([&](std::string_view name, auto, auto const&) {
            bool const isWithin = name.starts_with(section) && name.find('.', section.size()) == std::string_view::npos;
            if (isWithin) {
                names.push_back(name.substr(section.size()));
            }
        });
    }

    Outcome<> checkNames(toml::table const& table, std::vector<std::string_view> const& known, std::string_view what,
                         std::string_view where) const
    {
        for (auto const& [key, node] : table) {
            if (std::find(known.begin(), known.end(), key.str()) == known.end()) {
                return places_.refusal(lineOf(key.source()),
                                       fmt::format("there is no {} \"{}\"{}; the nearest is \"{}\"", what, key.str(),
                                                   where, nearestName(key.str(), known)));
            }
        }
        return {};
    }

    template <typename Section, typename Fields>
    Outcome<> readSection(std::string_view name, toml::node const& node, Section& section, Fields const& sectionFields)
    {
        auto const* table = node.as_table();
        if (table == nullptr) {
            return places_.refusal(lineOf(node.source()),
                                   fmt::format("\"{0}\" takes a section [{0}], not {1}", name, found(node)));
        }
        auto known = namesOf(sectionFields, &Fields::value_type::name);
        addSectionsIn(std::string(name) + ".", known);
        return checkNames(*table, known, "key", fmt::format(" in [{}]", name)).and_then([&] {
            return readFields(name, *table, section, sectionFields);
        });
    }

    template <typename Element, typename Fields>
    Outcome<> readSection(std::string_view name, toml::node const& node, std::vector<Element>& elements,
                          Fields const& sectionFields)
    {
        auto const* tables = node.as_array();
        if (tables == nullptr || !tables->is_array_of_tables()) {
            return places_.refusal(lineOf(node.source()),
                                   fmt::format("\"{0}\" takes sections [[{0}]], not {1}", name, found(node)));
        }
        for (auto const& table : *tables) {
            if (auto read = readSection(name, table, elements.emplace_back(), sectionFields); !read) {
                return read;
            }
        }
        return {};
    }

    template <typename Section, typename Fields>
    Outcome<> readFields(std::string_view name, toml::table const& table, Section& section,
                         Fields const& sectionFields) const
    {
        for (auto const& field : sectionFields) {
            auto const* node = table.get(field.name);
            if (node != nullptr && !std::visit(Assign<Section>{*node, field, section}, field.member)) {
                return places_.refusal(lineOf(node->source()),
                                       fmt::format("{}{}{} takes {}, not {}", name, name.empty() ? "" : ".", field.name,
                                                   expectedOf(field), found(*node)));
            }
        }
        return {};
    }

    void notePlaces(toml::table const& file)
    {
        places_.lines = placesOf(file.get("line"));
        places_.keys = placesOf(file.get("key"));
        places_.exchangeNumbers = placesOf(file.at_path("exchange.number").node());
        places_.sip = placeOf(file.at_path("sip.address"));
        places_.server = placeOf(file.at_path("server.registrar"));
        places_.push = placeOf(file.at_path("push.address"));
        places_.http = placeOf(file.at_path("http"));
    }
    static int placeOf(toml::node_view<toml::node const> node)
    {
        return node.node() == nullptr ? 0 : lineOf(node.node()->source());
    }
    static std::vector<int> placesOf(toml::node const* node)
    {
        std::vector<int> places;
        if (node != nullptr) {
            for (auto const& table : *node->as_array()) {
                places.push_back(lineOf(table.source()));
            }
        }
        return places;
    }

    Configuration configuration_;
    ConfigurationPlaces places_;
};

}  // namespace

ConfigurationFile::ConfigurationFile(std::string path)
    : path_(std::move(path))
{}

Outcome<Configuration> ConfigurationFile::read() const
{
    auto const refusal = [this](char const* why) {
        return refuse(RefusalKind::kUnavailable,
                      fmt::format("configuration file \"{}\" cannot be read: {}", path_, why));
    };
    std::error_code unknown;
    if (std::filesystem::is_directory(path_, unknown)) {
        return refusal("it is a folder");
    }
    std::ifstream file(path_);
    if (!file) {
        return refusal(std::strerror(errno));
    }
    std::ostringstream text;
    text << file.rdbuf();
    if (file.bad()) {
        return refusal(std::strerror(errno));
    }
    return parse(text.str());
}

Outcome<Configuration> ConfigurationFile::parse(std::string_view text) const
{
    try {
        return Reading(path_).read(toml::parse(text, path_));
    } catch (toml::parse_error const& error) {
        return refuse(RefusalKind::kBadInput,
                      fmt::format("{}:{}: {}", path_, lineOf(error.source()), error.description()));
    }
}

}  // namespace telephone
