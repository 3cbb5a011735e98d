// The arguments of a command, from the pattern in its table row. Usage, parsing and completion all follow it.
//
//     KEY                         a value; the capitals name its kind
//     up|down                     one of these words
//     from NUMBER                 a word and the value behind it
//     [name NAME] [out] [LINE]    may be left out; groups that begin with a word may come in any order
//     TEXT...                     the rest of the line
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "telephone/access/Words.h"

namespace telephone {

// One value for each group of the pattern, in the pattern's order; nothing for a group that was left out. A group that
// is only a word has this word as its value.
using Arguments = std::vector<std::optional<std::string>>;

class CommandSyntax
{
public:
    explicit CommandSyntax(std::string_view pattern);

    // Parses the words from `first` on. Refused, without saying how the command is written, for a missing, surplus or
    // unknown word.
    [[nodiscard]] Outcome<Arguments> parse(Words const& words, std::size_t first) const;

    // What may follow the words from `first` on: words of the pattern, and kinds of values in capitals.
    [[nodiscard]] std::vector<std::string> next(Words const& words, std::size_t first) const;

private:
    struct Group
    {
        std::string keyword;               // in front of the value; empty: none
        std::vector<std::string> choices;  // of the value, in small letters; or one kind in capitals; empty: no value
        bool isOptional = false;
        bool takesRest = false;
    };

    void add(std::string_view group, bool isOptional);
    // The group that the word begins or is the value of, among those that have none yet; null: none.
    Group const* groupFor(std::string const& word, Arguments const& taken) const;
    // Takes words for their groups; returns a refusal in place of the first that fits none.
    [[nodiscard]] Outcome<> take(Words const& words, std::size_t first, Arguments& taken, Group const*& open) const;

    std::vector<Group> groups_;
};

}  // namespace telephone
