// The OpenAPI page of the telephone over HTTP, made from the table of its addresses. Pure function.
#pragma once

#include <string>

namespace telephone {

// OpenAPI 3.1, as indented JSON.
std::string openApiPage();

}  // namespace telephone
