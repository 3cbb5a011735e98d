// A telephone with a configuration of its own, in real time, and its application: for tests with several telephones, or
// with call servers of others.
#pragma once

#include <fstream>
#include <string>

#include "RunningTelephone.h"
#include "tests/doubles/FreePort.h"

inline void writeText(std::string const& path, std::string const& text)
{
    std::ofstream(path) << text;
}

// A telephone for applications at a call server, with these lines.
class TelephoneAt
{
public:
    TelephoneAt(std::string const& configuration)
        : telephone_({"--time", "real", "--config", file(configuration), "--log-level", "3"})
        , application(telephone_.socket())
    {
        EXPECT_EQ(application.request(method("Subscribe")), "sfiSuccess");
    }

    std::string call(std::string const& request, std::string const& line, int callID, std::string const& more = {})
    {
        return application
            .request(method(request, "<Line>" + line + "</Line><CallID>" + std::to_string(callID) + "</CallID>" + more))
            .value_or("");
    }

    // Its log is complete then.
    void end()
    {
        telephone_.process().signal(SIGTERM);
        EXPECT_EQ(telephone_.process().wait(), 0);
    }

private:
    std::string file(std::string const& configuration)
    {
        writeText(folder_.file("telephone.toml"), configuration);
        return folder_.file("telephone.toml");
    }

    TemporaryFolder folder_;
    RunningTelephone telephone_;

public:
    Application application;
};

inline std::string state(int callID, int state)
{
    return "<CallID>" + std::to_string(callID) + "</CallID><CallState>" + std::to_string(state) + "</CallState>";
}

inline std::string callIdOf(std::string const& event)
{
    auto const start = event.find("<CallID>") + 8;
    return event.substr(start, event.find("</CallID>", start) - start);
}

constexpr int kStateIdle = 0;
constexpr int kStateConnected = 6;
