// Why the store can't be opened, and what to do about it.
#pragma once

#include <stdexcept>

namespace telephone {

class StoreError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

}  // namespace telephone
