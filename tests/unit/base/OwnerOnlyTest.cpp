// The rights of files that exist before the telephone writes to them.
#include "telephone/base/OwnerOnly.h"

#include <filesystem>

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tests/doubles/TemporaryFolder.h"

namespace telephone::test {
namespace {

constexpr uid_t kNobody = 65534;

class OwnerOnly : public ::testing::Test
{
protected:
    std::string file(char const* name, mode_t mode) const
    {
        std::string const path = folder_.file(name);
        writeFile(path, "there already");
        EXPECT_EQ(::chmod(path.c_str(), mode), 0);
        return path;
    }
    static mode_t modeOf(std::string const& path)
    {
        struct stat status = {};
        EXPECT_EQ(::stat(path.c_str(), &status), 0);
        return status.st_mode & 07777U;
    }

    TemporaryFolder const folder_;
};

TEST_F(OwnerOnly, FileThatOthersCanRead_IsItsOwnersAlone)
{
    std::string const read = file("read", 0644);
    std::string const written = file("written", 0666);

    EXPECT_TRUE(makeOwnerOnly(read));
    EXPECT_TRUE(makeOwnerOnly(written));

    EXPECT_EQ(modeOf(read), 0600U);
    EXPECT_EQ(modeOf(written), 0600U);
}

TEST_F(OwnerOnly, RightsOfTheOwner_StayAsTheyAre)
{
    std::string const readOnly = file("read-only", 0444);

    EXPECT_TRUE(makeOwnerOnly(readOnly));

    EXPECT_EQ(modeOf(readOnly), 0400U);
}

TEST_F(OwnerOnly, LinkToAFile_IsFollowed)
{
    std::string const target = file("target", 0644);
    std::string const link = folder_.file("link");
    std::filesystem::create_symlink(target, link);

    EXPECT_TRUE(makeOwnerOnly(link));

    EXPECT_EQ(modeOf(target), 0600U);
}

TEST_F(OwnerOnly, WhatIsNotAFile_IsLeftAlone)
{
    mode_t const before = modeOf("/dev/null");

    EXPECT_TRUE(makeOwnerOnly("/dev/null"));
    EXPECT_TRUE(makeOwnerOnly(folder_.file("missing")));

    EXPECT_EQ(modeOf("/dev/null"), before);
}

TEST_F(OwnerOnly, FileOfAnotherUser_IsRefused)
{
    uid_t const self = ::geteuid();
    bool const isRoot = self == 0;  // who may change the mode of every file
    ASSERT_TRUE(!isRoot || ::seteuid(kNobody) == 0);

    auto const refused = makeOwnerOnly("/etc/passwd");

    ASSERT_EQ(::seteuid(self), 0);
    ASSERT_FALSE(refused);
    EXPECT_EQ(refused.error().reason, "\"/etc/passwd\" can be read by others, which cannot be changed: Operation not "
                                      "permitted; remove it, or name another file");
}

}  // namespace
}  // namespace telephone::test
