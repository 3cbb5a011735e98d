#include "telephone/sip/SessionTimer.h"

#include <algorithm>

#include "telephone/trace/TimerStep.h"

namespace telephone::sip {

using std::chrono::milliseconds;
using std::chrono::seconds;

namespace {

constexpr seconds kShortest{90};  // RFC 4028 section 5
constexpr seconds kLongest{86400};
constexpr seconds kLongestMargin{32};  // section 10

seconds secondsOf(Headers const& headers, char const* name)
{
    return std::min(seconds(headers.number(name)), kLongest);
}

// "uac", "uas", or empty.
std::string refresherOf(std::string const& value)
{
    for (char const* role : {"uac", "uas"}) {
        if (value.find(std::string("refresher=") + role) != std::string::npos) {
            return role;
        }
    }
    return {};
}

std::string sessionExpires(seconds interval, char const* refresher)
{
    return std::to_string(interval.count()) + ";refresher=" + refresher;
}

}  // namespace

SessionTimer::SessionTimer(EventLoop& loop, seconds interval, Actions actions)
    : actions_(std::move(actions))
    , wanted_(interval)
    , refresh_(loop)
    , expiry_(loop)
{}

Headers SessionTimer::ofRequest() const
{
    if (!isOn()) {
        return {};
    }
    // Whoever refreshes goes on doing so, and is named by the part that it has in this request.
    std::string const expires = interval_ == seconds(0) ? std::to_string(wanted_.count())
                                                        : sessionExpires(interval_, refreshesHere_ ? "uac" : "uas");
    return {{"Session-Expires", expires}, {"Min-SE", std::to_string(shortest_.count())}};
}

bool SessionTimer::isTooBrief(Headers const& request) const
{
    return isOn() && request.has("Session-Expires") && request.lists("Supported", kTimerExtension) &&
           secondsOf(request, "Session-Expires") < kShortest;
}

Headers SessionTimer::ofRefusal()
{
    return {{"Min-SE", std::to_string(kShortest.count())}};
}

Headers SessionTimer::accept(Headers const& request)
{
    if (!isOn()) {
        return {};
    }
    std::string const asked = request.value("Session-Expires");
    seconds const most = asked.empty() ? kLongest : std::max(secondsOf(request, "Session-Expires"), kShortest);
    interval_ = std::min(most, std::max(wanted_, secondsOf(request, "Min-SE")));
    bool const isSupported = request.lists("Supported", kTimerExtension);
    refreshesHere_ = !isSupported || refresherOf(asked) == "uas";
    begin();
    Headers headers{{"Session-Expires", sessionExpires(interval_, refreshesHere_ ? "uas" : "uac")}};
    if (!refreshesHere_) {
        headers.add("Require", kTimerExtension);
    }
    return headers;
}

void SessionTimer::accepted(Headers const& answer)
{
    if (!isOn()) {
        return;
    }
    std::string const agreed = answer.value("Session-Expires");
    interval_ = agreed.empty() ? wanted_ : std::max(secondsOf(answer, "Session-Expires"), kShortest);
    refreshesHere_ = refresherOf(agreed) != "uas";
    begin();
}

bool SessionTimer::lengthen(Headers const& refusal)
{
    seconds const least = secondsOf(refusal, "Min-SE");
    if (!isOn() || least <= shortest_) {
        return false;
    }
    shortest_ = least;
    wanted_ = std::max(wanted_, least);
    interval_ = interval_ == seconds(0) ? interval_ : std::max(interval_, least);
    return true;
}

void SessionTimer::begin()
{
    milliseconds const whole = interval_;
    milliseconds const margin = std::min<milliseconds>(kLongestMargin, whole / 3);
    expiry_.start(refreshesHere_ ? whole : whole - margin, [this] {
        timerRanOut(PhoneTimer::kSessionExpiry);
        refresh_.cancel();
        actions_.expired();
    });
    if (refreshesHere_) {
        refreshIn(whole / 2);
    } else {
        refresh_.cancel();
    }
}

void SessionTimer::refreshIn(milliseconds delay)
{
    refresh_.start(delay, [this] {
        timerRanOut(PhoneTimer::kSessionRefresh);
        actions_.refresh();
    });
}

void SessionTimer::stop()
{
    refresh_.cancel();
    expiry_.cancel();
}

}  // namespace telephone::sip
