/// @file
/// How a device identity names a line and one of its appearances.
#pragma once

#include <string>

/// Takes device identities apart. The telephone defines it. Thread: any, any lock held.
class ClientUtils
{
public:
    /// Splits a line identifier into that of the line and an appearance index, for example "4711#2".
    /// @param lineURI the identifier, with or without an index
    /// @param baseURI receives the identifier of the line; the whole text when it holds no index
    /// @param index receives the index, 1 to 255; left as it is when there is none
    static void splitMCADeviceIndex(std::string const& lineURI, std::string& baseURI, int& index);
};
