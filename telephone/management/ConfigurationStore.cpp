#include "telephone/management/ConfigurationStore.h"

#include <utility>

#include <spdlog/fmt/fmt.h>

#include "telephone/management/StoreError.h"

namespace telephone {

namespace {

constexpr char const* kTable = "CREATE TABLE IF NOT EXISTS setting(name TEXT PRIMARY KEY, value TEXT NOT NULL) "
                               "STRICT, WITHOUT ROWID";

int primaryCode(int result)
{
    return result & 0xff;
}

}  // namespace

ConfigurationStore::ConfigurationStore(std::string path)
    : ConfigurationStore(std::move(path), Limits{})
{}

ConfigurationStore::ConfigurationStore(std::string path, Limits limits)
    : path_(std::move(path))
{
    if (!path_.empty()) {
        prepareStoreFile(path_);
    }
    open(limits);
    if (path_.empty()) {
        sqlite::execute(connection_.get(), kTable);
        return;
    }
    checkContent();
    file_ = identityOf(path_);
    log_ = identityOf(path_ + "-wal");
}

void ConfigurationStore::open(Limits const& limits)
{
    sqlite3* opened = nullptr;
    int result = sqlite3_open_v2(path_.empty() ? ":memory:" : path_.c_str(), &opened,
                                 SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX, nullptr);
    connection_.reset(opened);
    if (result == SQLITE_OK) {
        sqlite3_extended_result_codes(opened, 1);
        sqlite3_busy_timeout(opened, static_cast<int>(limits.busyTimeout.count()));
        auto const sql = fmt::format("PRAGMA synchronous=FULL; PRAGMA max_page_count={};", limits.pages);
        result = sqlite::execute(opened, sql.c_str());
    }
    if (result != SQLITE_OK) {
        failOpen(result);
    }
    if (!path_.empty() && sqlite3_db_readonly(opened, "main") == 1) {
        failOpen(SQLITE_READONLY);
    }
}

void ConfigurationStore::checkContent()
{
    sqlite::Statement mode(connection_.get(), "PRAGMA journal_mode=WAL");
    if (auto const result = mode.step(); result != SQLITE_ROW) {
        failOpen(result);
    }
    sqlite::Statement check(connection_.get(), "PRAGMA quick_check(1)");
    if (auto const result = check.step(); result != SQLITE_ROW) {
        failOpen(result);
    }
    if (check.text(0) != "ok") {
        failOpen(SQLITE_CORRUPT);
    }
    sqlite::Statement table(connection_.get(), "SELECT name, value FROM setting LIMIT 1");
    if (auto const result = table.step(); result != SQLITE_ROW && result != SQLITE_DONE) {
        failOpen(result == SQLITE_ERROR ? SQLITE_CORRUPT : result);
    }
}

void ConfigurationStore::failOpen(int result) const
{
    switch (primaryCode(result)) {
    case SQLITE_CORRUPT:
    case SQLITE_NOTADB:
        throw StoreError(fmt::format("store \"{}\" is damaged; it is left as it is: put a copy back, move it away to "
                                     "start with a new one, or name another file in store.path",
                                     path_));
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
        throw StoreError(fmt::format(
            "store \"{}\" is locked by another program: end that one, or name another file in store.path", path_));
    default:
        throw StoreError(
            fmt::format("store \"{}\" can't be opened: {} ({}); give this user the right to write the file "
                        "and its folder, or name another file in store.path",
                        path_, sqlite3_errstr(result), sqlite3_errmsg(connection_.get())));
    }
}

ConfigurationStore::Values ConfigurationStore::load()
{
    dataVersion_ = dataVersion();
    Values values;
    sqlite::Statement rows(connection_.get(), "SELECT name, value FROM setting");
    int result = rows.step();
    for (; result == SQLITE_ROW; result = rows.step()) {
        values.emplace(rows.text(0), rows.text(1));
    }
    if (result != SQLITE_DONE) {
        failOpen(result);
    }
    return values;
}

bool ConfigurationStore::changedByOthers()
{
    auto const version = dataVersion();
    return std::exchange(dataVersion_, version) != version;
}

std::int64_t ConfigurationStore::dataVersion()
{
    sqlite::Statement version(connection_.get(), "PRAGMA data_version");
    return version.step() == SQLITE_ROW ? version.number(0) : dataVersion_;
}

SettingOutcome ConfigurationStore::write(std::vector<Change> const& changes)
{
    if (auto gone = checkPresent(); !gone) {
        return gone;
    }
    int result = sqlite::execute(connection_.get(), "BEGIN IMMEDIATE");
    if (result == SQLITE_OK) {
        result = writeAll(changes);
    }
    if (result == SQLITE_OK) {
        result = sqlite::execute(connection_.get(), "COMMIT");
    }
    if (result != SQLITE_OK) {
        auto refused = refusal(result);
        if (sqlite3_get_autocommit(connection_.get()) == 0) {
            sqlite::execute(connection_.get(), "ROLLBACK");
        }
        return refused;
    }
    return checkPresent();  // removed meanwhile: what was written is lost with the file
}

int ConfigurationStore::writeAll(std::vector<Change> const& changes)
{
    for (auto const& change : changes) {
        sqlite::Statement statement(connection_.get(), change.value ? "INSERT OR REPLACE INTO setting VALUES(?1, ?2)"
                                                                    : "DELETE FROM setting WHERE name = ?1");
        statement.bind(1, change.name);
        if (change.value) {
            statement.bind(2, *change.value);
        }
        if (auto const result = statement.step(); result != SQLITE_DONE) {
            return result;
        }
    }
    return SQLITE_OK;
}

SettingOutcome ConfigurationStore::checkPresent() const
{
    if (path_.empty()) {
        return {};
    }
    if (identityOf(path_) == file_ && identityOf(path_ + "-wal") == log_) {
        return isWritable(path_) ? SettingOutcome{} : refusal(SQLITE_READONLY);
    }
    return {
        SettingRefusal::kStoreGone,
        fmt::format("the store \"{}\" was removed or replaced while the telephone runs: restart the telephone", path_)};
}

SettingOutcome ConfigurationStore::refusal(int result) const
{
    switch (primaryCode(result)) {
    case SQLITE_FULL:
        return {SettingRefusal::kStoreFull,
                fmt::format("the store \"{}\" is full: make room on its disk, or reset settings", path_)};
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
        return {SettingRefusal::kStoreLocked,
                fmt::format("the store \"{}\" is locked by another program: try again", path_)};
    case SQLITE_READONLY:
        return {SettingRefusal::kStoreReadOnly,
                fmt::format("the store \"{}\" is read-only: give this user the right to write it", path_)};
    default:
        return {SettingRefusal::kStoreFailed,
                fmt::format("the store \"{}\" can't be written: {}", path_, sqlite3_errmsg(connection_.get()))};
    }
}

}  // namespace telephone
