// Which column of a ladder each far end has. One thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace telephone {

class FarEndColumns
{
public:
    // The far end is there at that moment, a number that never falls from call to call.
    void note(std::string const& name, std::uint64_t moment);
    // Afterwards: at most that many columns, in the order in which their first far ends came.
    void arrange(std::size_t mostColumns);

    // "100, 199".
    [[nodiscard]] std::vector<std::string> const& names() const { return names_; }
    // From 0; 0 for a name that was never noted.
    [[nodiscard]] std::size_t columnOf(std::string_view name) const;
    // Several far ends are in the column of this one.
    [[nodiscard]] bool shares(std::string_view name) const;

private:
    struct Presence
    {
        std::string name;
        std::uint64_t begin;
        std::uint64_t end;
    };

    std::vector<Presence> presences_;                         // in the order of their beginnings
    std::map<std::string, std::size_t, std::less<>> places_;  // of presences
    std::map<std::string, std::size_t, std::less<>> columns_;
    std::vector<std::string> names_;
    std::vector<std::size_t> counts_;  // far ends of each column
};

}  // namespace telephone
