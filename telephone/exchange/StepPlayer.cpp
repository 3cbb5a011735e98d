#include "telephone/exchange/StepPlayer.h"

#include <iterator>
#include <utility>

namespace telephone::exchange {

using std::chrono::milliseconds;

StepPlayer::StepPlayer(sip::EventLoop& loop, Perform perform)
    : perform_(std::move(perform))
    , timer_(loop)
{}

void StepPlayer::play(Steps steps)
{
    stop();
    steps_.assign(std::make_move_iterator(steps.begin()), std::make_move_iterator(steps.end()));
    next();
}

void StepPlayer::playAfterwards(Steps steps)
{
    if (!pending_) {
        play(std::move(steps));
        return;
    }
    pending_ = milliseconds(0);
    steps_.assign(std::make_move_iterator(steps.begin()), std::make_move_iterator(steps.end()));
}

void StepPlayer::next()
{
    while (!steps_.empty()) {
        Step const step = std::move(steps_.front());
        steps_.pop_front();
        pending_ = step.time;
        auto const time = perform_(step);
        if (!time) {
            return;
        }
        pending_.reset();
        if (*time > milliseconds(0)) {
            timer_.start(*time, [this] { next(); });
            return;
        }
    }
}

void StepPlayer::resume()
{
    if (auto const time = std::exchange(pending_, std::nullopt)) {
        timer_.start(*time, [this] { next(); });
    }
}

Steps StepPlayer::stop()
{
    timer_.cancel();
    pending_.reset();
    Steps left(std::make_move_iterator(steps_.begin()), std::make_move_iterator(steps_.end()));
    steps_.clear();
    return left;
}

}  // namespace telephone::exchange
