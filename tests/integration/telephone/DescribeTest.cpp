// `telephone describe`, which needs no running telephone.
#include <fstream>
#include <iterator>
#include <string>

#include <gtest/gtest.h>

#include "Process.h"

namespace {

TEST(Describe, Json_IsTheDocumentedDescription)
{
    std::ifstream file(PROJECT "/docs/protocol.json");
    std::string const documented{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};

    Ended const result = run({TELEPHONE, "describe", "--json"});

    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.output, documented);
}

TEST(Describe, WordsOfAValue_ExplainIt)
{
    Ended const result = run({TELEPHONE, "describe", "remote", "ringing"});

    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.output, "CallState 3: remote ringing\n"
                             "  The called party's telephone is ringing.\n"
                             "\n"
                             "  Used by  CallState in CallStateChangeEvent\n");
}

TEST(Describe, WithoutWords_IsAnOverview)
{
    Ended const result = run({TELEPHONE, "describe"});

    EXPECT_EQ(result.status, 0);
    for (char const* const name : {"HoldCall", "CallHeldEvent", "CallState"}) {
        EXPECT_NE(result.output.find(name), std::string::npos) << name;
    }
}

TEST(Describe, JsonOfAName_IsAMistake)
{
    EXPECT_EQ(run({TELEPHONE, "describe", "--json", "HoldCall"}).status, 2);
}

TEST(Describe, UnknownName_IsRefusedWithTheNearestOne)
{
    Ended const result = run({TELEPHONE, "describe", "HoldCal"});

    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.output, "telephone: \"HoldCal\" is not a request, event, command, enumeration, element or word "
                             "(did you mean HoldCall?)\n");
}

}  // namespace
