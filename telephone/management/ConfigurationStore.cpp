#include "telephone/management/ConfigurationStore.h"

#include <utility>

#include <spdlog/fmt/fmt.h>

#include "telephone/time/VirtualTime.h"

namespace telephone {

namespace {

constexpr char const* kTable = "CREATE TABLE IF NOT EXISTS setting(name TEXT PRIMARY KEY, value TEXT NOT NULL) "
                               "STRICT, WITHOUT ROWID";

constexpr char const* kDeviceTable = "CREATE TABLE IF NOT EXISTS device(uuid TEXT NOT NULL) STRICT";

// RFC 4122 section 4.4.
std::string randomUuid()
{
    auto const high = (randomNumber() & ~std::uint64_t{0xf000}) | 0x4000;
    auto const low = (randomNumber() & ~(std::uint64_t{3} << 62)) | std::uint64_t{1} << 63;
    return fmt::format("{:08x}-{:04x}-{:04x}-{:04x}-{:012x}", high >> 32, high >> 16 & 0xffff, high & 0xffff, low >> 48,
                       low & 0xffff'ffff'ffff);
}

int primaryCode(int result)
{
    return result & 0xff;
}

}  // namespace

Outcome<std::unique_ptr<ConfigurationStore>> ConfigurationStore::open(std::string path, StoreLimits const& limits)
{
    if (!path.empty()) {
        if (auto prepared = prepareStoreFile(path); !prepared) {
            return tl::unexpected(std::move(prepared.error()));
        }
    }
    std::unique_ptr<ConfigurationStore> store(new ConfigurationStore(std::move(path)));
    int result = store->connect(limits);
    if (result == SQLITE_OK) {
        result = store->checkContent();
    }
    if (result != SQLITE_OK) {
        return store->openRefusal(result);
    }
    return store;
}

int ConfigurationStore::connect(StoreLimits const& limits)
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
    if (result == SQLITE_OK && !path_.empty() && sqlite3_db_readonly(opened, "main") == 1) {
        result = SQLITE_READONLY;
    }
    return result;
}

int ConfigurationStore::checkContent()
{
    if (path_.empty()) {
        return sqlite::execute(connection_.get(), kTable);
    }
    sqlite::Statement mode(connection_.get(), "PRAGMA journal_mode=WAL");
    if (auto const result = mode.step(); result != SQLITE_ROW) {
        return result;
    }
    sqlite::Statement check(connection_.get(), "PRAGMA quick_check(1)");
    if (auto const result = check.step(); result != SQLITE_ROW) {
        return result;
    }
    if (check.text(0) != "ok") {
        return SQLITE_CORRUPT;
    }
    sqlite::Statement table(connection_.get(), "SELECT name, value FROM setting LIMIT 1");
    if (auto const result = table.step(); result != SQLITE_ROW && result != SQLITE_DONE) {
        return result == SQLITE_ERROR ? SQLITE_CORRUPT : result;
    }
    file_ = identityOf(path_);
    log_ = identityOf(path_ + "-wal");
    return SQLITE_OK;
}

tl::unexpected<Refusal> ConfigurationStore::openRefusal(int result) const
{
    switch (primaryCode(result)) {
    case SQLITE_CORRUPT:
    case SQLITE_NOTADB:
        return refuse(RefusalKind::kUnavailable,
                      fmt::format("store \"{}\" is damaged and was left unchanged: restore a copy, move it away to "
                                  "start with a new one, or name another file in store.path",
                                  path_));
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
        return refuse(RefusalKind::kUnavailable,
                      fmt::format("store \"{}\" is locked by another program: end that program, or name another file "
                                  "in store.path",
                                  path_));
    default:
        return refuse(RefusalKind::kUnavailable,
                      fmt::format("store \"{}\" cannot be opened: {} ({}); give this user the right to write the file "
                                  "and its folder, or name another file in store.path",
                                  path_, sqlite3_errstr(result), sqlite3_errmsg(connection_.get())));
    }
}

Outcome<ConfigurationStore::Values> ConfigurationStore::load()
{
    dataVersion_ = dataVersion();
    Values values;
    sqlite::Statement rows(connection_.get(), "SELECT name, value FROM setting");
    int result = rows.step();
    for (; result == SQLITE_ROW; result = rows.step()) {
        values.emplace(rows.text(0), rows.text(1));
    }
    if (result != SQLITE_DONE) {
        return openRefusal(result);
    }
    return values;
}

Outcome<std::string> ConfigurationStore::deviceUuid()
{
    int result = sqlite::execute(connection_.get(), kDeviceTable);
    if (result == SQLITE_OK) {
        sqlite::Statement insert(connection_.get(),
                                 "INSERT INTO device SELECT ?1 WHERE NOT EXISTS (SELECT * FROM device)");
        auto const made = randomUuid();
        insert.bind(1, made);
        result = insert.step();
    }
    if (result != SQLITE_DONE) {
        return writeRefusal(result);
    }
    sqlite::Statement select(connection_.get(), "SELECT uuid FROM device");
    result = select.step();
    return result == SQLITE_ROW ? Outcome<std::string>(select.text(0)) : openRefusal(result);
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

Outcome<> ConfigurationStore::write(std::vector<Change> const& changes)
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
        auto refused = writeRefusal(result);
        if (sqlite3_get_autocommit(connection_.get()) == 0) {
            sqlite::execute(connection_.get(), "ROLLBACK");
        }
        return refused;
    }
    return checkPresent();  // the file may have been removed meanwhile, and the changes with it
}

int ConfigurationStore::writeAll(std::vector<Change> const& changes)
{
    if (isFull_) {
        return SQLITE_FULL;
    }
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

Outcome<> ConfigurationStore::checkPresent() const
{
    if (path_.empty()) {
        return {};
    }
    if (identityOf(path_) != file_ || identityOf(path_ + "-wal") != log_) {
        return refuse(RefusalKind::kUnavailable,
                      fmt::format("the store \"{}\" was removed or replaced while the telephone was running: restart "
                                  "the telephone",
                                  path_));
    }
    if (!isWritable(path_)) {
        return writeRefusal(SQLITE_READONLY);
    }
    return {};
}

tl::unexpected<Refusal> ConfigurationStore::writeRefusal(int result) const
{
    switch (primaryCode(result)) {
    case SQLITE_FULL:
        return refuse(RefusalKind::kLimit,
                      fmt::format("the store \"{}\" is full: make room on its disk, or reset settings", path_));
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
        return refuse(RefusalKind::kUnavailable,
                      fmt::format("the store \"{}\" is locked by another program: try again", path_));
    case SQLITE_READONLY:
        return refuse(RefusalKind::kNotPermitted,
                      fmt::format("the store \"{}\" is read-only: give this user the right to write it", path_));
    default:
        return refuse(RefusalKind::kUnavailable,
                      fmt::format("the store \"{}\" cannot be written: {}", path_, sqlite3_errmsg(connection_.get())));
    }
}

}  // namespace telephone
