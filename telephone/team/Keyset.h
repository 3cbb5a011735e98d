// The keyset: a telephone with several line keys. Answers, seizes and reserves lines, and decides which of the ringing
// lines are heard. On a single-line telephone it exists but is not active.
//
// Owned by the composition root; TeamServiceKeyset::Instance() while it exists. The service calls some operations with
// the phone lock held and some without it; each takes the lock itself.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "platform/team/TeamServiceKeyset.h"
#include "telephone/base/Refusal.h"
#include "telephone/framework/OnlyObject.h"
#include "telephone/lines/LineListener.h"

namespace telephone {

class LineActions;
class Lines;
class PhoneCalls;
class Settings;
class TelephoneLine;

class Keyset final : public TeamServiceKeyset, public LineListener
{
public:
    // A line identifier that stands for any free line: reserving it seizes the first idle line.
    static constexpr char const* kAnyLine = "anyLine";

    Keyset(Lines& lines, LineActions& actions, PhoneCalls& calls, Settings& settings);
    ~Keyset();

    bool isKeysetActive() override;
    void setCommsSrv(SvcRTEContext* context, Executable* service) override;
    void init() override;
    // The keyset starts no numbered timers.
    void timerExpired(int /*timerId*/) override {}
    sfiResult answerCall(std::string const& lineURI) override;
    // Selects the line: the next digits dial on it.
    void makeCall(std::string const& lineURI) override;
    // When the call is not on the line: retrieves the call that the line holds.
    sfiResult retrieveCall(std::string const& lineURI, int callID) override;
    // sfiCallStateAccepted: from now on the call alerts on the keyset alone, by the lamp of its line key: it is not
    // heard, and only its line key or an application answers it, not the hook switch, the headset key or a deflection
    // by a direct-station key. Other states follow from the calls themselves.
    void callStateChanged(std::string const& lineURI, sfiCallState state, int callID, int reason) override;
    // The call that is ringing on the line is no longer heard, and its lamp is steady.
    void callIgnored(std::string const& lineURI) override;
    // While a line is isolated, no other line is heard.
    void callIsolation(std::string const& lineURI, bool on) override;
    bool changeMultiUser(std::string const& lineURI) override;
    // The primary line's identifier until another user is chosen.
    std::string getCurrentMultiUser() override;
    bool getImmediateRing() override;
    void setImmediateRing(bool on, std::string& outcome) override;
    // 1 for the line to answer first: ignored calls last, the primary line before others, then by overview position. 0
    // when no call is ringing on the line.
    int getIncomingCallPriority(std::string const& lineURI) override;
    // Preview: shows the next ringing call. Ignore: silences the call shown, else the first to answer.
    void handleButtonPressedEvent(PhysDefs::keyFunctionType function) override;
    void initiateBCAOutgoingCall(std::string const& lineURI, std::string const& destination) override;
    bool isSpoofedDummyLine(std::string const& lineURI) override;
    bool dummyLine_reserve() override;
    bool reserveNextSCA(std::string const& lineURI) override;
    bool unreserveLine(std::string const& lineURI) override;
    // initiated: an application shows the line as off the hook, so it is selected; otherwise it is given back.
    void setIsInServiceInitiatedState(std::string const& lineURI, bool initiated) override;
    void terminatePreview() override;

    void lineChanged(TelephoneLine& line, ELineState before) override;

    // --- lock held
    // Whether the line has a call to be heard and no other line is isolated.
    bool mayBeHeard(TelephoneLine const& line) const;
    // The line whose call is shown; null without a preview.
    TelephoneLine* preview() const { return preview_; }

private:
    // Acts on a line with the lock held. False: refused; the refusal is reported.
    bool act(std::string const& lineURI, std::function<Outcome<>(TelephoneLine&)> const& action);
    Outcome<TelephoneLine*> find(std::string const& lineURI) const;
    Outcome<> retrieve(TelephoneLine& line, int callID);
    Outcome<> makeBridgedCall(TelephoneLine& line, std::string const& destination);
    Outcome<> ignoreNext();
    std::vector<TelephoneLine*> ringingLines() const;
    void showNextPreview();

    Lines& lines_;
    LineActions& actions_;
    PhoneCalls& calls_;
    Settings& settings_;
    TelephoneLine* isolated_ = nullptr;
    TelephoneLine* preview_ = nullptr;
    OnlyObject<Keyset> const only_{*this, "a keyset"};
};

}  // namespace telephone
