// The settings that are kept, in an SQLite file: write-ahead log, full synchronisation, so that what `write` accepted
// survives the end of the process and of the power. Without a path it lives in memory.
//
// Settings owns it and calls it from one thread at a time. Nothing here waits longer than the busy timeout. Another
// program, and another telephone, may use the same file meanwhile.
#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "telephone/management/SettingOutcome.h"
#include "telephone/management/Sqlite.h"
#include "telephone/management/StoreFile.h"

namespace telephone {

class ConfigurationStore
{
public:
    using Values = std::map<std::string, std::string, std::less<>>;
    struct Change
    {
        std::string name;
        std::optional<std::string> value;  // none: remove
    };
    struct Limits
    {
        std::chrono::milliseconds busyTimeout{250};
        int pages = 4096;  // of 4 kB
    };

    // Throws StoreError with what to do when the file is damaged, foreign, locked or can't be written.
    explicit ConfigurationStore(std::string path);
    ConfigurationStore(std::string path, Limits limits);

    // All that is stored. Throws StoreError.
    Values load();
    // All or none, on the disk when it returns an acceptance.
    SettingOutcome write(std::vector<Change> const& changes);
    // Whether another connection has written since the last call of `load` or of this.
    bool changedByOthers();
    std::string const& path() const { return path_; }

private:
    void open(Limits const& limits);
    void checkContent();
    std::int64_t dataVersion();
    SettingOutcome refusal(int result) const;
    SettingOutcome checkPresent() const;
    int writeAll(std::vector<Change> const& changes);
    [[noreturn]] void failOpen(int result) const;

    std::string path_;
    sqlite::Connection connection_;
    FileIdentity file_;
    FileIdentity log_;  // the write-ahead log: without it the file alone is not the store
    std::int64_t dataVersion_ = 0;
};

}  // namespace telephone
