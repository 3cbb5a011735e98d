// Waits until it is known of every line whether it is registered: waiting for one that was refused would be in vain.
// Made with the calls, told by the engine with the phone lock held; waited for by who starts the telephone, without it.
#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <set>

#include "telephone/calls/CallObserver.h"
#include "telephone/calls/CallSnapshot.h"

namespace telephone {

class RegistrationWait : public CallObserver
{
public:
    // Every line that registers, before the service is activated.
    void expect(std::set<int> lineNumbers);
    // False when the time ran out before every expected line had its answer.
    bool wait(std::chrono::milliseconds most);

    void callChanged(CallSnapshot const& /*now*/, CallSnapshot const* /*before*/) override {}
    void registrationChanged(int lineNumber, bool registered) override;

private:
    std::mutex mutex_;
    std::condition_variable changed_;
    std::set<int> missing_;
};

}  // namespace telephone
