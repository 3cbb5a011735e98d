// A request with its reply, as the rules for reasons look at it: values are read as the service reads them. Views into
// the texts it is made of. Lives for one request; any thread.
#pragma once

#include <functional>
#include <optional>
#include <string_view>

#include "telephone/framework/RequestRunner.h"
#include "telephone/protocol/TelephoneState.h"

namespace telephone {

class RequestCase
{
public:
    RequestCase(std::string_view text, RequestRunner::Reply const& reply,
                std::function<TelephoneState const&()> const& state);

    // Up to a NUL, which ends the text for the service.
    [[nodiscard]] std::string_view text() const { return text_; }
    // Empty when the text names none.
    [[nodiscard]] std::string_view method() const { return method_; }
    [[nodiscard]] RequestRunner::Reply const& reply() const { return reply_; }

    // The text between the first opening tag of that name and the first closing tag after it, if both exist.
    [[nodiscard]] std::optional<std::string_view> value(std::string_view tag) const;
    // Empty when the element is missing.
    [[nodiscard]] std::string_view word(std::string_view tag) const;
    // Nothing when the element is missing or not a number.
    [[nodiscard]] std::optional<long long> number(std::string_view tag) const;
    // A missing flag is true, one that is not a number false.
    [[nodiscard]] bool flag(std::string_view tag) const;

    // Whether the answer says that the request failed; a query can do neither.
    [[nodiscard]] bool failed() const;
    [[nodiscard]] bool succeeded() const;
    // Whether a refusal of that kind was reported.
    [[nodiscard]] bool met(RefusalKind kind) const;

    [[nodiscard]] TelephoneState const& state() const { return state_(); }

private:
    std::string_view text_;
    std::string_view method_;
    RequestRunner::Reply const& reply_;
    std::function<TelephoneState const&()> const& state_;
};

}  // namespace telephone
