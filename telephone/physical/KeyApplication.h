// The telephone's own key application: handles the keys to which no application subscribes. It passes line,
// direct-station, busy-lamp and toggle keys to the service, and implements mute, headset, release and the hook switch
// with the service's operations. Called on the thread of the keys with no lock held, because the service takes its team
// lock before the phone lock.
//
// While the phone is locked, only keys that dial a permitted number work, and the hook switch.
//
// Owned by the composition root.
#pragma once

#include <atomic>
#include <optional>

#include "platform/lines/Line.h"
#include "telephone/base/Refusal.h"
#include "telephone/calls/CallSnapshot.h"
#include "telephone/lines/LoadedService.h"
#include "telephone/physical/PhysicalInterface.h"

class Executable;

namespace telephone {

class KeyLamps;
class Lines;
class PhoneCalls;
class Settings;

class KeyApplication final : public KeyHandler
{
public:
    KeyApplication(PhysicalInterface& keys, KeyLamps& lamps, Lines& lines, PhoneCalls& calls, Settings& settings);
    ~KeyApplication();
    KeyApplication(KeyApplication const&) = delete;
    KeyApplication& operator=(KeyApplication const&) = delete;

    // The service, once it is initialised; null before it ends. Keys work in between.
    void setService(Executable* service) { service_.set(service); }

    void keyPressed(PhoneKey const& key) override;
    void hookChanged(bool up) override;
    void plugChanged(PhysDefs::plugIdentifier plug, bool in) override;

private:
    struct Row;
    static Row const kRows[];

    bool mayAct(PhoneKey const& key) const;
    Outcome<> linePressed(PhoneKey const& key);
    Outcome<> stationPressed(PhoneKey const& key);
    Outcome<> busyLampPressed(PhoneKey const& key);
    Outcome<> togglePressed(PhoneKey const& key);
    Outcome<> mutePressed(PhoneKey const& key);
    Outcome<> headsetPressed(PhoneKey const& key);
    Outcome<> releasePressed(PhoneKey const& key);
    Outcome<> transferPressed(PhoneKey const& key);
    // The next direct-station or busy-lamp key transfers the current call.
    void setTransferMode(bool on);
    bool takeTransferMode();

    // Answers the ringing call, else seizes a line unless one is in use.
    Outcome<> goOffHook();
    // Ends the active or outgoing call and gives back a seized line.
    Outcome<> goOnHook();
    EDSSContext contextFor(PhoneKey const& key, std::string& ringingLineURI);

    // --- lock held
    // A call that alerts on the keyset alone is answered by its line key only, so it is not among them.
    std::optional<CallSnapshot> alertingCall() const;
    std::optional<CallSnapshot> currentCall() const;

    PhysicalInterface& keys_;
    KeyLamps& lamps_;
    Lines& lines_;
    PhoneCalls& calls_;
    Settings& settings_;
    LoadedService service_;
    std::atomic<bool> transferMode_{false};
};

}  // namespace telephone
