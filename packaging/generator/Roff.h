// Writes a manual page in the macros of man(7). Every text is escaped.
#pragma once

#include <string>
#include <string_view>

class Roff
{
public:
    // "telephone", "1", "User Commands".
    Roff(std::string_view name, std::string_view section, std::string_view version, std::string_view manual);

    void section(std::string_view title);
    void subsection(std::string_view title);
    // What the page is about, for apropos.
    void name(std::string_view name, std::string_view purpose);
    void usage(std::string_view text);
    void paragraph(std::string_view text);
    // A term with what it means; in the term, words of capitals stand for something and are set apart.
    void entry(std::string_view term, std::string_view meaning);
    // A line that belongs to the last entry, below its meaning.
    void below(std::string_view text);
    // Lines as they stand.
    void example(std::string_view lines);

    [[nodiscard]] std::string const& text() const { return text_; }

private:
    void line(std::string_view text);
    std::string text_;
};
