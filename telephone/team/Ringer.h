// Rings the telephone while a call is ringing on a line that may be heard, after the line's ring delay unless immediate
// ring is on. The auditory device makes the sound.
//
// Owned by the composition root; works from start() to stop(). Told of lines with the phone lock held; delays expire on
// the timer thread.
#pragma once

#include <map>

#include "telephone/lines/LineListener.h"

class AuditoryDeviceIfc;

namespace telephone {

class Keyset;
class Lines;
class PhoneCalls;
class TimerService;

class Ringer final : public LineListener
{
public:
    Ringer(Lines& lines, PhoneCalls& calls, TimerService& timers, Keyset& keyset, AuditoryDeviceIfc& device);
    ~Ringer();
    Ringer(Ringer const&) = delete;
    Ringer& operator=(Ringer const&) = delete;

    void start();
    void stop();

    void lineChanged(TelephoneLine& line, ELineState before) override;

private:
    // A ringing line.
    struct Ringing
    {
        int delayTimer = 0;  // 0 when the delay is over
        int generation = 0;  // distinguishes it from an earlier ringing of the line
    };

    void update();
    bool isToBeHeard(TelephoneLine const& line, Ringing const& ringing) const;
    void startDelay(TelephoneLine& line);
    void delayExpired(TelephoneLine& line, int generation);

    Lines& lines_;
    PhoneCalls& calls_;
    TimerService& timers_;
    Keyset& keyset_;
    AuditoryDeviceIfc& device_;
    std::map<TelephoneLine*, Ringing> ringing_;
    int generation_ = 0;
    bool rings_ = false;
    bool running_ = false;
};

}  // namespace telephone
