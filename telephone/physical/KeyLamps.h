// Sets the lamps of the keys by the state of the telephone: lines and direct-station parties, held calls, waiting
// messages, forwarding, do-not-disturb, toggled features, mute, headset and transfer. Team features set the lamps of
// busy-lamp fields.
//
//     lines        off: idle | steady: in use here | flashing: ringing | fluttering: on hold; red: another telephone's
//     hold         flashing while a call is on hold here
//     SecondAlert  flashing while a call is ringing beside an active one
//     others       steady while on
//
// Owned by the composition root; works from start() to stop(). Called with the phone lock held, by settings without it.
#pragma once

#include <set>
#include <vector>

#include "telephone/calls/CallObserver.h"
#include "telephone/calls/CallSnapshot.h"
#include "telephone/lines/LineListener.h"
#include "telephone/management/Settings.h"
#include "telephone/physical/PhysicalInterface.h"

namespace telephone {

class Lines;
class PhoneCalls;

class KeyLamps final : public LineListener, public CallObserver
{
public:
    KeyLamps(PhysicalInterface& keys, Lines& lines, PhoneCalls& calls, Settings& settings);
    ~KeyLamps() override;
    KeyLamps(KeyLamps const&) = delete;
    KeyLamps& operator=(KeyLamps const&) = delete;

    // Once.
    void start();
    void stop();

    void lineChanged(TelephoneLine& line, ELineState before) override;
    void stationChanged(DssLine& station) override;
    // After the lines.
    void callChanged(CallSnapshot const& now, CallSnapshot const* before) override;
    void messageWaitingChanged(int lineNumber, sfiMessageWaitingRecord const& record) override;

    void microphoneMuteChanged(bool muted) override;

    void showHeadset(bool plugged);
    void showTransfer(bool chosen);

private:
    void showLine(TelephoneLine& line);
    void showHeld();
    void showForwarding();
    void showDoNotDisturb();
    void showToggles();

    PhysicalInterface& keys_;
    LampBoard& lamps_;
    Lines& lines_;
    PhoneCalls& calls_;
    Settings& settings_;
    std::vector<Settings::ListenerId> listening_;
    std::set<int> waiting_;  // lines with messages; phone lock
    bool held_ = false;      // phone lock
    bool secondAlert_ = false;
    bool running_ = false;
};

}  // namespace telephone
