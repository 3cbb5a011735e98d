#include "telephone/lines/LineNotifier.h"

#include <algorithm>
#include <mutex>

#include "telephone/calls/PhoneCalls.h"
#include "telephone/framework/Log.h"
#include "telephone/framework/Refusals.h"
#include "telephone/framework/WorkQueue.h"
#include "telephone/lines/DssLine.h"
#include "telephone/lines/LineListener.h"
#include "telephone/lines/LineObserver.h"
#include "telephone/lines/LineStates.h"
#include "telephone/lines/LogComponent.h"
#include "telephone/lines/TelephoneLine.h"

namespace telephone {

LineNotifier::LineNotifier(PhoneCalls& calls)
    : calls_(calls)
{}

LineNotifier::~LineNotifier() = default;

void LineNotifier::addListener(LineListener& listener)
{
    std::lock_guard const lock(calls_);
    listeners_.push_back(&listener);
}

void LineNotifier::removeListener(LineListener& listener)
{
    std::lock_guard const lock(calls_);
    std::erase(listeners_, &listener);
}

void LineNotifier::addObserver(LineObserver& observer)
{
    std::lock_guard const lock(calls_);
    if (!queue_) {
        queue_ = std::make_unique<WorkQueue>("line observers");
    }
    if (std::find(observers_.begin(), observers_.end(), &observer) == observers_.end()) {
        observers_.push_back(&observer);
    }
}

void LineNotifier::stop()
{
    if (queue_) {
        queue_->stop();
    }
}

void LineNotifier::lineChanged(TelephoneLine& line, ELineState before)
{
    auto const listeners = listeners_;
    for (auto* listener : listeners) {
        listener->lineChanged(line, before);
    }
    if (line.state() != before) {
        log(kLogTrace, kComponent, "line {} is {}", line.id(), lineStateName(line.state()));
        repeat(line);
    }
}

void LineNotifier::stationChanged(DssLine& station)
{
    for (auto* listener : listeners_) {
        listener->stationChanged(station);
    }
    tellObservers(station.number(), station.state(), station.party().remoteURI);
}

void LineNotifier::repeat(TelephoneLine const& line)
{
    tellObservers(line.id(), line.state(), line.remoteURI());
}

void LineNotifier::tellObservers(std::string const& lineURI, ELineState state, std::string const& remoteURI)
{
    for (auto* observer : observers_) {
        reportIfRefused(kComponent, queue_->post([observer, lineURI, state, remoteURI] {
            observer->lineStateChanged(lineURI, state, remoteURI);
        }));
    }
}

}  // namespace telephone
