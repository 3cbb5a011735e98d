#include "telephone/testing/ScriptFiles.h"

#include <filesystem>

#include <gtest/gtest.h>

#include "tests/doubles/TemporaryFolder.h"

using namespace telephone;

namespace {

using Paths = std::vector<std::string>;

class ScriptFiles : public testing::Test
{
protected:
    ScriptFiles()
    {
        std::filesystem::create_directories(folder_.file("more/empty"));
        for (char const* const each : {"b.script", "a.script", "a.txt", "more/c.script"}) {
            writeFile(folder_.file(each), "say x\n");
        }
    }

    TemporaryFolder folder_;
};

}  // namespace

TEST_F(ScriptFiles, Folder_GivesItsScriptsAndThoseOfItsFoldersSorted)
{
    auto const found = findScripts({folder_.path()});

    ASSERT_TRUE(found) << found.error().reason;
    EXPECT_EQ(*found, Paths({folder_.file("a.script"), folder_.file("b.script"), folder_.file("more/c.script")}));
}

TEST_F(ScriptFiles, File_IsTakenWhateverItsName)
{
    auto const found = findScripts({folder_.file("a.txt")});

    ASSERT_TRUE(found) << found.error().reason;
    EXPECT_EQ(*found, Paths({folder_.file("a.txt")}));
}

TEST_F(ScriptFiles, ScriptNamedTwice_IsFoundOnce)
{
    auto const found =
        findScripts({folder_.file("more"), folder_.file("more/c.script"), folder_.file("more/./c.script")});

    ASSERT_TRUE(found) << found.error().reason;
    EXPECT_EQ(*found, Paths({folder_.file("more/c.script")}));
}

TEST_F(ScriptFiles, FolderWithoutScripts_IsRefused)
{
    auto const found = findScripts({folder_.file("a.script"), folder_.file("more/empty")});

    ASSERT_FALSE(found);
    EXPECT_EQ(found.error().reason, folder_.file("more/empty") + ": no file *.script in this folder");
}

TEST_F(ScriptFiles, PathThatDoesNotExist_IsRefused)
{
    auto const found = findScripts({folder_.file("d.script")});

    ASSERT_FALSE(found);
    EXPECT_EQ(found.error().reason, folder_.file("d.script") + ": there is no such file or folder");
}
