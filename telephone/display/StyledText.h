// A line in the making: pieces of text with a style. It can be padded and cut while it is still known how wide it is,
// and is coloured at the end. One thread.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "telephone/display/DisplayOptions.h"

namespace telephone {

enum class Style
{
    kPlain,
    kBold,
    kDim,
    kBlue,
    kMagenta,
    kRed,
    kGreen,
    kYellow,
};

class StyledText
{
public:
    // The text must be safe (SafeText.h).
    StyledText& add(std::string_view text, Style style = Style::kPlain);
    StyledText& add(StyledText const& text);
    // A column: padded to the width, which includes the blank before the next column. A text that is too long pushes
    // the rest to the right, after two blanks.
    StyledText& cell(std::string_view text, std::size_t width, Style style = Style::kPlain);

    // The same text, all of it dim.
    [[nodiscard]] StyledText dimmed() const;
    // Without blanks at the end, cut to the width, in ASCII and in colour as the options say.
    [[nodiscard]] std::string line(DisplayOptions const& options) const;

private:
    struct Piece
    {
        std::string text;
        Style style;
    };

    [[nodiscard]] std::size_t columns() const;
    void cut(std::size_t width, std::string_view ending);
    void dropBlanksAtEnd();

    std::vector<Piece> pieces_;
};

}  // namespace telephone
