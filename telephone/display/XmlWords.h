// What a body says in a few words; the whole of it is for machines. Pure functions.
#pragma once

#include <string>
#include <string_view>

#include "telephone/display/DisplayOptions.h"

namespace telephone {

// The first element of a body and its size: "MonitorStart, 204 bytes". Only the size if it does not begin with an
// element.
std::string bodyWords(std::string_view body);

// The parties of a conference (RFC 4575): "3 parties: 4711, 100 (on hold), 103". A document without any: "document
// names nobody, 94 bytes".
std::string conferenceWords(std::string_view document, DisplayOptions const& options);

}  // namespace telephone
