// Writes lists as text for event messages. The form is the framework's; an event carries it unchanged.
#pragma once

#include <string>
#include <vector>

class Serializer
{
public:
    static std::string serialize(std::vector<int> const& values);
    static std::string serialize(std::vector<std::string> const& values);
};
