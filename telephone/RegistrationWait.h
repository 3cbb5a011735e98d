// Waits until each line is registered or its registration was refused. The engine notifies it with the phone lock held;
// the thread that starts the telephone waits without the lock.
#pragma once

#include <chrono>
#include <mutex>
#include <set>

#include "telephone/calls/CallObserver.h"
#include "telephone/calls/CallSnapshot.h"
#include "telephone/time/Condition.h"

namespace telephone {

class RegistrationWait : public CallObserver
{
public:
    // The lines that register. Called before the service is activated.
    void expect(std::set<int> lineNumbers);
    // False if a line had no answer within that time.
    bool wait(std::chrono::milliseconds most);

    void callChanged(CallSnapshot const& /*now*/, CallSnapshot const* /*before*/) override {}
    void registrationChanged(int lineNumber, bool registered) override;

private:
    std::mutex mutex_;
    Condition changed_{"the registrations"};
    std::set<int> missing_;
};

}  // namespace telephone
