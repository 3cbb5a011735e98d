#include "telephone/fleet/Asking.h"

#include <spdlog/fmt/fmt.h>
#include <spdlog/fmt/ranges.h>

#include "telephone/protocol/MessageText.h"
#include "telephone/time/SteadyClock.h"

namespace telephone {

namespace {

constexpr std::chrono::seconds kPatience{10};

}  // namespace

std::vector<Outcome<telephone_client::Reply>>
askEach(FleetTelephones const& telephones, std::function<std::string(FleetTelephone const&)> const& text, int stop)
{
    std::vector<Outcome<>> sent;
    sent.reserve(telephones.size());
    for (FleetTelephone* const each : telephones) {
        sent.push_back(each->send(text(*each)));
    }
    auto const deadline = SteadyClock::now() + kPatience;
    std::vector<Outcome<telephone_client::Reply>> replies;
    for (std::size_t i = 0; i < telephones.size(); ++i) {
        replies.push_back(sent[i].and_then([&] { return telephones[i]->reply(stop, deadline); }));
    }
    return replies;
}

Outcome<std::string> textOf(Outcome<telephone_client::Reply> const& reply)
{
    return reply.and_then([](telephone_client::Reply const& given) -> Outcome<std::string> {
        std::string const answer = given.text.value_or("");
        std::string text = given.reasons.empty() ? answer
                                                 : fmt::format("{}{}{}", answer, answer.empty() ? "" : ": ",
                                                               fmt::join(given.reasons, "; "));
        return reportsFailure(answer) ? refuse(RefusalKind::kNotPermitted, std::move(text))
                                      : Outcome<std::string>(std::move(text));
    });
}

}  // namespace telephone
