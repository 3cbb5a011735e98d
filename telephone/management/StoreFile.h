// The file of the configuration store before SQLite sees it: is it ours, and how a new one comes to be.
//
// Nothing here ever writes into a file that exists and is not empty.
#pragma once

#include <string>

namespace telephone {

// Mark of our files in the header of the database (offset 68), and the layout that this program writes (offset 60).
constexpr int kStoreApplicationId = 0x54535452;
constexpr int kStoreLayout = 1;

// Makes the file when there is none or it is empty: whole, in one step, so that an end at any moment leaves no half
// store. Throws StoreError when the file is foreign, damaged in its header, of a newer telephone, or can't be made.
void prepareStoreFile(std::string const& path);

// What tells one file from another that took its place; all zero when there is none.
struct FileIdentity
{
    unsigned long device = 0;
    unsigned long inode = 0;

    bool operator==(FileIdentity const&) const = default;
};
FileIdentity identityOf(std::string const& path);

// Whether this user may write the file. A file that nobody may write is not written by root either.
bool isWritable(std::string const& path);

}  // namespace telephone
