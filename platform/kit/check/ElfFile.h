/// @file
/// What telephone-check reads of a program or shared library.
#pragma once

#include <optional>
#include <set>
#include <string>
#include <vector>

/// The symbols that an ELF file needs and offers while it runs, and the service's version if it is the service. Files
/// of 32 and 64 bits in the byte order of this machine can be read, so that one for another processor can be checked
/// too.
struct ElfFile
{
    /// Reads a file. Throws std::runtime_error with a sentence that names the file, if it cannot be read.
    static ElfFile read(std::string const& path);

    /// Symbols that somebody else must define and that no version ties to a system library, in the order of the file.
    std::vector<std::string> needed;
    std::set<std::string> exported;      ///< symbols that others can use
    bool exportsFunctions = false;       ///< whether one of them is a function of its own
    std::optional<std::string> version;  ///< of the note ".note.communications_service"
};
