// A DNS server of another make (dnsmasq) on loopback, for the names of a test. It ends with the object.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "tests/doubles/TemporaryFolder.h"
#include "tests/helpers/ChildProcess.h"

namespace telephone::test {

class LocalDns
{
public:
    LocalDns();
    // Starts it with these lines of its configuration; all names end in ".test". Fails the test if it does not start.
    void serve(std::string const& records);
    // For dns.servers.
    std::string address() const { return "127.0.0.1:" + std::to_string(port_); }

private:
    bool listens() const;

    TemporaryFolder const folder_;
    int const port_;
    std::optional<ChildProcess> server_;
};

// In milliseconds of real time, to which a busy machine adds: less than the wait for a silent server.
constexpr std::int64_t kAtOnce = 3000;
// How long the function takes.
std::int64_t millisecondsOf(std::function<void()> const& work);

}  // namespace telephone::test
