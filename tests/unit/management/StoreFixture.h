// A store file in a temporary folder, and settings that use it.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "telephone/configuration/Configuration.h"
#include "telephone/management/ConfigurationStore.h"
#include "telephone/management/Settings.h"
#include "tests/doubles/TemporaryFolder.h"

class StoreFixture : public testing::Test
{
protected:
    std::string storePath() const { return folder.file("store.db"); }
    static std::unique_ptr<telephone::Settings> open(std::string const& path, telephone::StoreLimits const& limits = {})
    {
        return std::make_unique<telephone::Settings>(telephone::ConfigurationStore::open(path, limits).value(),
                                                     telephone::Configuration::standard());
    }
    std::unique_ptr<telephone::Settings> open() const { return open(storePath()); }

    static std::string errorOf(std::string const& path)
    {
        auto const store = telephone::ConfigurationStore::open(path);
        return store ? "opened" : store.error().reason;
    }
    // The settings whose keys begin with the prefix.
    static std::vector<telephone::Settings::Item> allUnder(std::string_view prefix, telephone::Settings const& settings)
    {
        auto items = settings.all();
        std::erase_if(items, [prefix](auto const& item) { return !item.first.starts_with(prefix); });
        return items;
    }

    TemporaryFolder const folder;
};
