// What the telephone's own key application does with the keys that nobody else handles: tells the service of line,
// direct-station, busy-lamp and toggle keys, and does the work of mute, headset, release and the hook switch through
// the service's operations. Called on the thread of the keys with no lock held, because the service takes its team
// lock first and the phone lock after it.
//
// While the phone is locked a key does nothing, unless it is one that dials a permitted number. The hook switch always
// answers and clears.
//
// Owned by the composition root.
#pragma once

#include <atomic>
#include <optional>

#include "platform/lines/Line.h"
#include "telephone/calls/CallSnapshot.h"
#include "telephone/lines/ServiceDoors.h"
#include "telephone/physical/PhysicalInterface.h"

class Executable;

namespace telephone {

class KeyLamps;
class Lines;
class Settings;

class KeyApplication final : public KeyHandler
{
public:
    KeyApplication(PhysicalInterface& keys, KeyLamps& lamps, Lines& lines, Settings& settings);
    ~KeyApplication();
    KeyApplication(KeyApplication const&) = delete;
    KeyApplication& operator=(KeyApplication const&) = delete;

    // The loaded service, once it is initialised: keys work from then on. Null before the service ends.
    void setService(Executable* service);
    // The next direct-station or busy-lamp key transfers the present call: chosen by the transfer key or a call view.
    void setTransferMode(bool on);
    bool transferMode() const { return transferMode_; }

    void keyPressed(PhoneKey const& key) override;
    void hookChanged(bool up) override;
    void plugChanged(PhysDefs::plugIdentifier plug, bool in) override;

private:
    struct Row;
    static Row const kRows[];

    bool mayAct(PhoneKey const& key) const;
    void linePressed(PhoneKey const& key);
    void stationPressed(PhoneKey const& key);
    void busyLampPressed(PhoneKey const& key);
    void togglePressed(PhoneKey const& key);
    void mutePressed(PhoneKey const& key);
    void headsetPressed(PhoneKey const& key);
    void releasePressed(PhoneKey const& key);
    void transferPressed(PhoneKey const& key);
    bool takeTransferMode();

    // Answers the call that rings, else seizes a line unless there is one in use.
    void goOffHook();
    // Ends the call that speaks or dials, and gives back a line that is seized.
    void goOnHook();
    std::optional<CallSnapshot> alertingCall() const;
    std::optional<CallSnapshot> currentCall() const;
    EDSSContext contextFor(PhoneKey const& key, std::string& ringingLineURI);

    PhysicalInterface& keys_;
    KeyLamps& lamps_;
    Lines& lines_;
    Settings& settings_;
    ServiceDoors service_;
    std::atomic<bool> transferMode_{false};
};

}  // namespace telephone
