// Reads values out of a text of key=value pairs that are separated by ":". A small tool for other components; the
// service itself does not use it.
#pragma once

#include <string>

class __attribute__((visibility("default"))) ParamaterExtractor
{
public:
    // Keeps a copy of the text up to its first NUL.
    explicit ParamaterExtractor(std::string const& text);
    virtual ~ParamaterExtractor();

    // The value of the first pair that contains "key="; empty when there is none. As many characters as "key=" has are
    // cut from the front of that pair, wherever in it the key stands.
    std::string getParamaterAsString(std::string const& key) const;
    // The same as a decimal number, held to the range of 32 bits; 0 when there is none.
    int getParamaterAsLong(std::string const& key) const;

private:
    std::string text_;
};
