// The keyset: a telephone of several line keys. Answers, seizes and reserves lines, and says which of the lines that
// ring is heard. On a single-line telephone it exists but is not active.
//
// Owned by the composition root; TeamServiceKeyset::Instance() while it lives. The service calls some operations with
// the phone lock held and some without; each takes it itself.
#pragma once

#include <optional>
#include <set>
#include <string>
#include <vector>

#include "platform/team/TeamServiceKeyset.h"
#include "telephone/lines/LineObserver.h"

namespace telephone {

class Lines;
class Settings;
class TelephoneLine;

class Keyset final : public TeamServiceKeyset, public LineListener
{
public:
    // The line that stands for any free one: reserving it seizes the first line that is idle.
    static constexpr char const* kAnyLine = "anyLine";

    Keyset(Lines& lines, Settings& settings);
    ~Keyset();
    Keyset(Keyset const&) = delete;
    Keyset& operator=(Keyset const&) = delete;

    bool isKeysetActive() override;
    void setCommsSrv(SvcRTEContext* context, Executable* service) override;
    void init() override;
    // The keyset starts no timer by number.
    void timerExpired(int timerId) override;
    sfiResult answerCall(std::string const& lineURI) override;
    // Selects the line: the next digits dial on it.
    void makeCall(std::string const& lineURI) override;
    // Of a call id that is not on the line: the call that it holds.
    sfiResult retrieveCall(std::string const& lineURI, int callID) override;
    // sfiCallStateAccepted: the call alerts on the keyset alone. Other states follow from the calls themselves.
    void callStateChanged(std::string const& lineURI, sfiCallState state, int callID, int reason) override;
    // The call that rings on the line is no longer heard; its lamp is steady.
    void callIgnored(std::string const& lineURI) override;
    // While a line is isolated, only that line is heard.
    void callIsolation(std::string const& lineURI, bool on) override;
    bool changeMultiUser(std::string const& lineURI) override;
    // The primary line's identifier until another user was chosen.
    std::string getCurrentMultiUser() override;
    bool getImmediateRing() override;
    void setImmediateRing(bool on, std::string& outcome) override;
    // 1 for the line to answer first: lines that are heard before ignored ones, the primary line before others, then by
    // overview position. 0: nothing rings on the line.
    int getIncomingCallPriority(std::string const& lineURI) override;
    // Preview: shows the next call that rings; ignore: silences the one that is shown, else the first to answer.
    void handleButtonPressedEvent(PhysDefs::keyFunctionType function) override;
    void initiateBCAOutgoingCall(std::string const& lineURI, std::string const& destination) override;
    bool isSpoofedDummyLine(std::string const& lineURI) override;
    bool dummyLine_reserve() override;
    bool reserveNextSCA(std::string const& lineURI) override;
    bool unreserveLine(std::string const& lineURI) override;
    // An application shows the line as off the hook (true): it is selected; or has ended that.
    void setIsInServiceInitiatedState(std::string const& lineURI, bool initiated) override;
    void terminatePreview() override;

    void lineChanged(TelephoneLine& line, ELineState before) override;

    // --- lock held
    // Whether a call on the line may be heard: it is neither ignored nor shut out by an isolated line.
    bool mayBeHeard(TelephoneLine const& line) const;
    // The line whose call is being looked at; null: none.
    TelephoneLine* preview() const { return preview_; }
    bool alertsOnKeysetOnly(int callID) const { return acceptedCalls_.count(callID) != 0; }

private:
    // Null, with what is not done for it in the log.
    TelephoneLine* find(std::string const& lineURI, char const* what) const;
    std::vector<TelephoneLine*> ringingLines() const;
    void showNextPreview();
    void ignore(TelephoneLine& line);

    Lines& lines_;
    Settings& settings_;
    TelephoneLine* isolated_ = nullptr;
    TelephoneLine* preview_ = nullptr;
    std::set<int> acceptedCalls_;
};

}  // namespace telephone
