/// @file
/// Reads values out of a text of "key=value" pairs that are separated by ":".
#pragma once

#include <string>

/// A small tool for other components; the service itself does not use it. Thread: any; constant once made.
class __attribute__((visibility("default"))) ParamaterExtractor
{
public:
    /// Keeps a copy of the text up to its first NUL.
    explicit ParamaterExtractor(std::string const& text);
    /// May be a base.
    virtual ~ParamaterExtractor();

    /// Reads the value of the first pair that contains "key=". As many characters as "key=" has are cut from the front
    /// of that pair, wherever in it the key stands.
    /// @return Empty when no pair does, and for an empty key.
    std::string getParamaterAsString(std::string const& key) const;
    /// Reads the same value as a decimal number.
    /// @return The number, held to the range of 32 bits; 0 when there is none.
    int getParamaterAsLong(std::string const& key) const;

private:
    std::string text_;
};
