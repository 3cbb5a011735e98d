// The observers of the calls, told in the order in which they were added. Owned by CallEngine; lock held.
#pragma once

#include <algorithm>
#include <vector>

#include "telephone/calls/CallObserver.h"

namespace telephone {

class CallObservers
{
public:
    void add(CallObserver& observer)
    {
        if (std::find(observers_.begin(), observers_.end(), &observer) == observers_.end()) {
            observers_.push_back(&observer);
        }
    }
    void remove(CallObserver& observer) { std::erase(observers_, &observer); }

    // Observers may add and remove others while they are told.
    template <class Notice>
    void tell(Notice notice) const
    {
        for (CallObserver* const observer : std::vector(observers_)) {
            notice(*observer);
        }
    }

private:
    std::vector<CallObserver*> observers_;
};

}  // namespace telephone
