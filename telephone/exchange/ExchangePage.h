// docs/exchange.md, generated from the tables of the exchange: the kinds of steps and the built-in numbers.
#pragma once

#include <string>

namespace telephone::exchange {

std::string exchangePage();

}  // namespace telephone::exchange
