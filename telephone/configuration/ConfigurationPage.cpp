#include "telephone/configuration/ConfigurationPage.h"

#include <utility>

#include <spdlog/fmt/fmt.h>

#include "telephone/configuration/ConfigurationFields.h"

namespace telephone {

namespace {

constexpr std::string_view kHead = R"(# Configuration file

`telephone --config FILE` reads a TOML file. Without one the telephone is a keyset of two lines, 4711 and 4712, at its
built-in exchange. [example.toml](example.toml) holds every key with its default.

Unknown keys and sections, values of another type and values out of range are refused with the file, the line and the
expected value. A file without `[[line]]` has the two standard lines (with `keyset = false` the first); a file without
`[[key]]` gets one key for each line, or the standard layout for the standard lines. Line ids, line numbers and key
numbers must be unique. Relative paths start from the folder in which the telephone is started.

This page is generated from the tables in `telephone/configuration/ConfigurationFields.h`.
)";

// The default of a field, as a file would write it.
template <typename Section>
struct Standard
{
    Section const& section;
    std::string_view choices;

    std::string operator()(bool Section::*member) const { return section.*member ? "true" : "false"; }
    std::string operator()(int Section::*member) const
    {
        bool const words = !choices.empty() && (choices[0] < '0' || choices[0] > '9');
        return words ? choice(section.*member) : std::to_string(section.*member);
    }
    std::string operator()(std::string Section::*member) const { return fmt::format("\"{}\"", section.*member); }
    std::string operator()(std::vector<std::string> Section::*) const { return "[]"; }
    std::string operator()(Texts Section::*) const { return "\"\""; }
    std::string operator()(Transport Section::*member) const { return choice(static_cast<int>(section.*member)); }

    std::string choice(int place) const
    {
        auto rest = choices;
        for (; place > 0; --place) {
            rest.remove_prefix(rest.find('|') + 1);
        }
        return fmt::format("\"{}\"", rest.substr(0, rest.find('|')));
    }
};

template <typename Section, typename Fields>
SectionDescription describe(std::string title, Section const& section, Fields const& fields)
{
    SectionDescription described{std::move(title), {}};
    for (auto const& field : fields) {
        described.keys.push_back({field.name, expectedOf(field),
                                  std::visit(Standard<Section>{section, field.choices}, field.member), field.meaning});
    }
    return described;
}

template <typename Section, typename Fields>
SectionDescription describe(std::string_view name, Section Configuration::*member, Fields const& fields)
{
    return describe(fmt::format("[{}]", name), Configuration().*member, fields);
}

template <typename Element, typename Fields>
SectionDescription describe(std::string_view name, std::vector<Element> Configuration::*, Fields const& fields)
{
    return describe(fmt::format("[[{}]]", name), Element(), fields);
}

}  // namespace

std::vector<SectionDescription> configurationSections()
{
    std::vector<SectionDescription> sections{describe("At the top", Configuration(), fields::kPhone)};
    forEachSection([&sections](std::string_view name, auto member, auto const& sectionFields) {
        sections.push_back(describe(name, member, sectionFields));
    });
    return sections;
}

std::string configurationPage()
{
    std::string page(kHead);
    for (auto const& section : configurationSections()) {
        page += fmt::format("\n## {}\n\n| Key | Values | Default | Meaning |\n|---|---|---|---|\n", section.title);
        for (auto const& key : section.keys) {
            page += fmt::format("| `{}` | {} | `{}` | {} |\n", key.name, key.values, key.standard, key.meaning);
        }
    }
    return page;
}

}  // namespace telephone
