// A store file in a folder of the test's own, and settings on it.
#pragma once

#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "TemporaryFolder.h"
#include "telephone/configuration/Configuration.h"
#include "telephone/management/ConfigurationStore.h"
#include "telephone/management/Settings.h"
#include "telephone/management/StoreError.h"

class StoreFixture : public testing::Test
{
protected:
    std::string storePath() const { return folder.file("store.db"); }
    static std::unique_ptr<telephone::Settings>
    open(std::string const& path,
         telephone::ConfigurationStore::Limits limits = telephone::ConfigurationStore::Limits())
    {
        return std::make_unique<telephone::Settings>(std::make_unique<telephone::ConfigurationStore>(path, limits),
                                                     telephone::Configuration::standard());
    }
    std::unique_ptr<telephone::Settings> open() const { return open(storePath()); }

    static std::string errorOf(std::string const& path)
    {
        try {
            telephone::ConfigurationStore store(path);
        } catch (telephone::StoreError const& error) {
            return error.what();
        }
        return "opened";
    }

    TemporaryFolder const folder;
};
