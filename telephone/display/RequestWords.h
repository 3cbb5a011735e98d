// A request as a person reads it: its name, its line and call, and its other parameters. Pure functions.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "CommunicationsServiceRequests.h"

namespace telephone {

struct RequestValue
{
    std::string tag;
    std::string text;  // as a person types it: in quotation marks if it is not one plain word
};

struct RequestWords
{
    RequestDescription const* description = nullptr;  // null: unknown
    std::string name;                                 // its name; the whole text, made safe, of what is not a request
    std::string line;                                 // empty: none given
    std::string call;                                 // empty: none given, or 0
    std::vector<RequestValue> values;                 // all other parameters, in the order given
    std::string body;                                 // in a few words, "MonitorStart, 204 bytes"; empty: none
};

RequestWords requestWords(std::string_view text);

// "HoldCall 4711 call 1 Manual=1"; any other text as it stands, made safe.
std::string requestInWords(std::string_view text);

}  // namespace telephone
