#include "telephone/http/OpenApi.h"

#include <gtest/gtest.h>

#include "tests/doubles/GeneratedPage.h"

TEST(OpenApi, Page_IsUpToDate)
{
    expectPage("openapi.json", telephone::openApiPage());
}
