// The value of one item of management data.
#pragma once

#include <string>

class DataNode
{
public:
    void setValue(char const* value) { value_ = value; }
    void setValue(std::string& value) { value_ = value; }
    std::string const& value() const { return value_; }

private:
    std::string value_;
};
