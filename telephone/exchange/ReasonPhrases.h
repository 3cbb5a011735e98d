// The reason phrases of the statuses with which the exchange refuses (RFC 3261 section 21). Constant; any thread.
#pragma once

#include <algorithm>
#include <array>

namespace telephone::exchange {

struct ReasonPhrase
{
    int status;
    char const* phrase;
};

inline constexpr std::array kReasonPhrases{
    ReasonPhrase{400, "Bad Request"},
    ReasonPhrase{401, "Unauthorized"},
    ReasonPhrase{403, "Forbidden"},
    ReasonPhrase{404, "Not Found"},
    ReasonPhrase{408, "Request Timeout"},
    ReasonPhrase{410, "Gone"},
    ReasonPhrase{480, "Temporarily Unavailable"},
    ReasonPhrase{486, "Busy Here"},
    ReasonPhrase{488, "Not Acceptable Here"},
    ReasonPhrase{500, "Server Internal Error"},
    ReasonPhrase{503, "Service Unavailable"},
    ReasonPhrase{600, "Busy Everywhere"},
    ReasonPhrase{603, "Decline"},
    ReasonPhrase{604, "Does Not Exist Anywhere"},
};

// "Refused" for a status without a row.
constexpr char const* reasonPhrase(int status)
{
    auto const* const found = std::ranges::find(kReasonPhrases, status, &ReasonPhrase::status);
    return found == kReasonPhrases.end() ? "Refused" : found->phrase;
}

}  // namespace telephone::exchange
