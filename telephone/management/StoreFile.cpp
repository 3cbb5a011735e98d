#include "telephone/management/StoreFile.h"

#include <array>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <string_view>
#include <vector>

#include <spdlog/fmt/fmt.h>
#include <sys/stat.h>
#include <unistd.h>

#include "telephone/base/OwnerOnly.h"
#include "telephone/management/Sqlite.h"

namespace telephone {

namespace {

constexpr std::string_view kMagic{"SQLite format 3\0", 16};
constexpr std::size_t kHeaderSize = 100;
constexpr std::size_t kUserVersionOffset = 60;
constexpr std::size_t kApplicationIdOffset = 68;

using Header = std::vector<unsigned char>;

// Big-endian, as in the header of the database.
std::int32_t wordAt(Header const& header, std::size_t offset)
{
    std::uint32_t word = 0;
    for (std::size_t i = 0; i < 4; ++i) {
        word = word << 8U | header[offset + i];
    }
    return static_cast<std::int32_t>(word);
}

Outcome<Header> readHeader(std::string const& path)
{
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        return refuse(RefusalKind::kUnavailable,
                      fmt::format("store \"{}\" cannot be read: {}; give this user the right to read and write it, or "
                                  "name another file in store.path",
                                  path, std::strerror(errno)));
    }
    Header header(kHeaderSize);
    file.read(reinterpret_cast<char*>(header.data()), kHeaderSize);
    header.resize(static_cast<std::size_t>(file.gcount()));
    return header;
}

Outcome<> checkHeader(std::string const& path, Header const& header)
{
    bool const database = header.size() == kHeaderSize && std::memcmp(header.data(), kMagic.data(), kMagic.size()) == 0;
    if (!database) {
        return refuse(RefusalKind::kUnavailable,
                      fmt::format("\"{}\" is not a telephone's store, or it is damaged; it was left unchanged: move it "
                                  "away to start with a new one, or name another file in store.path",
                                  path));
    }
    if (wordAt(header, kApplicationIdOffset) != kStoreApplicationId) {
        return refuse(RefusalKind::kUnavailable, fmt::format("store \"{}\" is the database of another program and was "
                                                             "left unchanged: name another file in store.path",
                                                             path));
    }
    if (auto const layout = wordAt(header, kUserVersionOffset); layout != kStoreLayout) {
        return refuse(RefusalKind::kNotSupported,
                      fmt::format("store \"{}\" has layout {}, this telephone knows layout {}; it was left unchanged: "
                                  "use the telephone that wrote it, or name another file in store.path",
                                  path, layout, kStoreLayout));
    }
    return {};
}

tl::unexpected<Refusal> creationRefusal(std::string const& path, std::string const& why)
{
    return refuse(RefusalKind::kUnavailable,
                  fmt::format("store \"{}\" cannot be created: {}; create its folder and give this user the right to "
                              "write there, or name another file in store.path",
                              path, why));
}

// Writes a complete store under a temporary name. Returns why it failed; empty: written.
std::string writeNewStore(std::string const& temporary)
{
    ::unlink(temporary.c_str());
    sqlite3* opened = nullptr;
    int result = sqlite3_open_v2(temporary.c_str(), &opened, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE, nullptr);
    sqlite::Connection const connection(opened);
    if (result == SQLITE_OK) {
        auto const sql = fmt::format("PRAGMA synchronous=FULL; BEGIN; PRAGMA application_id={}; PRAGMA user_version={};"
                                     "CREATE TABLE setting(name TEXT PRIMARY KEY, value TEXT NOT NULL) "
                                     "STRICT, WITHOUT ROWID; COMMIT; PRAGMA journal_mode=WAL;",
                                     kStoreApplicationId, kStoreLayout);
        result = sqlite::execute(opened, sql.c_str());
    }
    if (result == SQLITE_OK) {
        return {};
    }
    ::unlink(temporary.c_str());
    return opened == nullptr ? sqlite3_errstr(result) : sqlite3_errmsg(opened);
}

// `empty`: the file exists and is empty. If another telephone creates the store at the same moment, the first wins.
Outcome<> createStoreFile(std::string const& path, bool empty)
{
    auto const temporary = fmt::format("{}.new-{}", path, ::getpid());
    if (auto const why = writeNewStore(temporary); !why.empty()) {
        return creationRefusal(path, why);
    }
    bool const placed = empty ? ::rename(temporary.c_str(), path.c_str()) == 0
                              : ::link(temporary.c_str(), path.c_str()) == 0 || errno == EEXIST;
    auto const error = errno;
    ::unlink(temporary.c_str());
    if (!placed) {
        return creationRefusal(path, std::strerror(error));
    }
    return {};
}

Outcome<> checkWritable(std::string const& path)
{
    if (!isWritable(path)) {
        return refuse(RefusalKind::kNotPermitted,
                      fmt::format("store \"{}\" is read-only: give this user the right to write it, or name another "
                                  "file in store.path",
                                  path));
    }
    return {};
}

// The store, and what a telephone that was killed has left of its log.
Outcome<> makeStoreOwnerOnly(std::string const& path)
{
    return makeOwnerOnly(path).and_then([&path] { return makeOwnerOnly(path + "-wal"); }).and_then([&path] {
        return makeOwnerOnly(path + "-shm");
    });
}

}  // namespace

Outcome<> prepareStoreFile(std::string const& path)
{
    struct stat status = {};
    bool const exists = ::stat(path.c_str(), &status) == 0;
    if (!exists && errno != ENOENT) {
        return creationRefusal(path, std::strerror(errno));
    }
    if (exists && !S_ISREG(status.st_mode)) {
        return refuse(RefusalKind::kBadInput,
                      fmt::format("store \"{}\" is not a file: name another one in store.path", path));
    }
    auto const created = !exists || status.st_size == 0 ? createStoreFile(path, exists) : Outcome<>();
    return created.and_then([&path] { return readHeader(path); })
        .and_then([&path](Header const& header) { return checkHeader(path, header); })
        .and_then([&path] { return checkWritable(path); })
        .and_then([&path] { return makeStoreOwnerOnly(path); });
}

FileIdentity identityOf(std::string const& path)
{
    struct stat status = {};
    if (::stat(path.c_str(), &status) != 0) {
        return {};
    }
    return {static_cast<unsigned long>(status.st_dev), static_cast<unsigned long>(status.st_ino)};
}

bool isWritable(std::string const& path)
{
    constexpr mode_t kAnyWrite = S_IWUSR | S_IWGRP | S_IWOTH;
    struct stat status = {};
    return ::stat(path.c_str(), &status) == 0 && (status.st_mode & kAnyWrite) != 0 && ::access(path.c_str(), W_OK) == 0;
}

}  // namespace telephone
