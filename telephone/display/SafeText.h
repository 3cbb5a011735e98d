// Text from the wire, made harmless for a terminal: whatever a far end sends, it can neither control the terminal nor
// rewrite or hide a part of the line that it stands in. Pure functions.
//
// Control characters and bytes that are not UTF-8 become \x1b and \xff; characters that control, change the direction
// of text or cannot be seen become \u{202e}. Everything else stays as it is.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace telephone {

std::string safeText(std::string_view text);
// Also blanks of every kind, so that the result is one word: an address.
std::string safeWord(std::string_view text);
// In quotation marks, with \" and \\ inside: a text that somebody else wrote.
std::string quotedText(std::string_view text);
// Everything but ASCII as \u{e9}, for a terminal without UTF-8. The text must be safe already.
std::string asciiText(std::string_view text);

// The width on a terminal: accents take no column, wide characters two. The text must be safe.
std::size_t columnsOf(std::string_view text);
// The longest beginning that fits.
std::string_view beginningOf(std::string_view text, std::size_t columns);

}  // namespace telephone
