// Texts from the wire: anybody may have written them. Pure functions; any thread.
#pragma once

#include <string>
#include <string_view>

namespace telephone::sip {

// The value of a header on one line: each line break, with the blanks around it, becomes one blank (RFC 3261 section
// 7.3.1).
std::string unfolded(std::string_view value);

// A text for events and people: unfolded, without control characters, and with (round) brackets for <pointed> ones. The
// library writes texts into events unchanged, where pointed brackets would be elements.
std::string plainText(std::string_view text);

// A SIP message for the log: digest responses and the keys of media streams are left out.
std::string withoutSecrets(std::string_view message);

}  // namespace telephone::sip
