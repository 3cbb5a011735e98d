// Keeps the lamps of the keys as the telephone is: lines and their parties, held calls, waiting messages, forwarding,
// do-not-disturb, toggled features, mute, headset and transfer. The lamps of busy-lamp fields are the team features'
// own.
//
//     lines        off idle | steady in use here | flashing rings | fluttering on hold; red: another telephone's
//     hold         flashing while a call is on hold here
//     SecondAlert  flashing while a call rings beside an active one
//     others       steady while on
//
// Owned by the composition root; follows from start() to stop(). Changes come with the phone lock held, those of
// settings without it.
#pragma once

#include <set>
#include <vector>

#include "telephone/calls/CallObserver.h"
#include "telephone/calls/CallSnapshot.h"
#include "telephone/lines/LineObserver.h"
#include "telephone/management/Settings.h"
#include "telephone/physical/PhysicalInterface.h"

namespace telephone {

class Lines;

// What a line key shows for a state.
Lamp lampOfLine(ELineState state);

class KeyLamps final : public LineListener, public CallObserver
{
public:
    KeyLamps(PhysicalInterface& keys, Lines& lines, Settings& settings);
    ~KeyLamps() override;
    KeyLamps(KeyLamps const&) = delete;
    KeyLamps& operator=(KeyLamps const&) = delete;

    // Once; stop() is part of the end and may be called again.
    void start();
    void stop();

    void lineChanged(TelephoneLine& line, ELineState before) override;
    void stationChanged(DssLine& station) override;
    // To be called after the lines were told.
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
    Settings& settings_;
    std::vector<Settings::ListenerId> listening_;
    std::set<int> waiting_;  // lines with messages; phone lock
    bool held_ = false;      // phone lock
    bool secondAlert_ = false;
    bool running_ = false;
};

}  // namespace telephone
