// The file of the configuration store before SQLite opens it: checks that the file is ours, and creates a new one.
//
// Nothing here ever writes into a file that exists and is not empty.
#pragma once

#include <string>

#include "telephone/base/Refusal.h"

namespace telephone {

// In the header of the database: the mark of our files (offset 68) and the layout that this program writes (offset 60).
constexpr int kStoreApplicationId = 0x54535452;
constexpr int kStoreLayout = 1;

// Creates the file if it does not exist or is empty, in one step: a crash at any moment leaves no partial store.
// Refused when the file belongs to another program or a newer telephone, its header is damaged, or it cannot be
// created.
[[nodiscard]] Outcome<> prepareStoreFile(std::string const& path);

// Distinguishes a file from another one that took its place; all zero if there is no file.
struct FileIdentity
{
    unsigned long device = 0;
    unsigned long inode = 0;

    bool operator==(FileIdentity const&) const = default;
};
FileIdentity identityOf(std::string const& path);

// Whether this user may write the file. If nobody may, root may not either.
bool isWritable(std::string const& path);

}  // namespace telephone
