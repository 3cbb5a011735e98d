// How a device identity names a line and one of its appearances.
#pragma once

#include <string>

class ClientUtils
{
public:
    // Splits a line identifier into the line's own one and an appearance index. Without an index in it the line's own
    // one is the whole text, and `index` is left as it is.
    static void splitMCADeviceIndex(std::string const& lineURI, std::string& baseURI, int& index);
};
