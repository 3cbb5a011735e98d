// The wording for the tables of requests and events: the same in `telephone describe` and on the generated pages. Pure
// functions.
#pragma once

#include <string>
#include <string_view>

#include "CommunicationsServiceEvents.h"
#include "CommunicationsServiceRequests.h"

namespace telephone {

// "number", "text", "flag", "word", "list", "body": one word for a kind of value.
std::string_view kindName(EventElementKind kind);
std::string_view kindName(RequestParameterKind kind);
std::string_view needName(RequestNeed need);
std::string_view sourceName(EventSource source);

// The possible values: "1 or 0", "number, call id", "SIP address", "number of CallState". The name of the
// enumeration is given, so that a page can make it a link; it is empty where there is none.
std::string valueForm(EventElement const& element, std::string const& enumeration);
std::string valueForm(RequestParameter const& parameter, std::string const& enumeration);

// "0 to 9", "1 or more"; empty for a range that is not given.
std::string rangeText(RequestRange const& range);

// The value that the service reads when the element is missing: "-1", "true", "empty".
std::string_view missingValue(RequestParameterKind kind);
// That value, and its effect: "-1: refused".
std::string missingText(RequestParameter const& parameter);
// The effect of a value that does not exist, is out of range or is not a number; may be empty.
std::string wrongText(RequestParameter const& parameter);

// "a result word", "a result word and a value, `...,true|false`".
std::string answerText(RequestDescription const& request);

// A complete request, with the sample of each parameter.
std::string sampleOf(RequestDescription const& request);
// An event with "..." for each value.
std::string formOf(EventDescription const& event);

}  // namespace telephone
