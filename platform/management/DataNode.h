/// @file
/// The value of one item of management data.
#pragma once

#include <string>

/// Holds one value. Thread: one at a time.
class DataNode
{
public:
    /// Sets the value; `value` is NUL-terminated and not null.
    void setValue(char const* value) { value_ = value; }
    /// Sets the value.
    void setValue(std::string& value) { value_ = value; }
    /// The value, at first empty.
    /// @return Valid until the next setValue.
    std::string const& value() const { return value_; }

private:
    std::string value_;
};
