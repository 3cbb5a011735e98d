#include "telephone/display/StyledText.h"

#include <algorithm>

#include <spdlog/fmt/fmt.h>

#include "telephone/display/SafeText.h"

namespace telephone {

namespace {

// The number of the style in an escape sequence ESC [ number m (ECMA-48, SGR).
int numberOf(Style style)
{
    switch (style) {
    case Style::kPlain:
        return 0;
    case Style::kBold:
        return 1;
    case Style::kDim:
        return 2;
    case Style::kBlue:
        return 34;
    case Style::kMagenta:
        return 35;
    case Style::kRed:
        return 31;
    case Style::kGreen:
        return 32;
    case Style::kYellow:
        return 33;
    }
    return 0;
}

}  // namespace

StyledText& StyledText::add(std::string_view text, Style style)
{
    if (!text.empty()) {
        pieces_.push_back({std::string(text), style});
    }
    return *this;
}

StyledText& StyledText::add(StyledText const& text)
{
    pieces_.insert(pieces_.end(), text.pieces_.begin(), text.pieces_.end());
    return *this;
}

StyledText& StyledText::cell(std::string_view text, std::size_t width, Style style)
{
    std::size_t const columns = columnsOf(text);
    std::size_t const blanks = columns < width ? width - columns : 2;
    return add(text, style).add(std::string(blanks, ' '));
}

StyledText StyledText::dimmed() const
{
    StyledText result(*this);
    for (Piece& piece : result.pieces_) {
        piece.style = Style::kDim;
    }
    return result;
}

std::string StyledText::line(DisplayOptions const& options) const
{
    StyledText finished(*this);
    finished.dropBlanksAtEnd();
    if (options.ascii) {
        for (Piece& piece : finished.pieces_) {
            piece.text = asciiText(piece.text);
        }
    }
    if (options.width > 0) {
        finished.cut(options.width, options.ascii ? "..." : "…");
    }
    std::string result;
    for (Piece const& piece : finished.pieces_) {
        bool const isColoured = options.colour && piece.style != Style::kPlain;
        result += isColoured ? fmt::format("\x1b[{}m{}\x1b[0m", numberOf(piece.style), piece.text) : piece.text;
    }
    return result;
}

std::size_t StyledText::columns() const
{
    std::size_t sum = 0;
    for (Piece const& piece : pieces_) {
        sum += columnsOf(piece.text);
    }
    return sum;
}

void StyledText::cut(std::size_t width, std::string_view ending)
{
    if (columns() <= width) {
        return;
    }
    std::size_t left = width - std::min(width, columnsOf(ending));
    std::vector<Piece> kept;
    for (Piece const& piece : pieces_) {
        std::string const text(beginningOf(piece.text, left));
        left -= columnsOf(text);
        kept.push_back({text, piece.style});
        if (text.size() < piece.text.size()) {
            break;
        }
    }
    pieces_ = std::move(kept);
    add(ending);
}

void StyledText::dropBlanksAtEnd()
{
    while (!pieces_.empty()) {
        std::string& text = pieces_.back().text;
        text.erase(text.find_last_not_of(' ') + 1);
        if (!text.empty()) {
            return;
        }
        pieces_.pop_back();
    }
}

}  // namespace telephone
