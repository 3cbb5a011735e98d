// A program that a test starts, and ends by its process id at the latest when the object goes.
#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <vector>

namespace telephone::test {

class ChildProcess
{
public:
    // folder: where it runs; its output goes nowhere.
    ChildProcess(std::string const& program, std::vector<std::string> const& arguments, std::string const& folder);
    ~ChildProcess();
    ChildProcess(ChildProcess const&) = delete;
    ChildProcess& operator=(ChildProcess const&) = delete;

    bool isRunning();
    // Its exit status; nothing when it still runs after the deadline.
    std::optional<int> wait(std::chrono::seconds deadline);
    void kill();

private:
    int process_ = -1;
    std::optional<int> status_;
};

// A UDP port of the loopback address that nobody uses now.
int freeUdpPort();

}  // namespace telephone::test
