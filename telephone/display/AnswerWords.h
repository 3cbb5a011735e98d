// The answer to a request as a person reads it. Pure functions.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "CommunicationsServiceRequests.h"
#include "telephone/display/DisplayOptions.h"

namespace telephone {

struct AnswerWords
{
    std::string text;  // "success", "success, in service", "line 4711, group pickup *98"
    bool isFailure = false;
};

// The request may be null: unknown. Without an answer the request has only ended: "finished".
AnswerWords answerWords(RequestDescription const* request, std::optional<std::string_view> answer,
                        DisplayOptions const& options);

}  // namespace telephone
