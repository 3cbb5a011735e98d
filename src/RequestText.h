// The text of one request as the handlers read it: values by the name of their element. The invoker makes one for each
// request; it refers to the caller's text and must not outlive it.
//
// A parameter is looked for a few times in a row, so the places of all "<" are found once. A text with more of them
// than a request of ours can have is searched from its beginning each time, with the same result.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

class RequestText
{
public:
    static constexpr int kMissingInteger = -1;

    explicit RequestText(std::string_view text);

    std::string_view whole() const { return text_; }

    // What stands between the first opening tag of that name and the first closing tag after it, if both are there.
    // A name holds no "<" and no ">".
    std::optional<std::string_view> value(std::string_view name) const;

    // Missing: the empty text.
    std::string text(std::string_view name) const;
    // Missing: kMissingInteger.
    int integer(std::string_view name) const;
    // Everything but 0 is true, and so a missing one is too.
    bool flag(std::string_view name) const;
    // True for "TRUE" alone.
    bool word(std::string_view name) const;

private:
    static constexpr std::size_t kMaximumPlaces = 32;

    bool isAt(std::size_t place, std::string_view name) const;
    std::optional<std::string_view> search(std::string_view name) const;

    std::string_view text_;
    std::array<std::uint32_t, kMaximumPlaces> places_;  // of every "<", in order; the first count_ are set
    std::size_t count_ = 0;
    bool allPlacesKnown_ = false;
};
