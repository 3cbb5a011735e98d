// The least work that could answer a request: its length, one pass over the text that finds the elements, one
// conversion for each number, one comparison that finds the method, a virtual call, the answer. It knows beforehand
// which request comes, so that no real invoker can be faster; it is what the invoker is measured against.
#pragma once

#include <string>
#include <string_view>

#include "platform/framework/InvokerResponse.h"

// What the floor calls: as many arguments as a request can carry, handed over as they were found.
class FloorTarget
{
public:
    static constexpr int kMaximum = 8;

    virtual ~FloorTarget() = default;
    virtual int call(std::string_view const* texts, int const* numbers, int count) = 0;
};

// `expected` is the method that the text names, `isNumber` says which of its elements are numbers, in their order.
void answerAtLeastCost(FloorTarget& target, char const* message, std::string_view expected, bool const* isNumber,
                       InvokerResponse& response);
