/// @file
/// Lists as text, for event messages.
#pragma once

#include <string>
#include <vector>

/// Writes a list as one text. The form is the framework's; an event carries it unchanged. Thread: any.
class Serializer
{
public:
    /// Writes numbers.
    /// @return The list's text; empty for an empty list.
    static std::string serialize(std::vector<int> const& values);
    /// Writes texts, so that the receiver can tell them apart.
    /// @return The list's text; empty for an empty list.
    static std::string serialize(std::vector<std::string> const& values);
};
