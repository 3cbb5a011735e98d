#include "EnginePhone.h"

#include <algorithm>
#include <utility>

#include "telephone/framework/Log.h"

namespace telephone::test {

namespace {

std::unique_ptr<sip::EventLoop> loop;

// The loop's thread ends with the tests, before their time does.
class EndOfTheLoop final : public ::testing::Environment
{
    void TearDown() override { loop.reset(); }
};

[[maybe_unused]] auto* const endOfTheLoop = ::testing::AddGlobalTestEnvironment(new EndOfTheLoop);

}  // namespace

sip::EventLoop& eventLoop()
{
    if (loop == nullptr) {
        loop = std::make_unique<sip::EventLoop>();
        loop->start();
    }
    setLogLevel(::testing::GTEST_FLAG(break_on_failure) ? kLogInfo : kLogOff);
    return *loop;
}

EnginePhone::Options EnginePhone::optionsOf(std::string const& line)
{
    Options options;
    options.lines = {line};
    return options;
}

EnginePhone::EnginePhone(Options options)
    : options_(std::move(options))
{
    CallPolicy& policy = *this;
    engine_ = std::make_unique<CallEngine>(eventLoop(), options_.engine, lines_, policy, events_.poster());
    for (std::string const& id : options_.lines) {
        LineAccount line;
        line.lineURI = id;
        line.account.user = id;
        line.account.password = options_.password;
        line.account.expires = options_.expires;
        line.account.transport = options_.transport;
        line.account.domain = options_.registrar.empty() ? engine_->userAgent().hostPort() : options_.registrar;
        line.account.answerTimeout = options_.answerTimeout;
        line.account.retryFirst = std::chrono::milliseconds(100);
        line.registers = !options_.registrar.empty();
        line.shared = options_.shared;
        line.isPrivate = options_.isPrivate;
        lines_.add(line);
    }
    engine_->activate();
}

EnginePhone::~EnginePhone() = default;

std::string EnginePhone::uri(std::string const& line) const
{
    return "sip:" + (line.empty() ? options_.lines.front() : line) + '@' + engine_->userAgent().hostPort();
}

bool EnginePhone::alerts() const
{
    auto const calls = engine_->calls();
    return std::any_of(calls.begin(), calls.end(), [](CallSnapshot const& call) { return call.alerting(); });
}

void EnginePhone::expect(std::vector<std::string> const& lines)
{
    EXPECT_EQ(events_.next(lines.size()), lines);
}

ForwardingRule EnginePhone::forwarding(int, sfiForwardingType type) const
{
    auto const found = rules.find(type);
    return found == rules.end() ? ForwardingRule{} : found->second;
}

}  // namespace telephone::test
