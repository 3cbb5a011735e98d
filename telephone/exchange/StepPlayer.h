// Plays the steps of one call, one after the other. Owned by the call; used under the lock. Steps begin on the event
// loop's thread, the first one on the caller's.
#pragma once

#include <chrono>
#include <deque>
#include <functional>
#include <optional>

#include "telephone/exchange/Steps.h"
#include "telephone/sip/Timer.h"

namespace telephone::exchange {

class StepPlayer
{
public:
    // Begins a step. Returns the time until the next one; nothing: resume() tells when the step is over.
    using Perform = std::function<std::optional<std::chrono::milliseconds>(Step const&)>;

    StepPlayer(sip::EventLoop& loop, Perform perform);

    // Instead of any steps that are left.
    void play(Steps steps);
    // The same once the step that has begun is over, without its time.
    void playAfterwards(Steps steps);
    // The step that has begun is over. Its time passes, then the next step begins, but never within this function.
    // Ignored unless a step waits for it.
    void resume();
    // Returns the steps that have not begun.
    Steps stop();

private:
    void next();

    Perform perform_;
    sip::Timer timer_;
    std::deque<Step> steps_;
    std::optional<std::chrono::milliseconds> pending_;  // the time after a step that is not over
};

}  // namespace telephone::exchange
