// What a program must present to use the telephone over HTTP: a random text in a file that only its owner can read, new
// for each start. The browsers' own is kept, so that a page survives a restart. HttpServer owns both. Constant once
// made: any thread may compare.
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
    // The token in the file, which stays. If there is none, or others could read or write it, as create.
    [[nodiscard]] static Outcome<AccessToken> keep(std::string const& file);
    // Removes the file of a token that is not kept.
    ~AccessToken();
    AccessToken(AccessToken&& other) noexcept;
    AccessToken& operator=(AccessToken&&) = delete;

    // Whether both are the same. Takes equally long for every text of the token's length.
    [[nodiscard]] bool matches(std::string_view text) const;
    // 32 hexadecimal digits.
    [[nodiscard]] std::string const& text() const { return text_; }

private:
    AccessToken(std::string file, std::string text);

    std::string file_;  // empty: kept, or moved from
    std::string text_;
};

}  // namespace telephone
