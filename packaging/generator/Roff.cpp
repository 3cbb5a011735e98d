#include "Roff.h"

#include <algorithm>

namespace {

bool isCapital(char letter)
{
    return letter >= 'A' && letter <= 'Z';
}

// As it stands on the page, also for copying: a hyphen stays one.
std::string escaped(std::string_view text)
{
    std::string result;
    for (char const letter : text) {
        if (letter == '<' && result.ends_with('>')) {
            result += "\\:";  // a line may break between elements
        }
        switch (letter) {
        case '\\':
            result += "\\e";
            break;
        case '-':
            result += "\\-";
            break;
        case '"':
            result += "\\(dq";
            break;
        case '\'':
            result += "\\(aq";
            break;
        case '^':
            result += "\\(ha";
            break;
        case '~':
            result += "\\(ti";
            break;
        case '`':
            result += "\\(ga";
            break;
        default:
            result += letter;
        }
    }
    return result;
}

// Bold, but for words in capitals: these are in italics. "--log-file FILE" has one of each.
std::string term(std::string_view text)
{
    std::string result = "\\fB";
    std::size_t at = 0;
    while (at < text.size()) {
        auto const end = std::min(text.find_first_of(" =|[]", at), text.size());
        std::string_view const word = text.substr(at, end - at);
        bool const stands = !word.empty() && std::all_of(word.begin(), word.end(), [](char letter) {
            return isCapital(letter) || letter == '.';
        }) && isCapital(word.front());
        result += stands ? "\\fI" + escaped(word) + "\\fB" : escaped(word);
        if (end < text.size()) {
            result += text[end];
        }
        at = end + 1;
    }
    return result + "\\fP";
}

}  // namespace

Roff::Roff(std::string_view name, std::string_view section, std::string_view version, std::string_view manual)
{
    std::string title(name);
    std::transform(title.begin(), title.end(), title.begin(), [](char letter) {
        return letter >= 'a' && letter <= 'z' ? static_cast<char>(letter - 'a' + 'A') : letter;
    });
    text_ = ".\\\" Generated from the telephone's tables.\n.nr HY 0\n.TH \"" + escaped(title) + "\" \"" +
            std::string(section) + "\" \"\" \"telephone " + std::string(version) + "\" \"" + std::string(manual) +
            "\"\n.ad l\n";
}

void Roff::section(std::string_view title)
{
    text_ += ".SH \"" + escaped(title) + "\"\n";
}

void Roff::subsection(std::string_view title)
{
    text_ += ".SS \"" + escaped(title) + "\"\n";
}

void Roff::name(std::string_view name, std::string_view purpose)
{
    text_ += escaped(name) + " \\- " + escaped(purpose) + "\n";
}

void Roff::usage(std::string_view text)
{
    text_ += term(text) + "\n";
}

void Roff::paragraph(std::string_view text)
{
    text_ += ".PP\n";
    line(text);
}

void Roff::entry(std::string_view name, std::string_view meaning)
{
    text_ += ".TP\n" + term(name) + "\n";
    line(meaning);
}

void Roff::below(std::string_view text)
{
    text_ += ".br\n";
    line(text);
}

void Roff::example(std::string_view lines)
{
    text_ += ".PP\n.RS 4\n.EX\n";
    while (!lines.empty()) {
        auto const end = std::min(lines.find('\n'), lines.size());
        line(lines.substr(0, end));
        lines.remove_prefix(std::min(end + 1, lines.size()));
    }
    text_ += ".EE\n.RE\n";
}

void Roff::line(std::string_view text)
{
    // A period in front would begin a macro.
    text_ += (text.starts_with('.') ? "\\&" : "") + escaped(text) + "\n";
}
