// Takes a line that a person typed apart. Words are separated by blanks; quotes, single or double, keep blanks in a
// word (Name="a b"); in double quotes \" is a quote and \\ a backslash. A # at the beginning of a word starts a
// comment.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace telephone {

using Words = std::vector<std::string>;

// Throws CommandError where a quote is not closed.
Words splitWords(std::string_view line);

// Words from one on, separated by one blank each.
std::string joinWords(Words const& words, std::size_t first = 0);

struct Assignment
{
    std::string name;
    std::string value;
};

// The two sides of Tag=value; nothing where the word has no "=" or nothing before it.
std::optional<Assignment> splitAssignment(std::string const& word);

// Without blanks, tabs and line ends at both sides.
std::string_view trimmed(std::string_view text);

// A duration as a person writes it: 5, 2.5, 2s. Throws CommandError.
double secondsOf(std::string const& word);

}  // namespace telephone
