// Compares a generated page of docs/ with its file. With UPDATE_DOCS in the environment, writes the file instead.
#pragma once

#include <cstdlib>
#include <string>

#include <gtest/gtest.h>

#include "tests/doubles/TemporaryFolder.h"

inline std::string documentPath(std::string const& name)
{
    return std::string(PROJECT_FOLDER) + "/docs/" + name;
}

inline void expectPage(std::string const& name, std::string const& page)
{
    if (std::getenv("UPDATE_DOCS") != nullptr) {
        writeFile(documentPath(name), page);
    }
    EXPECT_EQ(contentOf(documentPath(name)), page) << "run this test with UPDATE_DOCS=1 and check the difference";
}
