#include "telephone/access/Words.h"

#include <charconv>
#include <cmath>
#include <cstdlib>

#include <spdlog/fmt/fmt.h>

namespace telephone {

namespace {

constexpr std::string_view kBlanks = " \t\r\n";
constexpr double kMostSeconds = 86400;
constexpr double kMillisecondsPerSecond = 1000;

bool isBlank(char letter)
{
    return kBlanks.find(letter) != std::string_view::npos;
}

// Takes one word from the beginning of the line.
Outcome<std::string> takeWord(std::string_view& line)
{
    std::string word;
    char quote = '\0';
    std::size_t i = 0;
    for (; i < line.size() && (quote != '\0' || !isBlank(line[i])); ++i) {
        char const letter = line[i];
        bool const escapes = quote == '"' && letter == '\\' && i + 1 < line.size();
        if (escapes && (line[i + 1] == '"' || line[i + 1] == '\\')) {
            word += line[++i];
        } else if (letter == quote) {
            quote = '\0';
        } else if (quote == '\0' && (letter == '"' || letter == '\'')) {
            quote = letter;
        } else {
            word += letter;
        }
    }
    if (quote != '\0') {
        return refuse(RefusalKind::kBadInput, std::string("a quote ") + quote + " is not closed");
    }
    line.remove_prefix(i);
    return word;
}

std::string quoted(std::string_view word)
{
    std::string text = "\"";
    for (char const letter : word) {
        text += letter == '"' || letter == '\\' ? "\\" : "";
        text += letter;
    }
    return text + '"';
}

}  // namespace

Outcome<Words> splitWords(std::string_view line)
{
    Words words;
    while (true) {
        auto const start = line.find_first_not_of(kBlanks);
        if (start == std::string_view::npos || line[start] == '#') {
            return words;
        }
        line.remove_prefix(start);
        auto word = takeWord(line);
        if (!word) {
            return tl::unexpected(std::move(word.error()));
        }
        words.push_back(*std::move(word));
    }
}

std::string joinWords(Words const& words, std::size_t first)
{
    std::string text;
    for (std::size_t i = first; i < words.size(); ++i) {
        text += (i == first ? "" : " ") + words[i];
    }
    return text;
}

std::string quoteWords(Words const& words)
{
    std::string line;
    for (std::string const& word : words) {
        bool const isPlain = !word.empty() && word.find_first_of(" \t\r\n\"'#") == std::string::npos;
        line += (line.empty() ? "" : " ") + (isPlain ? word : quoted(word));
    }
    return line;
}

std::optional<Assignment> splitAssignment(std::string const& word)
{
    auto const sign = word.find('=');
    if (sign == std::string::npos || sign == 0) {
        return std::nullopt;
    }
    return Assignment{word.substr(0, sign), word.substr(sign + 1)};
}

std::string_view trimmed(std::string_view text)
{
    auto const first = text.find_first_not_of(kBlanks);
    if (first == std::string_view::npos) {
        return {};
    }
    return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

Outcome<double> secondsOf(std::string const& word)
{
    char* end = nullptr;
    double seconds = std::strtod(word.c_str(), &end);
    std::string const unit = end;
    bool const isNumber = end != word.c_str() && (unit.empty() || unit == "s" || unit == "ms");
    if (unit == "ms") {
        seconds /= kMillisecondsPerSecond;
    }
    if (!isNumber || !std::isfinite(seconds) || seconds < 0 || seconds > kMostSeconds) {
        return refuse(RefusalKind::kBadInput, "\"" + word + "\" is not a number of seconds from 0 to 86400");
    }
    return seconds;
}

Outcome<std::chrono::milliseconds> durationOf(std::string const& word)
{
    return secondsOf(word).map([](double seconds) {
        return std::chrono::round<std::chrono::milliseconds>(std::chrono::duration<double>(seconds));
    });
}

Outcome<std::uint64_t> numberOf(std::string const& word, std::uint64_t least, std::uint64_t most)
{
    std::uint64_t number = 0;
    auto const [end, error] = std::from_chars(word.data(), word.data() + word.size(), number);
    if (error != std::errc() || end != word.data() + word.size() || number < least || number > most) {
        return refuse(RefusalKind::kBadInput, fmt::format("\"{}\" is not a number from {} to {}", word, least, most));
    }
    return number;
}

}  // namespace telephone
