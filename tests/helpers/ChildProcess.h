// A program that a test starts. The destructor ends it.
#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <vector>

namespace telephone::test {

class ChildProcess
{
public:
    // folder: its working directory. Its output is discarded.
    ChildProcess(std::string const& program, std::vector<std::string> const& arguments, std::string const& folder);
    ~ChildProcess();
    ChildProcess(ChildProcess const&) = delete;
    ChildProcess& operator=(ChildProcess const&) = delete;

    bool isRunning();
    // Its exit status; nothing if it is still running at the deadline.
    std::optional<int> wait(std::chrono::seconds deadline);
    void kill();

private:
    int process_ = -1;
    std::optional<int> status_;
};

// A free UDP port of the loopback address, below those that the kernel chooses for sockets without one, and another one
// for each call and process: no other test takes it before it is bound.
int freeUdpPort();

}  // namespace telephone::test
