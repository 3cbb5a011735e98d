// The log in tests: formats each line as printf does, keeps it, and tells which levels are on. Every line that arrives
// is kept, whatever its level: a guarded line must not arrive while its level is off.
//
// Lines may come from any thread. A listener sees each line as it arrives, for tests of the order of lines and calls.
#pragma once

#include <mutex>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>

struct LogLine
{
    std::string component;
    std::string source;
    int level = 0;
    int line = 0;
    std::string text;
};

std::ostream& operator<<(std::ostream& out, LogLine const& line);

class MockLogListener
{
public:
    virtual ~MockLogListener() = default;

    MOCK_METHOD(void, written, (int level, std::string const& text));
};

class LogDouble
{
public:
    // Lines are wanted up to this level; smaller levels are more important.
    void setLevel(int level);
    int level() const;
    void setListener(MockLogListener* listener);
    // All lines so far, oldest first.
    std::vector<LogLine> lines() const;
    // Level and text of each line so far, as "5 text".
    std::vector<std::string> texts() const;
    // Each query whether a level is on, as component and level.
    std::vector<std::pair<std::string, int>> questions() const;
    void clear();

    bool isOn(char const* component, int level);
    void write(LogLine line);

private:
    mutable std::mutex mutex_;
    int level_ = 6;
    MockLogListener* listener_ = nullptr;
    std::vector<LogLine> lines_;
    std::vector<std::pair<std::string, int>> questions_;
};
