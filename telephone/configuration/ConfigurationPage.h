// The configuration file described, from its tables: section by section, and as docs/configuration.md.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace telephone {

// A key. The meaning may contain links of Markdown.
struct KeyDescription
{
    std::string_view name;
    std::string values;    // "an integer from 0 to 255"
    std::string standard;  // the default, as a file would write it
    std::string_view meaning;
};

struct SectionDescription
{
    std::string title;  // "[sip]", "[[line]]"; of the keys in front of all sections: "At the top"
    std::vector<KeyDescription> keys;
};

// In the order of the tables.
std::vector<SectionDescription> configurationSections();

std::string configurationPage();

}  // namespace telephone
