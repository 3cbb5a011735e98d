#include "telephone/team/Ringer.h"

#include <algorithm>
#include <chrono>
#include <mutex>

#include "platform/physical/AuditoryDeviceIfc.h"
#include "telephone/framework/TimerService.h"
#include "telephone/lines/Lines.h"
#include "telephone/team/Keyset.h"
#include "telephone/trace/TimerStep.h"

namespace telephone {

Ringer::Ringer(Lines& lines, PhoneCalls& calls, TimerService& timers, Keyset& keyset, AuditoryDeviceIfc& device)
    : lines_(lines)
    , calls_(calls)
    , timers_(timers)
    , keyset_(keyset)
    , device_(device)
{}

Ringer::~Ringer()
{
    stop();
}

void Ringer::start()
{
    lines_.addListener(*this);
    running_ = true;
}

void Ringer::stop()
{
    if (!running_) {
        return;
    }
    lines_.removeListener(*this);
    std::lock_guard const lock(calls_);
    for (auto const& [line, ringing] : ringing_) {
        timers_.cancel(ringing.delayTimer);
    }
    ringing_.clear();
    update();
    running_ = false;
}

void Ringer::lineChanged(TelephoneLine& line, ELineState /*before*/)
{
    if (line.isAppearance()) {
        return;
    }
    bool const rings = line.state() == eLineStateRinging && line.configuration().ring != 0;
    auto const known = ringing_.find(&line);
    if (rings && known == ringing_.end()) {
        startDelay(line);
    } else if (!rings && known != ringing_.end()) {
        timers_.cancel(known->second.delayTimer);
        ringing_.erase(known);
    }
    update();
}

void Ringer::startDelay(TelephoneLine& line)
{
    auto& ringing = ringing_[&line];
    ringing.generation = ++generation_;
    auto const delay = line.configuration().ringDelay;
    if (delay > 0) {
        ringing.delayTimer = timers_.start(std::chrono::seconds(delay), [this, &line, generation = ringing.generation] {
            delayExpired(line, generation);
        });
    }
}

// While the expiry waited for the lock, the call may have ended and another one begun.
void Ringer::delayExpired(TelephoneLine& line, int generation)
{
    timerRanOut(PhoneTimer::kRingDelay);
    std::lock_guard const lock(calls_);
    auto const known = ringing_.find(&line);
    if (known != ringing_.end() && known->second.generation == generation) {
        known->second.delayTimer = 0;
        update();
    }
}

void Ringer::update()
{
    bool const rings = std::any_of(ringing_.begin(), ringing_.end(),
                                   [this](auto const& each) { return isToBeHeard(*each.first, each.second); });
    if (rings != rings_) {
        rings_ = rings;
        device_.setRinging(rings);
    }
}

bool Ringer::isToBeHeard(TelephoneLine const& line, Ringing const& ringing) const
{
    return keyset_.mayBeHeard(line) && (ringing.delayTimer == 0 || keyset_.getImmediateRing());
}

}  // namespace telephone
