// Picks up a call that rings at another telephone, by that telephone's dialogs. Owned by the composition root;
// DirectedPickupHandler::Instance() while it lives. The service calls it with the phone lock held.
#pragma once

#include "platform/team/DirectedPickupHandler.h"

namespace telephone {

class Lines;

class PickupHandler final : public DirectedPickupHandler
{
public:
    explicit PickupHandler(Lines& lines);
    ~PickupHandler();
    PickupHandler(PickupHandler const&) = delete;
    PickupHandler& operator=(PickupHandler const&) = delete;

    void setCommsSrv(SvcRTEContext* context, Executable* service) override;
    void Initialise() override;
    // A pick-up starts no timer by number.
    void timerExpired(int timerId) override;
    sfiResult directedPickupRequest(sfiCallInfo* call, std::string& target) override;

private:
    Lines& lines_;
};

// The call that rings at a number becomes the call of that record; each failure is in the log. Also for busy-lamp
// fields.
sfiResult pickupForRecord(Lines& lines, sfiCallInfo const* call, std::string const& target);

}  // namespace telephone
