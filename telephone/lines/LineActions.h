// The effect of line and direct-station keys on calls. Lines owns it. Keys are pressed on threads of the
// service, and each press takes the phone lock; the delay of a warm line expires on the timer thread.
#pragma once

#include <chrono>
#include <optional>
#include <string>

#include "platform/lines/Line.h"
#include "telephone/base/Refusal.h"
#include "telephone/calls/PhoneCalls.h"

namespace telephone {

class Lines;
class TelephoneLine;
class TimerService;

class LineActions
{
public:
    // A warm line dials its digits after this delay.
    static constexpr std::chrono::milliseconds kWarmLineDelay{4000};

    LineActions(Lines& lines, PhoneCalls& calls, TimerService& timers, std::chrono::milliseconds warmLineDelay);
    LineActions(LineActions const&) = delete;
    LineActions& operator=(LineActions const&) = delete;

    // No warm line dials afterwards.
    void stop();

    // idle: seize (a hot line dials) | ringing: answer | active: hold | held: retrieve | selected: idle again
    [[nodiscard]] Outcome<> linePressed(TelephoneLine& line);
    // By the context: calls, consults, transfers to, deflects to or picks up a call at the number.
    [[nodiscard]] Outcome<> stationPressed(std::string const& number, EDSSContext context,
                                           std::string const& ringingLineURI);

    // --- lock held
    [[nodiscard]] Outcome<> dial(TelephoneLine& line, std::string const& number,
                                 CallPurpose purpose = CallPurpose::kOrdinary);
    [[nodiscard]] Outcome<> answer(TelephoneLine& line);
    // Retrieves a call that the line holds.
    [[nodiscard]] Outcome<> retrieve(TelephoneLine& line);
    // Takes over, or joins, the call of another telephone on a shared line. kNotPermitted: it is private.
    [[nodiscard]] Outcome<> takeBack(TelephoneLine& line);
    [[nodiscard]] Outcome<> join(TelephoneLine& line);
    // owner: the line or party that has the dialog.
    [[nodiscard]] Outcome<> takeOver(std::optional<PickupTarget> const& dialog, std::string const& owner);

private:
    Outcome<> seize(TelephoneLine& line);
    Outcome<> dialHotLine(TelephoneLine& line, std::string const& digits);
    Outcome<> startWarmLine(TelephoneLine& line, std::string const& digits);
    void warmLineExpired(TelephoneLine& line, std::string const& digits);
    Outcome<> hold(TelephoneLine& line);
    Outcome<> dialOnFreeLine(std::string const& number);
    Outcome<> consult(std::string const& number);
    Outcome<> blindTransfer(std::string const& number);
    Outcome<> deflect(std::string const& number, std::string const& ringingLineURI);
    Outcome<> pickup(std::string const& number);

    Lines& lines_;
    PhoneCalls& calls_;
    TimerService& timers_;
    std::chrono::milliseconds const warmLineDelay_;
    int warmTimer_ = 0;  // 0 while no timer runs
};

}  // namespace telephone
