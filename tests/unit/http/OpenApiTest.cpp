#include "telephone/http/OpenApi.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "tests/doubles/GeneratedPage.h"

namespace {

// The places that the page refers to: "/components/schemas/Answer".
std::vector<std::string> referencesIn(nlohmann::json const& value)
{
    std::vector<std::string> found;
    nlohmann::json const flat = value.flatten();
    for (auto const& [name, member] : flat.items()) {
        if (name.ends_with("/$ref")) {
            found.push_back(member.get<std::string>().substr(1));
        }
    }
    return found;
}

}  // namespace

TEST(OpenApi, Page_IsUpToDate)
{
    expectPage("openapi.json", telephone::openApiPage());
}

TEST(OpenApi, References_LeadToSomething)
{
    auto const page = nlohmann::json::parse(telephone::openApiPage());
    auto const references = referencesIn(page);

    EXPECT_GE(references.size(), 18U);
    for (std::string const& each : references) {
        EXPECT_TRUE(page.contains(nlohmann::json::json_pointer(each))) << each;
    }
}
