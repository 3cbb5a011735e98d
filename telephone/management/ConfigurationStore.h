// The stored settings, in an SQLite file with a write-ahead log and full synchronisation: an accepted write
// survives a crash and a power failure. Without a path the store is in memory.
//
// Settings owns it and calls it from one thread at a time. No call waits longer than the busy timeout. Other programs,
// and other telephones, may use the same file at the same time.
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "telephone/base/Refusal.h"
#include "telephone/management/Sqlite.h"
#include "telephone/management/StoreFile.h"

namespace telephone {

struct StoreLimits
{
    std::chrono::milliseconds busyTimeout{250};
    int pages = 4096;  // of 4 kB
};

class ConfigurationStore
{
public:
    using Values = std::map<std::string, std::string, std::less<>>;
    struct Change
    {
        std::string name;
        std::optional<std::string> value;  // none: removes the name
    };
    // Opens the file, and creates it if it does not exist. An empty path: a store in memory. Refused when the file is
    // damaged, locked, not a store of ours, or cannot be written.
    [[nodiscard]] static Outcome<std::unique_ptr<ConfigurationStore>> open(std::string path,
                                                                           StoreLimits const& limits = {});

    // Everything that is stored.
    [[nodiscard]] Outcome<Values> load();
    // Writes all changes or none. They are on the disk when it returns a success.
    [[nodiscard]] Outcome<> write(std::vector<Change> const& changes);
    // The device as other programs know it, "f81d4fae-7dec-41d0-a765-00a0c91e6bf6": made once, and the same as long as
    // the store is there.
    [[nodiscard]] Outcome<std::string> deviceUuid();
    // A fault: while the store is full, every write is refused. Any thread.
    void setFull(bool full) { isFull_ = full; }
    // Whether another connection has written since the last call of `load` or of this.
    bool changedByOthers();

private:
    explicit ConfigurationStore(std::string path)
        : path_(std::move(path))
    {}

    // Each returns an SQLite result code.
    int connect(StoreLimits const& limits);
    int checkContent();
    int writeAll(std::vector<Change> const& changes);

    std::int64_t dataVersion();
    Outcome<> checkPresent() const;
    tl::unexpected<Refusal> openRefusal(int result) const;
    tl::unexpected<Refusal> writeRefusal(int result) const;

    std::string path_;
    sqlite::Connection connection_;
    FileIdentity file_;
    FileIdentity log_;  // of the write-ahead log: the file without it is not the whole store
    std::int64_t dataVersion_ = 0;
    std::atomic<bool> isFull_{false};
};

}  // namespace telephone
