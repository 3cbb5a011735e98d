// The least work that could answer a request: its length, one pass over the text that finds the elements, one
// conversion for each number, one comparison that finds the method, a virtual call, the answer. It knows the request in
// advance, so no real invoker can be faster.
#pragma once

#include <string>
#include <string_view>

#include "platform/framework/InvokerResponse.h"

// Called by the floor with as many arguments as a request can carry.
class FloorTarget
{
public:
    static constexpr int kMaximum = 8;

    virtual ~FloorTarget() = default;
    virtual int call(std::string_view const* texts, int const* numbers, int count) = 0;
};

// `expected` is the method of the text; `isNumber` says for each of its elements, in order, whether it is a number.
void answerAtLeastCost(FloorTarget& target, char const* message, std::string_view expected, bool const* isNumber,
                       InvokerResponse& response);
