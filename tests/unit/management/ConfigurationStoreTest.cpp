// The store on real files: refusals at the start, and the fate of values when the file is locked, full,
// read-only or gone.
#include "telephone/management/ConfigurationStore.h"

#include <chrono>
#include <filesystem>
#include <iostream>
#include <thread>

#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include "StoreFixture.h"
#include "telephone/management/Sqlite.h"
#include "telephone/management/StoreWatcher.h"

namespace telephone {
namespace {

using namespace std::chrono_literals;

class ConfigurationStoreTest : public StoreFixture
{
protected:
    // The error of a file of that content, after which the file is as it was.
    std::string errorOfContent(std::string const& content)
    {
        writeFile(storePath(), content);
        auto const error = errorOf(storePath());
        EXPECT_EQ(contentOf(storePath()), content) << "the file was changed";
        return error;
    }
    // A store that was written and closed, so that the file alone holds it.
    std::string contentOfAStore()
    {
        auto const path = folder.file("other.db");
        {
            auto const settings = open(path);
            for (int i = 0; i < 200; ++i) {
                EXPECT_TRUE(settings->set("line/4711/" + std::to_string(i), std::string(100, 'x')));
            }
        }
        return contentOf(path);
    }
    sqlite::Connection connect()
    {
        sqlite3* opened = nullptr;
        EXPECT_EQ(sqlite3_open(storePath().c_str(), &opened), SQLITE_OK);
        return sqlite::Connection(opened);
    }
};

TEST_F(ConfigurationStoreTest, ValuesOfAnEarlierTelephone_AreInForce)
{
    EXPECT_TRUE(open()->set("cfu-address", "102"));

    EXPECT_EQ(open()->text("cfu-address"), "102");
}

TEST_F(ConfigurationStoreTest, EmptyFile_BecomesAStore)
{
    writeFile(storePath(), "");

    EXPECT_TRUE(open()->set("cfu-address", "102"));

    EXPECT_EQ(open()->text("cfu-address"), "102");
}

TEST_F(ConfigurationStoreTest, NewStore_LeavesNoOtherFileBehind)
{
    open();

    std::vector<std::string> names;
    for (auto const& entry : std::filesystem::directory_iterator(folder.path())) {
        names.push_back(entry.path().filename());
    }
    EXPECT_EQ(names, std::vector<std::string>{"store.db"});
}

TEST_F(ConfigurationStoreTest, ForeignText_IsRefusedAndLeftUnchanged)
{
    EXPECT_EQ(
        errorOfContent("my thesis"),
        "\"" + storePath() +
            "\" is not a telephone's store, or it is damaged; it was left unchanged: move it away to start with a "
            "new one, or name another file in store.path");
}

TEST_F(ConfigurationStoreTest, DatabaseOfAnotherProgram_IsRefusedAndLeftUnchanged)
{
    {
        auto const connection = connect();
        ASSERT_EQ(sqlite::execute(connection.get(), "CREATE TABLE setting(name TEXT, value TEXT)"), SQLITE_OK);
    }

    EXPECT_EQ(errorOfContent(contentOf(storePath())),
              "store \"" + storePath() +
                  "\" is the database of another program and was left unchanged: name another file in store.path");
}

TEST_F(ConfigurationStoreTest, StoreOfANewerTelephone_IsRefusedAndLeftUnchanged)
{
    auto content = contentOfAStore();
    content[63] = 2;  // user_version, big-endian at 60

    EXPECT_EQ(errorOfContent(content),
              "store \"" + storePath() +
                  "\" has layout 2, this telephone knows layout 1; it was left unchanged: use the telephone that wrote "
                  "it, or name another file in store.path");
}

TEST_F(ConfigurationStoreTest, DamagedPages_AreRefusedAndLeftUnchanged)
{
    auto content = contentOfAStore();
    ASSERT_GT(content.size(), 3U * 4096U);
    for (std::size_t i = 4096; i < content.size(); i += 3) {
        content[i] = '\x5a';
    }

    EXPECT_EQ(errorOfContent(content),
              "store \"" + storePath() +
                  "\" is damaged and was left unchanged: restore a copy, move it away to start with a new one, or name "
                  "another file in store.path");
}

TEST_F(ConfigurationStoreTest, TruncatedStore_IsRefusedAndLeftUnchanged)
{
    auto const content = contentOfAStore();

    EXPECT_EQ(errorOfContent(content.substr(0, content.size() / 2)),
              "store \"" + storePath() +
                  "\" is damaged and was left unchanged: restore a copy, move it away to start with a new one, or name "
                  "another file in store.path");
    EXPECT_EQ(
        errorOfContent(content.substr(0, 50)),
        "\"" + storePath() +
            "\" is not a telephone's store, or it is damaged; it was left unchanged: move it away to start with a "
            "new one, or name another file in store.path");
}

TEST_F(ConfigurationStoreTest, MissingFolder_IsNamed)
{
    EXPECT_EQ(
        errorOf("/nonexistent/store.db"),
        "store \"/nonexistent/store.db\" cannot be created: unable to open database file; create its folder and give "
        "this user the right to write there, or name another file in store.path");
}

TEST_F(ConfigurationStoreTest, FolderInsteadOfFile_IsRefused)
{
    EXPECT_EQ(errorOf(folder.path()), "store \"" + folder.path() + "\" is not a file: name another one in store.path");
}

TEST_F(ConfigurationStoreTest, UnusableStoredValue_ReadsAsTheStandardValue)
{
    open();
    {
        auto const connection = connect();
        ASSERT_EQ(sqlite::execute(connection.get(), "INSERT INTO setting VALUES('cfnr-delay', 'soon'),"
                                                    "('from-the-future', '1'), ('server-type', '7')"),
                  SQLITE_OK);
    }

    auto const settings = open();

    EXPECT_EQ(settings->number("cfnr-delay"), 3);
    EXPECT_EQ(settings->text("from-the-future"), "");
    EXPECT_EQ(settings->number("server-type"), 0);
}

TEST_F(ConfigurationStoreTest, LockedStore_RefusesSoonAndKeepsTheValue)
{
    auto const settings = open();
    EXPECT_TRUE(settings->set("cfu-address", "1"));
    auto const connection = connect();
    ASSERT_EQ(sqlite::execute(connection.get(), "BEGIN IMMEDIATE"), SQLITE_OK);

    auto const begin = std::chrono::steady_clock::now();
    auto const outcome = settings->set("cfu-address", "2");

    EXPECT_LT(std::chrono::steady_clock::now() - begin, 2s);
    EXPECT_EQ(outcome.error().kind, RefusalKind::kUnavailable);
    EXPECT_EQ(outcome.error().reason, "the store \"" + storePath() + "\" is locked by another program: try again");
    EXPECT_EQ(settings->text("cfu-address"), "1");
    ASSERT_EQ(sqlite::execute(connection.get(), "ROLLBACK"), SQLITE_OK);
    EXPECT_TRUE(settings->set("cfu-address", "2"));
    EXPECT_EQ(open()->text("cfu-address"), "2");
}

TEST_F(ConfigurationStoreTest, StoreLockedAtTheStart_IsNamed)
{
    open();
    auto const connection = connect();
    ASSERT_EQ(sqlite::execute(connection.get(), "PRAGMA locking_mode=EXCLUSIVE; BEGIN EXCLUSIVE;"), SQLITE_OK);

    EXPECT_EQ(errorOf(storePath()), "store \"" + storePath() +
                                        "\" is locked by another program: end that program, or name another file in "
                                        "store.path");
}

TEST_F(ConfigurationStoreTest, StoreAtItsLimit_RefusesAndKeepsTheValues)
{
    StoreLimits limits;
    limits.pages = 8;
    auto const settings = open(storePath(), limits);
    int accepted = 0;
    auto const value = [](int i) { return std::to_string(i) + std::string(3000, 'x'); };
    auto outcome = settings->set("line/4711/0", value(0));
    while (outcome && accepted < 100) {
        ++accepted;
        outcome = settings->set("line/4711/" + std::to_string(accepted), value(accepted));
    }

    EXPECT_GT(accepted, 0);
    EXPECT_EQ(outcome.error().kind, RefusalKind::kLimit);
    EXPECT_EQ(outcome.error().reason,
              "the store \"" + storePath() + "\" is full: make room on its disk, or reset settings");
    EXPECT_EQ(allUnder("line/", *settings).size(), static_cast<std::size_t>(accepted));
    EXPECT_EQ(allUnder("line/", *open()).size(), static_cast<std::size_t>(accepted));
    EXPECT_TRUE(settings->resetUserSettings());
    EXPECT_TRUE(settings->set("line/4711/0", value(0)));
}

// A disk of 256 kB; needs the right to mount.
TEST_F(ConfigurationStoreTest, FullDisk_RefusesAndKeepsTheValues)
{
    auto const disk = folder.file("disk");
    ASSERT_EQ(::mkdir(disk.c_str(), 0700), 0);
    if (::mount("tmpfs", disk.c_str(), "tmpfs", 0, "size=256k") != 0) {
        std::cout << "no right to mount a small disk here; StoreAtItsLimit shows the refusal\n";
        return;
    }
    int accepted = 0;
    Outcome<> outcome;
    {
        auto const settings = open(disk + "/store.db");
        for (; outcome && accepted < 1000; ++accepted) {
            outcome = settings->set("line/4711/" + std::to_string(accepted), std::string(3000, 'x'));
        }
        --accepted;
        EXPECT_EQ(outcome.error().kind, RefusalKind::kLimit) << outcome.error().reason;
        EXPECT_EQ(allUnder("line/", *settings).size(), static_cast<std::size_t>(accepted));
    }
    EXPECT_EQ(allUnder("line/", *open(disk + "/store.db")).size(), static_cast<std::size_t>(accepted));
    EXPECT_EQ(::umount(disk.c_str()), 0);
}

TEST_F(ConfigurationStoreTest, DiskWithoutRoomForAStore_LeavesNoFileBehind)
{
    auto const disk = folder.file("disk");
    ASSERT_EQ(::mkdir(disk.c_str(), 0700), 0);
    if (::mount("tmpfs", disk.c_str(), "tmpfs", 0, "size=4k") != 0) {
        std::cout << "no right to mount a small disk here\n";
        return;
    }

    auto const error = errorOf(disk + "/store.db");

    EXPECT_TRUE(error.starts_with("store \"" + disk + "/store.db\" cannot be created: ")) << error;
    EXPECT_TRUE(std::filesystem::is_empty(disk));
    EXPECT_EQ(::umount(disk.c_str()), 0);
}

TEST_F(ConfigurationStoreTest, UnfinishedStoreOfAKilledTelephone_IsReplaced)
{
    writeFile(storePath() + ".new-" + std::to_string(::getpid()), "half a store");

    EXPECT_TRUE(open()->set("cfu-address", "102"));

    EXPECT_EQ(open()->text("cfu-address"), "102");
    EXPECT_FALSE(std::filesystem::exists(storePath() + ".new-" + std::to_string(::getpid())));
}

TEST_F(ConfigurationStoreTest, RemovedStore_RefusesAndKeepsTheValue)
{
    auto const settings = open();
    EXPECT_TRUE(settings->set("cfu-address", "1"));
    std::filesystem::remove(storePath());

    auto const outcome = settings->set("cfu-address", "2");

    EXPECT_EQ(outcome.error().kind, RefusalKind::kUnavailable);
    EXPECT_EQ(outcome.error().reason,
              "the store \"" + storePath() +
                  "\" was removed or replaced while the telephone was running: restart the telephone");
    EXPECT_EQ(settings->text("cfu-address"), "1");
}

TEST_F(ConfigurationStoreTest, ReplacedStore_RefusesAndLeavesTheNewOneUnchanged)
{
    auto const settings = open();
    EXPECT_TRUE(settings->set("cfu-address", "1"));
    EXPECT_TRUE(open(folder.file("copy.db"))->set("cfu-address", "9"));
    std::filesystem::rename(folder.file("copy.db"), storePath());

    EXPECT_EQ(settings->set("cfu-address", "2").error().kind, RefusalKind::kUnavailable);
    EXPECT_EQ(settings->text("cfu-address"), "1");
}

TEST_F(ConfigurationStoreTest, RemovedWriteAheadLog_Refuses)
{
    auto const settings = open();
    EXPECT_TRUE(settings->set("cfu-address", "1"));
    std::filesystem::remove(storePath() + "-wal");

    EXPECT_EQ(settings->set("cfu-address", "2").error().kind, RefusalKind::kUnavailable);
}

TEST_F(ConfigurationStoreTest, ReadOnlyFile_IsRefusedAtTheStart)
{
    open();
    ASSERT_EQ(::chmod(storePath().c_str(), 0444), 0);

    EXPECT_EQ(errorOf(storePath()),
              "store \"" + storePath() +
                  "\" is read-only: give this user the right to write it, or name another file in store.path");
}

// The file of a telephone that was killed, with its log beside it.
TEST_F(ConfigurationStoreTest, FileThatOthersCanRead_IsItsOwnersAloneFromTheStartOn)
{
    auto const running = open();
    EXPECT_TRUE(running->set("cfu-address", "1"));
    for (char const* part : {"", "-wal"}) {
        ASSERT_EQ(::chmod((storePath() + part).c_str(), 0644), 0) << part;
    }

    open();

    for (char const* part : {"", "-wal"}) {
        using std::filesystem::perms;
        EXPECT_EQ(std::filesystem::status(storePath() + part).permissions(), perms::owner_read | perms::owner_write);
    }
}

TEST_F(ConfigurationStoreTest, StoreThatBecomesReadOnly_RefusesAndKeepsTheValue)
{
    auto const settings = open();
    EXPECT_TRUE(settings->set("cfu-address", "1"));
    ASSERT_EQ(::chmod(storePath().c_str(), 0444), 0);

    auto const outcome = settings->set("cfu-address", "2");

    EXPECT_EQ(outcome.error().kind, RefusalKind::kNotPermitted);
    EXPECT_EQ(outcome.error().reason,
              "the store \"" + storePath() + "\" is read-only: give this user the right to write it");
    EXPECT_EQ(settings->text("cfu-address"), "1");
    ASSERT_EQ(::chmod(storePath().c_str(), 0644), 0);
    EXPECT_TRUE(settings->set("cfu-address", "2"));
}

TEST_F(ConfigurationStoreTest, ValueOfAnotherProgram_ComesIntoForceAndReachesListeners)
{
    auto const settings = open();
    std::vector<std::string> heard;
    settings->listenToTag("forwarding", [&heard](auto const& keys) { heard = keys; });
    EXPECT_TRUE(open()->set("cfu-address", "102"));

    settings->refresh();

    EXPECT_EQ(settings->text("cfu-address"), "102");
    EXPECT_EQ(heard, std::vector<std::string>{"cfu-address"});
}

TEST_F(ConfigurationStoreTest, Watcher_TakesOverValuesOfAnotherProgram)
{
    auto const settings = open();
    StoreWatcher const watcher(*settings, 5ms);
    EXPECT_TRUE(open()->set("cfu-address", "102"));

    auto const deadline = std::chrono::steady_clock::now() + 10s;
    while (settings->text("cfu-address") != "102" && std::chrono::steady_clock::now() < deadline) {
        std::this_thread::sleep_for(1ms);
    }

    EXPECT_EQ(settings->text("cfu-address"), "102");
}

TEST_F(ConfigurationStoreTest, OwnWrite_KeepsEarlierValuesOfAnotherProgram)
{
    auto const settings = open();
    EXPECT_TRUE(open()->set("cfu-address", "102"));

    EXPECT_TRUE(settings->set("cfb-address", "103"));

    EXPECT_EQ(settings->text("cfu-address"), "102");
    EXPECT_EQ(settings->text("cfb-address"), "103");
}

TEST_F(ConfigurationStoreTest, FaultOfAFullStore_RefusesUntilItEndsAndKeepsTheValue)
{
    auto const settings = open();
    EXPECT_TRUE(settings->set("cfu-address", "102"));
    settings->setStoreFull(true);

    auto const refused = settings->set("cfu-address", "103");

    EXPECT_EQ(refused.error().kind, RefusalKind::kLimit);
    EXPECT_EQ(settings->text("cfu-address"), "102");
    EXPECT_FALSE(settings->isWritable());
    settings->setStoreFull(false);
    EXPECT_TRUE(settings->set("cfu-address", "103"));
    EXPECT_EQ(open()->text("cfu-address"), "103");
}

TEST_F(ConfigurationStoreTest, FaultOfASlowStore_PausesBeforeEachWrite)
{
    auto const settings = open();
    std::vector<std::string> before;
    settings->setPauseBeforeWrites(
        std::make_shared<std::function<void()> const>([&] { before.push_back(settings->text("cfu-address")); }));

    EXPECT_TRUE(settings->set("cfu-address", "102"));
    EXPECT_TRUE(settings->set("cfu-address", "103"));
    settings->setPauseBeforeWrites(nullptr);
    EXPECT_TRUE(settings->set("cfu-address", "104"));

    EXPECT_EQ(before, (std::vector<std::string>{"", "102"}));
}

}  // namespace
}  // namespace telephone
