// A caller who has dialled a pick-up, while the exchange asks the registered telephones for their ringing calls.
// Refused with 480 when it is destroyed with its session. Owned by Pickups; used under the lock.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "telephone/sip/Session.h"
#include "telephone/sip/Timer.h"

namespace telephone::exchange {

class PendingPickup final : private sip::SessionObserver
{
public:
    // over: no call was found in time, or the caller has hung up. May destroy the pick-up.
    PendingPickup(sip::EventLoop& loop, std::unique_ptr<sip::Session> session, std::vector<std::string> numbers,
                  std::function<void(PendingPickup&)> over);
    ~PendingPickup() override;

    bool isFor(std::string const& number) const;
    std::vector<std::string> const& numbers() const { return numbers_; }
    // The caller's session, for the call that was found.
    std::unique_ptr<sip::Session> takeSession();

private:
    void onClosed(sip::Session&, sip::Closing const&) override;
    void finish();

    std::unique_ptr<sip::Session> session_;
    std::vector<std::string> numbers_;
    std::function<void(PendingPickup&)> over_;
    sip::Timer deadline_;
};

}  // namespace telephone::exchange
