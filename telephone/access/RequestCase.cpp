#include "telephone/access/RequestCase.h"

#include <algorithm>

#include <spdlog/fmt/fmt.h>

#include "telephone/protocol/MessageText.h"
#include "telephone/protocol/Vocabulary.h"

namespace telephone {

RequestCase::RequestCase(std::string_view text, RequestRunner::Reply const& reply,
                         std::function<TelephoneState const&()> const& state)
    : text_(text.substr(0, text.find('\0')))
    , method_(word("Method"))
    , reply_(reply)
    , state_(state)
{}

std::optional<std::string_view> RequestCase::value(std::string_view tag) const
{
    auto const opening = text_.find(fmt::format("<{}>", tag));
    if (opening == std::string_view::npos) {
        return std::nullopt;
    }
    auto const start = opening + tag.size() + 2;
    auto const end = text_.find(fmt::format("</{}>", tag), start);
    return end == std::string_view::npos ? std::nullopt : std::optional(text_.substr(start, end - start));
}

std::string_view RequestCase::word(std::string_view tag) const
{
    return value(tag).value_or(std::string_view());
}

std::optional<long long> RequestCase::number(std::string_view tag) const
{
    return wholeNumber(word(tag));
}

bool RequestCase::flag(std::string_view tag) const
{
    return !value(tag) || number(tag).value_or(0) != 0;
}

bool RequestCase::failed() const
{
    return reply_.answer && reportsFailure(*reply_.answer);
}

bool RequestCase::succeeded() const
{
    return reply_.answer == "sfiSuccess";
}

bool RequestCase::met(RefusalKind kind) const
{
    return std::ranges::any_of(reply_.refusals, [kind](Refusal const& each) { return each.kind == kind; });
}

}  // namespace telephone
