// Reads the sections of a TOML file into plain values, by tables of their keys: rows with `name`, `member` (a variant
// of pointers to members), `choices`, `minimum` and `maximum`, and a function expectedOf(row) for messages.
// Configuration files and fixtures are read with it. One thread.
#pragma once

#include <algorithm>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include <spdlog/fmt/fmt.h>

#include "telephone/base/Names.h"
#include "telephone/configuration/Choices.h"
#include "telephone/configuration/Configuration.h"
#include "telephone/configuration/FilePlace.h"
#include "telephone/configuration/TomlFile.h"

namespace telephone {

// Assigns one value to its member; false if the field does not take it.
template <typename Field, typename Section>
struct FieldAssignment
{
    toml::node const& node;
    Field const& field;
    Section& section;

    template <typename Value>
    bool operator()(Value Section::*member) const
    {
        return read(section.*member);
    }

private:
    bool read(bool& target) const { return assign(node.value_exact<bool>(), target); }
    bool read(int& target) const
    {
        if (auto const word = node.value_exact<std::string>()) {
            return isWord(*word) && assign(placeOfChoice(field.choices, *word), target);
        }
        auto const value = node.value_exact<std::int64_t>();
        if (!value || *value < field.minimum || *value > field.maximum) {
            return false;
        }
        target = static_cast<int>(*value);
        return field.choices.empty() || placeOfChoice(field.choices, std::to_string(*value)).has_value();
    }
    bool read(std::string& target) const
    {
        auto const value = node.value_exact<std::string>();
        return assign(value, target) && isPlain(*value) &&
               (field.choices.empty() || placeOfChoice(field.choices, *value));
    }
    bool read(std::vector<std::string>& target) const
    {
        auto const* values = node.as_array();
        if (values == nullptr) {
            return false;
        }
        for (auto const& element : *values) {
            auto const text = element.template value_exact<std::string>();
            bool const isPermitted = text && !text->empty() && isPlain(*text) &&
                                     (field.choices.empty() || placeOfChoice(field.choices, *text));
            if (!isPermitted) {
                return false;
            }
            target.push_back(*text);
        }
        return true;
    }
    bool read(Texts& target) const
    {
        auto const value = node.value_exact<std::string>();
        if (!value) {
            return read(target.list);
        }
        target.list = {*value};
        return isPlain(*value);
    }
    bool read(Transport& target) const
    {
        auto const place = placeOfChoice(field.choices, node.value_exact<std::string>().value_or(std::string()));
        target = static_cast<Transport>(place.value_or(0));
        return place.has_value();
    }
    template <typename Value>
    bool read(std::optional<Value>& target) const
    {
        return read(target.emplace());
    }

    template <typename Value>
    static bool assign(std::optional<Value> const& value, Value& target)
    {
        target = value.value_or(Value());
        return value.has_value();
    }
    static bool isWord(std::string const& text) { return !text.empty() && (text[0] < '0' || text[0] > '9'); }
    static bool isPlain(std::string const& text)
    {
        return std::none_of(text.begin(), text.end(), [](unsigned char c) { return c < 0x20 || c == 0x7f; });
    }
};

class FieldReader
{
public:
    // `sections`: the names of all sections of such a file. One within another has the name of both: "exchange.number".
    FieldReader(std::string file, std::vector<std::string_view> sections)
        : file_(std::move(file))
        , sections_(std::move(sections))
    {}

    // Every name at the top is a section or a key.
    template <typename Section, typename Fields>
    [[nodiscard]] Outcome<> readTop(toml::table const& file, Section& section, Fields const& fields) const
    {
        return checkNames(file, knownIn("", fields), "section or key", "").and_then([&] {
            return readFields("", file, section, fields);
        });
    }

    // A section [name].
    template <typename Section, typename Fields>
    [[nodiscard]] Outcome<> readSection(std::string_view name, toml::node const& node, Section& section,
                                        Fields const& fields) const
    {
        auto const* table = node.as_table();
        if (table == nullptr) {
            return refuseAt(file_, fileLineOf(node.source()),
                            fmt::format("\"{0}\" takes a section [{0}], not {1}", name, valueInWords(node)));
        }
        return checkNames(*table, knownIn(std::string(name) + ".", fields), "key", fmt::format(" in [{}]", name))
            .and_then([&] { return readFields(name, *table, section, fields); });
    }

    // Sections [[name]].
    template <typename Element, typename Fields>
    [[nodiscard]] Outcome<> readSection(std::string_view name, toml::node const& node, std::vector<Element>& elements,
                                        Fields const& fields) const
    {
        auto const* tables = node.as_array();
        if (tables == nullptr || !tables->is_array_of_tables()) {
            return refuseAt(file_, fileLineOf(node.source()),
                            fmt::format("\"{0}\" takes sections [[{0}]], not {1}", name, valueInWords(node)));
        }
        for (auto const& table : *tables) {
            if (auto read = readSection(name, table, elements.emplace_back(), fields); !read) {
                return read;
            }
        }
        return {};
    }

private:
    // The keys of a section and the sections within it.
    template <typename Fields>
    [[nodiscard]] std::vector<std::string_view> knownIn(std::string_view section, Fields const& fields) const
    {
        auto names = namesOf(fields, &Fields::value_type::name);
        for (std::string_view const name : sections_) {
            bool const isWithin = name.starts_with(section) && name.find('.', section.size()) == std::string_view::npos;
            if (isWithin) {
                names.push_back(name.substr(section.size()));
            }
        }
        return names;
    }

    [[nodiscard]] Outcome<> checkNames(toml::table const& table, std::vector<std::string_view> const& known,
                                       std::string_view what, std::string_view where) const
    {
        for (auto const& [key, node] : table) {
            if (std::find(known.begin(), known.end(), key.str()) == known.end()) {
                return refuseAt(file_, fileLineOf(key.source()),
                                fmt::format("there is no {} \"{}\"{}; the nearest is \"{}\"", what, key.str(), where,
                                            nearestName(key.str(), known)));
            }
        }
        return {};
    }

    template <typename Section, typename Fields>
    [[nodiscard]] Outcome<> readFields(std::string_view name, toml::table const& table, Section& section,
                                       Fields const& fields) const
    {
        using Field = typename Fields::value_type;
        for (Field const& field : fields) {
            auto const* node = table.get(field.name);
            bool const isTaken =
                node == nullptr || std::visit(FieldAssignment<Field, Section>{*node, field, section}, field.member);
            if (!isTaken) {
                return refuseAt(file_, fileLineOf(node->source()),
                                fmt::format("{}{}{} takes {}, not {}", name, name.empty() ? "" : ".", field.name,
                                            expectedOf(field), valueInWords(*node)));
            }
        }
        return {};
    }

    std::string const file_;
    std::vector<std::string_view> const sections_;
};

}  // namespace telephone
