// Splits a typed line into words, separated by blanks. Single or double quotes keep blanks in a word (Name="a b"); in
// double quotes \" is a quote and \\ a backslash. A # at the beginning of a word starts a comment.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "telephone/base/Refusal.h"

namespace telephone {

using Words = std::vector<std::string>;

// Refused when a quote is not closed.
[[nodiscard]] Outcome<Words> splitWords(std::string_view line);

// The words from `first` on, separated by single blanks.
std::string joinWords(Words const& words, std::size_t first = 0);

// A line that splitWords splits into these words.
std::string quoteWords(Words const& words);

struct Assignment
{
    std::string name;
    std::string value;
};

// The two sides of Tag=value; nothing if the word has no "=" or no tag before it.
std::optional<Assignment> splitAssignment(std::string const& word);

// Without blanks, tabs and line ends on both sides.
std::string_view trimmed(std::string_view text);

// A typed duration in seconds: 5, 2.5, 2s, 20ms.
[[nodiscard]] Outcome<double> secondsOf(std::string const& word);
[[nodiscard]] Outcome<std::chrono::milliseconds> durationOf(std::string const& word);

// A typed number in a range.
[[nodiscard]] Outcome<std::uint64_t> numberOf(std::string const& word, std::uint64_t least, std::uint64_t most);

}  // namespace telephone
