// A fleet whose telephones are shell scripts: they say where their panel would be, and wait.
#pragma once

#include <fstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "telephone/fleet/Members.h"
#include "telephone/framework/WakeUp.h"
#include "tests/doubles/TemporaryFolder.h"

class FleetDouble : public testing::Test
{
protected:
    static constexpr char const* kRuns = "echo panel: http://127.0.0.1:1/panel; exec sleep 600";
    static constexpr std::chrono::seconds kDeadline{30};

    void make(int count, std::string const& script, std::chrono::milliseconds firstPause = std::chrono::milliseconds(1))
    {
        std::ofstream(folder_.file("telephone")) << script << "\n";
        telephone::Members::Plan plan{
            .count = count, .command = {"/bin/sh", folder_.file("telephone")}, .folder = folder_.path()};
        plan.firstPause = firstPause;
        members_ = telephone::Members::make(
                       plan, [](int number) { return "# " + std::to_string(number) + "\n"; }, stop_.descriptor(),
                       [this](std::string const& words) { notes_.push_back(words); })
                       .value();
    }
    void start()
    {
        auto const started = members_->start([](int) {});
        ASSERT_TRUE(started) << started.error().reason;
    }
    // Supervises until there are so many notes.
    void waitForNotes(std::size_t count)
    {
        auto const end = telephone::SteadyClock::now() + kDeadline;
        while (notes_.size() < count && telephone::SteadyClock::now() < end) {
            members_->wait(-1, telephone::SteadyClock::now() + std::chrono::milliseconds(10));
        }
        ASSERT_GE(notes_.size(), count);
    }
    telephone::FleetTelephone& telephone(int number) { return members_->all()[static_cast<std::size_t>(number - 1)]; }

    TemporaryFolder const folder_;
    telephone::WakeUp stop_;
    std::vector<std::string> notes_;
    std::unique_ptr<telephone::Members> members_;
};
