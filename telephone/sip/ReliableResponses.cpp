#include "telephone/sip/ReliableResponses.h"

#include "telephone/sip/Stack.h"
#include "telephone/trace/TimerStep.h"

namespace telephone::sip {

namespace {

// RFC 3262 section 3: T1, doubled each time, and 64 * T1.
constexpr std::chrono::milliseconds kFirstPause{500};
constexpr std::chrono::milliseconds kLongestWait{32000};
constexpr std::uint32_t kHighestFirstNumber = 0x7fffffff;

}  // namespace

ReliableResponses::ReliableResponses(EventLoop& loop, Actions actions)
    : actions_(std::move(actions))
    , number_(rand_u32() % kHighestFirstNumber)
    , timer_(loop)
{}

Outcome<> ReliableResponses::send(EarlyResponse response)
{
    responses_.push_back(std::move(response));
    return waiting_ ? Outcome<>() : begin();
}

Outcome<> ReliableResponses::begin()
{
    ++number_;
    EarlyResponse& response = responses_.front();
    response.headers.add("Require", kReliableExtension);
    response.headers.add("RSeq", std::to_string(number_));
    auto sending = actions_.send(response);
    if (!sending) {
        responses_.pop_front();
        return sending;
    }
    waiting_ = true;
    pause_ = kFirstPause;
    waited_ = std::chrono::milliseconds(0);
    timer_.start(pause_, [this] { repeat(); });
    return {};
}

void ReliableResponses::repeat()
{
    waited_ += pause_;
    if (waited_ >= kLongestWait) {
        timerRanOut(PhoneTimer::kPrackMissing);
        stop();
        actions_.unacknowledged();
        return;
    }
    (void)actions_.send(responses_.front());
    pause_ = std::min(pause_ * 2, kLongestWait - waited_);
    timer_.start(pause_, [this] { repeat(); });
}

bool ReliableResponses::acknowledge(std::string const& rack, std::uint32_t inviteNumber)
{
    std::string const wanted = std::to_string(number_) + " " + std::to_string(inviteNumber) + " INVITE";
    if (!waiting_ || rack != wanted) {
        return false;
    }
    timer_.cancel();
    waiting_ = false;
    responses_.pop_front();
    return true;
}

void ReliableResponses::sendNext()
{
    if (!waiting_ && !responses_.empty()) {
        (void)begin();
    }
}

void ReliableResponses::stop()
{
    timer_.cancel();
    waiting_ = false;
    responses_.clear();
}

}  // namespace telephone::sip
