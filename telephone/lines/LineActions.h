// What presses of line and direct-station keys do, in terms of calls. Lines owns it. Presses come on the threads of the
// service and take the phone lock; the delay of a warm line ends on the timer thread.
#pragma once

#include <optional>
#include <string>

#include "platform/lines/Line.h"
#include "telephone/calls/PhoneCalls.h"

namespace telephone {

class Lines;
class TelephoneLine;

class LineActions
{
public:
    explicit LineActions(Lines& lines);
    LineActions(LineActions const&) = delete;
    LineActions& operator=(LineActions const&) = delete;

    // No warm line dials afterwards.
    void stop();

    // idle: seize (a hot line dials) | ringing: answer | active: hold | held: retrieve | selected: idle again
    void linePressed(TelephoneLine& line);
    // Calls, consults, transfers, deflects to or picks up a number.
    void stationPressed(std::string const& number, EDSSContext context, std::string const& ringingLineURI);

    // --- lock held; each failure is in the log
    sfiResult dial(TelephoneLine& line, std::string const& number, CallPurpose purpose = CallPurpose::kOrdinary);
    // On the selected line, else on one that is idle.
    sfiResult dialOnFreeLine(std::string const& number);
    sfiResult pickup(std::string const& number);
    sfiResult answer(TelephoneLine& line);
    sfiResult takeOver(std::optional<PickupTarget> const& dialog, std::string const& whose);

private:
    void seize(TelephoneLine& line);
    void dialHotLine(TelephoneLine& line);
    void startWarmLine(TelephoneLine& line);
    void warmLineExpired(TelephoneLine& line, std::string const& digits);
    void retrieve(TelephoneLine& line);
    void hold(TelephoneLine& line);
    void consult(std::string const& number);
    void blindTransfer(std::string const& number);
    void deflect(std::string const& number, std::string const& ringingLineURI);
    TelephoneLine* freeLine(std::string const& what);

    Lines& lines_;
    int warmTimer_ = 0;  // 0: none runs
};

}  // namespace telephone
