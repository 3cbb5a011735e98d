// A step of a script that did not hold. The text says what was expected and what came instead.
#pragma once

#include <stdexcept>

namespace telephone {

class ScriptFailure : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

}  // namespace telephone
