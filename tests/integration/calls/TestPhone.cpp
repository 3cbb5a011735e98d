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

TestPhone::TestPhone(Options options)
    : options_(std::move(options))
{
    if (::testing::GTEST_FLAG(break_on_failure)) {
        options_.engine.agent.log = [](sip::LogLevel, const std::string& text) {
            fprintf(stderr, "%s\n", text.c_str());
        };
    }
    LineDirectory& lines = *this;
    CallPolicy& policy = *this;
    engine_ = std::make_unique<CallEngine>(eventLoop(), options_.engine, lines, policy, events_.poster());
    int number = 0;
    for (const std::string& id : options_.lines) {
        LineAccount line;
        line.lineNumber = ++number;
        line.lineURI = id;
        line.account.user = id;
        line.account.password = options_.password;
        line.account.domain = options_.registrar.empty() ? engine_->userAgent().hostPort() : options_.registrar;
        line.account.answerTimeout = std::chrono::milliseconds(1000);
        line.account.retryFirst = std::chrono::milliseconds(100);
        line.registers = !options_.registrar.empty();
        accounts_.push_back(line);
    }
    engine_->activate();
}

TestPhone::~TestPhone() = default;

std::string TestPhone::uri(const std::string& line) const
{
    return "sip:" + (line.empty() ? options_.lines.front() : line) + '@' + engine_->userAgent().hostPort();
}

void TestPhone::expect(const std::vector<std::string>& lines)
{
    EXPECT_EQ(events_.next(lines.size()), lines);
}

std::optional<LineAddress> TestPhone::addressOf(int recordLine, int appearance) const
{
    if (recordLine < 1 || recordLine > static_cast<int>(accounts_.size()))
        return std::nullopt;
    return LineAddress{recordLine, recordLine, appearance, accounts_[static_cast<std::size_t>(recordLine - 1)].lineURI};
}

std::optional<int> TestPhone::lineOfUser(const std::string& user) const
{
    for (const LineAccount& line : accounts_) {
        if (line.account.user == user)
            return line.lineNumber;
    }
    return std::nullopt;
}

std::optional<LineAddress> TestPhone::seizeForIncoming(int lineNumber, int)
{
    return addressOf(lineNumber, 0);
}

ForwardingRule TestPhone::forwarding(int, sfiForwardingType type) const
{
    const auto found = rules.find(type);
    return found == rules.end() ? ForwardingRule{} : found->second;
}

bool eventually(const std::function<bool()>& condition, std::chrono::seconds deadline)
{
    const auto end = std::chrono::steady_clock::now() + deadline;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end)
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    return true;
}

}  // namespace telephone::test
