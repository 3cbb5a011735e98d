// Events for the applications, on their way from the calls to the subscribers.
#pragma once

#include <functional>

class CommunicationsServiceEventIfc;

namespace telephone {

// Delivered later and without the phone lock, so it carries its own copy of every value.
using Event = std::function<void(CommunicationsServiceEventIfc&)>;
// Queues an event for all subscribers. Never blocks and never delivers the event itself.
using EventPoster = std::function<void(Event)>;

}  // namespace telephone
