// One complete request for each method, made from the table of requests, as a client would send it.
#pragma once

#include <string>
#include <string_view>
#include <vector>

// A parameter and its value.
struct RequestValue
{
    std::string_view tag;
    std::string value;
    bool isNumber;
};

struct SampleRequest
{
    std::string_view method;
    std::vector<RequestValue> values;
    std::string text;  // in the flat tag syntax
};

// All of them, in the table's order.
std::vector<SampleRequest> const& sampleRequests();

// A request of one method, found by name.
SampleRequest const& sampleRequest(std::string_view method);
