// What a person wrote cannot be done; the text says why, and what was probably meant.
#pragma once

#include <stdexcept>

namespace telephone {

class CommandError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

}  // namespace telephone
