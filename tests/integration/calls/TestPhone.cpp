#include "TestPhone.h"

#include <thread>
#include <utility>

namespace telephone::test {

sip::EventLoop& eventLoop()
{
    static sip::EventLoop loop;
    loop.start();
    return loop;
}

TestPhone::Options TestPhone::optionsOf(std::string const& line)
{
    Options options;
    options.lines = {line};
    return options;
}

TestPhone::TestPhone(Options options)
    : options_(std::move(options))
{
    if (::testing::GTEST_FLAG(break_on_failure)) {
        options_.engine.agent.log = [](sip::LogLevel, std::string const& text) {
            fprintf(stderr, "%s\n", text.c_str());
        };
    }
    CallPolicy& policy = *this;
    engine_ = std::make_unique<CallEngine>(eventLoop(), options_.engine, lines_, policy, events_.poster());
    for (std::string const& id : options_.lines) {
        LineAccount line;
        line.lineURI = id;
        line.account.user = id;
        line.account.password = options_.password;
        line.account.expires = options_.expires;
        line.account.domain = options_.registrar.empty() ? engine_->userAgent().hostPort() : options_.registrar;
        line.account.answerTimeout = std::chrono::milliseconds(1000);
        line.account.retryFirst = std::chrono::milliseconds(100);
        line.registers = !options_.registrar.empty();
        lines_.add(line);
    }
    engine_->activate();
}

TestPhone::~TestPhone() = default;

std::string TestPhone::uri(std::string const& line) const
{
    return "sip:" + (line.empty() ? options_.lines.front() : line) + '@' + engine_->userAgent().hostPort();
}

void TestPhone::expect(std::vector<std::string> const& lines)
{
    EXPECT_EQ(events_.next(lines.size()), lines);
}

ForwardingRule TestPhone::forwarding(int, sfiForwardingType type) const
{
    auto const found = rules.find(type);
    return found == rules.end() ? ForwardingRule{} : found->second;
}

bool eventually(std::function<bool()> const& condition, std::chrono::seconds deadline)
{
    auto const end = std::chrono::steady_clock::now() + deadline;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end) {
            return false;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    return true;
}

}  // namespace telephone::test
