// The token of browsers, which outlives a start of the telephone.
#include "telephone/http/AccessToken.h"

#include <filesystem>
#include <fstream>

#include <gtest/gtest.h>

#include "tests/doubles/TemporaryFolder.h"

using namespace telephone;

namespace {

namespace fs = std::filesystem;

class AccessTokenTest : public testing::Test
{
protected:
    std::string kept() const { return AccessToken::keep(file_).value().text(); }

    TemporaryFolder const folder_;
    std::string const file_ = folder_.file("browsers");
};

TEST_F(AccessTokenTest, Keep_GivesTheSameTokenAgain)
{
    std::string const first = kept();

    EXPECT_EQ(first.size(), 32U);
    EXPECT_EQ(kept(), first);
    EXPECT_EQ(fs::status(file_).permissions(), fs::perms::owner_read | fs::perms::owner_write);
}

TEST_F(AccessTokenTest, Keep_OfAFileThatOthersCanRead_DrawsANewToken)
{
    std::string const first = kept();
    fs::permissions(file_, fs::perms::group_read, fs::perm_options::add);

    EXPECT_NE(kept(), first);
    EXPECT_EQ(fs::status(file_).permissions(), fs::perms::owner_read | fs::perms::owner_write);
}

TEST_F(AccessTokenTest, Keep_OfAFileWithoutAToken_DrawsANewToken)
{
    std::string const first = kept();
    std::ofstream(file_) << first.substr(1) << "\n";

    EXPECT_NE(kept(), first);
    EXPECT_EQ(kept().size(), 32U);
}

TEST_F(AccessTokenTest, Keep_DoesNotFollowALink)
{
    std::string const first = AccessToken::keep(folder_.file("other")).value().text();
    fs::create_symlink(folder_.file("other"), file_);

    EXPECT_NE(kept(), first);
    EXPECT_FALSE(fs::is_symlink(file_));
}

TEST_F(AccessTokenTest, Keep_InAFolderThatDoesNotExist_IsRefused)
{
    auto const token = AccessToken::keep(folder_.file("no/browsers"));

    ASSERT_FALSE(token);
    EXPECT_EQ(token.error().kind, RefusalKind::kUnavailable);
}

}  // namespace
