// What a program must present to use the telephone over HTTP: a new random text for each start, in a file that only its
// owner can read. HttpServer owns it. Constant once made: any thread may compare.
#pragma once

#include <string>
#include <string_view>

#include "telephone/base/Refusal.h"

namespace telephone {

class AccessToken
{
public:
    // Draws 128 random bits and writes them to a new file of mode 0600, in place of the file that a telephone which was
    // killed has left. Refused if the file cannot be written.
    [[nodiscard]] static Outcome<AccessToken> create(std::string file);
    // Removes the file.
    ~AccessToken();
    AccessToken(AccessToken&& other) noexcept;
    AccessToken& operator=(AccessToken&&) = delete;

    // Whether both are the same. Takes equally long for every text of the token's length.
    [[nodiscard]] bool matches(std::string_view text) const;
    // 32 hexadecimal digits.
    [[nodiscard]] std::string const& text() const { return text_; }

private:
    AccessToken(std::string file, std::string text);

    std::string file_;  // empty: moved from
    std::string text_;
};

}  // namespace telephone
