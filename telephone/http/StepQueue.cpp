#include "telephone/http/StepQueue.h"

#include <algorithm>
#include <array>
#include <utility>

namespace telephone {

namespace {

constexpr std::size_t kMostWaiting = 1'000'000;  // bytes

// What a line of a step that is shown contains; no text in the line can contain it, because its quotation marks are
// escaped. Of the platform's operations those that do something to a call.
constexpr std::array<std::string_view, 9> kShown{
    R"("step":"sip")",
    R"("step":"engine")",
    R"("step":"event")",
    R"("name":"CSfi::Call)",
    R"("name":"CSfi::GroupPickup")",
    R"("name":"CSfi::GenerateDigits")",
    R"("name":"TeamServiceKeyset::answerCall")",
    R"("name":"TeamServiceKeyset::makeCall")",
    R"("name":"TeamServiceKeyset::retrieveCall")",
};

bool isShown(std::string_view line)
{
    return std::ranges::any_of(kShown,
                               [line](std::string_view each) { return line.find(each) != std::string_view::npos; });
}

}  // namespace

StepQueue::StepQueue(std::function<void()> wake)
    : wake_(std::move(wake))
    , listener_([this](std::string_view line) { note(line); })
{}

void StepQueue::note(std::string_view line)
{
    if (!isShown(line)) {
        return;
    }
    std::lock_guard const lock(mutex_);
    if (messages_.size() > kMostWaiting) {
        ++missed_;
        return;
    }
    bool const isFirst = messages_.empty();
    messages_.append("event: step\ndata: ").append(line).append("\n");
    if (isFirst) {
        wake_();
    }
}

std::string StepQueue::take()
{
    std::lock_guard const lock(mutex_);
    if (std::size_t const missed = std::exchange(missed_, 0); missed > 0) {
        messages_ += "event: steps-missed\ndata: " + std::to_string(missed) + "\n\n";
    }
    return std::exchange(messages_, {});
}

}  // namespace telephone
