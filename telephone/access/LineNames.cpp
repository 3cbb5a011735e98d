#include "telephone/access/LineNames.h"

namespace telephone {

namespace {

bool isNamed(LineStatus const& line, std::string_view name)
{
    return line.id == name || (!line.user.empty() && line.user == name);
}

}  // namespace

std::string_view placeNamed(TelephoneState const& state, std::string_view name)
{
    for (auto const& line : state.lines) {
        if (isNamed(line, name)) {
            return line.id;
        }
        for (auto const& appearance : line.appearances) {
            if (isNamed(appearance, name)) {
                return appearance.id;
            }
        }
    }
    return {};
}

std::string linesThatAre(TelephoneState const& state)
{
    std::vector<std::string> ids;
    ids.reserve(state.lines.size());
    for (auto const& line : state.lines) {
        ids.push_back(line.id);
    }
    return (ids.size() > 1 ? "the lines are " : "the line is ") + listed(ids);
}

std::string listed(std::vector<std::string> const& items)
{
    std::string text;
    for (std::size_t index = 0; index < items.size(); ++index) {
        text += index == 0 ? "" : index + 1 == items.size() ? " and " : ", ";
        text += items[index];
    }
    return text;
}

}  // namespace telephone
