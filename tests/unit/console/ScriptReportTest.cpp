#include "telephone/console/ScriptReport.h"

#include <gtest/gtest.h>
#include <pugixml.hpp>

#include "tests/doubles/TemporaryFolder.h"

using namespace telephone;

namespace {

class ScriptReport : public testing::Test
{
protected:
    pugi::xml_node written(std::vector<ScriptCase> const& cases)
    {
        auto const done = writeJUnit(cases, folder_.file("report.xml"));
        EXPECT_TRUE(done) << done.error().reason;
        EXPECT_TRUE(document_.load_file(folder_.file("report.xml").c_str()));
        return document_.child("testsuites");
    }

    TemporaryFolder folder_;
    pugi::xml_document document_;
};

std::string attribute(pugi::xml_node node, char const* name)
{
    return node.attribute(name).value();
}

}  // namespace

TEST_F(ScriptReport, CasesOfOneSuite_AreCountedAndAdded)
{
    auto const suite = written({{"a.script", "seed 1", 1.25, ScriptVerdict::kPassed, {}},
                                {"a.script", "seed 2", 2, ScriptVerdict::kFailed, {"first", "second"}},
                                {"a.script", "seed 3", 0.5, ScriptVerdict::kBroken, {"ended"}},
                                {"a.script", "seed 4", 0, ScriptVerdict::kNotRun, {}}})
                           .child("testsuite");

    EXPECT_EQ(attribute(suite, "name"), "a.script");
    EXPECT_EQ(attribute(suite, "tests"), "4");
    EXPECT_EQ(attribute(suite, "failures"), "1");
    EXPECT_EQ(attribute(suite, "errors"), "1");
    EXPECT_EQ(attribute(suite, "skipped"), "1");
    EXPECT_EQ(attribute(suite, "time"), "3.750");
    EXPECT_FALSE(suite.next_sibling());
}

TEST_F(ScriptReport, Case_HasItsNamesItsTimeAndWhy)
{
    auto const passed = written({{"a.script", "seed 1", 1.25, ScriptVerdict::kPassed, {}},
                                 {"a.script", "seed 2", 2, ScriptVerdict::kFailed, {"<first>", "second"}}})
                            .child("testsuite")
                            .child("testcase");
    auto const failed = passed.next_sibling();

    EXPECT_EQ(attribute(passed, "name"), "seed 1");
    EXPECT_EQ(attribute(passed, "classname"), "a.script");
    EXPECT_EQ(attribute(passed, "time"), "1.250");
    EXPECT_FALSE(passed.first_child());
    EXPECT_EQ(attribute(failed.child("failure"), "message"), "<first>");
    EXPECT_STREQ(failed.child("failure").text().get(), "<first>\nsecond");
}

TEST_F(ScriptReport, OtherSuites_AreBesideIt)
{
    auto const suites = written({{"a.script", "seed 0", 1, ScriptVerdict::kPassed, {}},
                                 {"b.script", "seed 0", 1, ScriptVerdict::kBroken, {"ended"}}});

    EXPECT_EQ(attribute(suites.first_child(), "name"), "a.script");
    EXPECT_EQ(attribute(suites.last_child(), "name"), "b.script");
    EXPECT_EQ(attribute(suites.last_child().child("testcase").child("error"), "message"), "ended");
}

TEST_F(ScriptReport, CaseThatWasNotRun_IsSkipped)
{
    auto const suites = written({{"a.script", "seed 0", 0, ScriptVerdict::kNotRun, {"the run was ended before"}}});

    EXPECT_EQ(attribute(suites.first_child().child("testcase").child("skipped"), "message"),
              "the run was ended before");
}

TEST_F(ScriptReport, FileThatCannotBeWritten_IsRefused)
{
    auto const written = writeJUnit({}, "/no/such/folder/report.xml");

    ASSERT_FALSE(written);
    EXPECT_EQ(written.error().reason, "/no/such/folder/report.xml: cannot be written");
}
