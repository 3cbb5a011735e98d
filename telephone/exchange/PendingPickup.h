// A caller who dialled a pick-up of calls between registered telephones, while the exchange asks those telephones what
// rings. Owned by the exchange; under the lock.
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
    // over: the time is up, or the caller gave up; may destroy the pick-up.
    PendingPickup(sip::EventLoop& loop, std::unique_ptr<sip::Session> session, std::vector<std::string> numbers,
                  std::function<void(PendingPickup&)> over);
    ~PendingPickup() override;

    bool isFor(std::string const& number) const;
    std::vector<std::string> const& numbers() const { return numbers_; }
    // The caller, for the call that was found.
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
