// A running event loop.
#pragma once

#include <chrono>
#include <functional>
#include <mutex>
#include <thread>

#include <gtest/gtest.h>

#include "telephone/sip/EventLoop.h"

namespace telephone::sip {

class LoopFixture : public ::testing::Test
{
protected:
    LoopFixture() { loop.start(); }

    // Whether the condition becomes true within the deadline; it is checked under the lock.
    bool eventually(std::function<bool()> const& condition)
    {
        auto const deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
        while (std::chrono::steady_clock::now() < deadline) {
            {
                std::lock_guard const guard(loop);
                if (condition()) {
                    return true;
                }
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        return false;
    }

    EventLoop loop;
};

}  // namespace telephone::sip
