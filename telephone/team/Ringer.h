// Lets the telephone ring: while a call rings on a line that is to be heard, after the line's ring delay unless
// immediate ring is on. The sound is the auditory device's.
//
// Owned by the composition root, after the keyset and before the end of the calls; works from start() to stop(). Told
// of lines with the phone lock held; ends of delays come on the timer thread.
#pragma once

#include <map>

#include "telephone/lines/LineObserver.h"

class AuditoryDeviceIfc;

namespace telephone {

class Keyset;
class Lines;

class Ringer final : public LineListener
{
public:
    Ringer(Lines& lines, Keyset& keyset, AuditoryDeviceIfc& device);
    ~Ringer();
    Ringer(Ringer const&) = delete;
    Ringer& operator=(Ringer const&) = delete;

    void start();
    void stop();

    void lineChanged(TelephoneLine& line, ELineState before) override;

private:
    // What is known of a line that rings.
    struct Ringing
    {
        int delayTimer = 0;  // 0: the delay is over
        int generation = 0;  // tells this ringing from an earlier one of the line
    };

    void update();
    bool isToBeHeard(TelephoneLine const& line, Ringing const& ringing) const;
    void startDelay(TelephoneLine& line);
    void delayOver(TelephoneLine& line, int generation);

    Lines& lines_;
    Keyset& keyset_;
    AuditoryDeviceIfc& device_;
    std::map<TelephoneLine*, Ringing> ringing_;
    int generation_ = 0;
    bool rings_ = false;
    bool running_ = false;
};

}  // namespace telephone
