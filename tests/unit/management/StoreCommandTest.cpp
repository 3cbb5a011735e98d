// The store from the command line.
#include "telephone/management/StoreCommand.h"

#include <filesystem>
#include <sstream>

#include "StoreFixture.h"

namespace telephone {
namespace {

class StoreCommandTest : public StoreFixture
{
protected:
    StoreCommandTest() { configuration.store.path = storePath(); }

    int run(std::vector<std::string> const& arguments)
    {
        out.str({});
        err.str({});
        return runStoreCommand(arguments, configuration, out, err);
    }

    Configuration configuration = Configuration::standard();
    std::ostringstream out;
    std::ostringstream err;
};

TEST_F(StoreCommandTest, Set_IsReadByGetAndByATelephone)
{
    EXPECT_EQ(run({"set", "cfu-address", "102"}), 0);
    EXPECT_EQ(err.str(), "");

    EXPECT_EQ(run({"get", "cfu-address"}), 0);
    EXPECT_EQ(out.str(), "102\n");
    EXPECT_EQ(open()->text("cfu-address"), "102");
}

TEST_F(StoreCommandTest, SetWhileATelephoneRuns_ComesIntoForceThere)
{
    auto const running = open();

    EXPECT_EQ(run({"set", "cfu-address", "102"}), 0);
    running->refresh();

    EXPECT_EQ(running->text("cfu-address"), "102");
}

TEST_F(StoreCommandTest, List_HasEveryKeyWithItsValue)
{
    EXPECT_TRUE(open()->setAll({{"cfu-address", "102"}, {"line/4712/dnd", "true"}}));

    EXPECT_EQ(run({"list"}), 0);

    EXPECT_TRUE(out.str().starts_with("cfu-activated = false\ncfu-address = 102\ncfu-ext-activated = false\n"));
    EXPECT_NE(out.str().find("\nline/4712/dnd = true\n"), std::string::npos);
    EXPECT_NE(out.str().find("\nserver-type = 0\n"), std::string::npos);
}

TEST_F(StoreCommandTest, RefusedValue_IsReportedWithTheReason)
{
    EXPECT_EQ(run({"set", "cfnr-delay", "soon"}), 1);
    EXPECT_EQ(err.str(), "telephone store: \"cfnr-delay\" takes a number from 0 to 99, not \"soon\"\n");
    EXPECT_EQ(run({"set", "server-type", "1"}), 1);
    EXPECT_EQ(err.str(), "telephone store: \"server-type\" is read-only\n");
    EXPECT_EQ(run({"get", "cfu-adress"}), 1);
    EXPECT_EQ(err.str(), "telephone store: there is no setting \"cfu-adress\"; the nearest is \"cfu-address\"\n");
    EXPECT_EQ(out.str(), "");
}

TEST_F(StoreCommandTest, ReadingAMissingStore_DoesNotCreateIt)
{
    EXPECT_EQ(run({"list"}), 1);

    EXPECT_EQ(err.str(), "telephone store: there is no store \"" + storePath() +
                             "\" yet: the first start or the first set creates it\n");
    EXPECT_FALSE(std::filesystem::exists(storePath()));
}

TEST_F(StoreCommandTest, StoreInMemory_IsRefused)
{
    configuration.store.path.clear();

    EXPECT_EQ(run({"list"}), 1);

    EXPECT_EQ(err.str(), "telephone store: this telephone keeps its settings in memory: name a file in store.path\n");
}

TEST_F(StoreCommandTest, ForeignFile_IsRefused)
{
    writeFile(storePath(), "my thesis");

    EXPECT_EQ(run({"set", "cfu-address", "1"}), 1);

    EXPECT_EQ(contentOf(storePath()), "my thesis");
    EXPECT_TRUE(err.str().starts_with("telephone store: \"" + storePath() + "\" is not a telephone's store"))
        << err.str();
}

TEST_F(StoreCommandTest, WrongArguments_AreAnsweredWithTheUsage)
{
    for (auto const& arguments : std::vector<std::vector<std::string>>{
             {}, {"lists"}, {"list", "x"}, {"get"}, {"get", "a", "b"}, {"set", "a"}, {"set", "a", "b", "c"}}) {
        EXPECT_EQ(run(arguments), 2);
        EXPECT_EQ(err.str(), "usage: telephone store list | get KEY | set KEY VALUE\n");
    }
}

}  // namespace
}  // namespace telephone
