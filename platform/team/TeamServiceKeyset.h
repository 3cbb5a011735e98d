/// @file
/// The keyset: a telephone with several line keys.
#pragma once

#include <string>

#include "platform/physical/PhysDefs.h"
#include "platform/sfi/SfiTypes.h"

class Executable;
class SvcRTEContext;

/// The keyset. The telephone owns the one object.
///
/// Thread: any. The service holds CSfi's Lock for answerCall and retrieveCall, and its team lock for makeCall,
/// isSpoofedDummyLine and dummyLine_reserve; none may call back into a service operation that takes the team lock. A
/// line that does not exist is logged.
class TeamServiceKeyset
{
public:
    /// The keyset of this telephone.
    /// @return Never null while the service exists.
    static TeamServiceKeyset* Instance();

    /// Asks whether the keyset handles the telephone's calls. The service then answers and retrieves through it, and
    /// settings belong to the line of its present user.
    /// @return false on a single-line telephone.
    virtual bool isKeysetActive() = 0;

    /// Binds the keyset to the service. Called by each `init`, before `init`.
    virtual void setCommsSrv(SvcRTEContext* context, Executable* service) = 0;
    /// Called by each `init` of the service, after LineManager::initialise.
    virtual void init() = 0;
    /// Offers one timer expiry; ids that are not its own are ignored.
    virtual void timerExpired(int timerId) = 0;
    /// Answers the call that rings on a line.
    /// @return sfiSuccess once under way; sfiFailure when the line does not exist or no call rings on it. The service
    ///     logs and returns it.
    virtual sfiResult answerCall(std::string const& lineURI) = 0;
    /// Seizes a line for a new call. Whether that succeeded shows in the line's state, which the service reads next.
    virtual void makeCall(std::string const& lineURI) = 0;
    /// Takes a call of a line back from hold; when the line has no such call, the one that it holds.
    /// @return sfiSuccess once under way, else sfiFailure. The service answers success in either case.
    virtual sfiResult retrieveCall(std::string const& lineURI, int callID) = 0;
    /// Tells a change of a call that did not come from the call control. The service reports sfiCallStateAccepted only:
    /// the call alerts on the keyset alone.
    /// @param lineURI the call's line
    /// @param state its state now
    /// @param callID the call
    /// @param reason always 0
    virtual void callStateChanged(std::string const& lineURI, sfiCallState state, int callID, int reason) = 0;
    /// Silences the call that rings on a line.
    virtual void callIgnored(std::string const& lineURI) = 0;
    /// Lets only one line be heard, or every line again.
    virtual void callIsolation(std::string const& lineURI, bool on) = 0;
    /// Changes the present user to that of a line.
    /// @return false when there is no such line, on a single-line telephone, or when the store refuses the change. The
    ///     service then publishes nothing.
    virtual bool changeMultiUser(std::string const& lineURI) = 0;
    /// The present user.
    /// @return The identifier of the user's line, else of the primary line.
    virtual std::string getCurrentMultiUser() = 0;
    /// Whether lines ring without their delay.
    /// @return true when they do.
    virtual bool getImmediateRing() = 0;
    /// Sets whether lines ring without their delay.
    /// @param on whether they do
    /// @param outcome receives a text for the display; the service drops it
    virtual void setImmediateRing(bool on, std::string& outcome) = 0;
    /// The place of a ringing line in the order in which calls are shown.
    /// @return From 1; 0 when the line does not ring or does not exist.
    virtual int getIncomingCallPriority(std::string const& lineURI) = 0;
    /// A key of the functions Preview or IgnoreCall was used; the action is not passed on. On the key thread, with no
    /// lock held.
    virtual void handleButtonPressedEvent(PhysDefs::keyFunctionType function) = 0;
    /// Reserves an appearance of a line and calls from it. A refusal is logged and gives the appearance back.
    /// @param lineURI the line
    /// @param destination a number or an address
    virtual void initiateBCAOutgoingCall(std::string const& lineURI, std::string const& destination) = 0;
    /// Asks for the name that stands for any free line.
    /// @return true when `lineURI` is that name on a keyset, and no line has it.
    virtual bool isSpoofedDummyLine(std::string const& lineURI) = 0;
    /// Seizes any free line.
    /// @return false when all are taken.
    virtual bool dummyLine_reserve() = 0;
    /// Reserves the next free appearance of a line.
    /// @return false when none is free, the line is not in service or does not exist: no call is then made.
    virtual bool reserveNextSCA(std::string const& lineURI) = 0;
    /// Gives a seized or reserved line back.
    /// @return false when the line does not exist. The service answers true in either case.
    virtual bool unreserveLine(std::string const& lineURI) = 0;
    /// Shows a line as off the hook without a call, or no longer.
    virtual void setIsInServiceInitiatedState(std::string const& lineURI, bool initiated) = 0;
    /// Ends the preview of a ringing line.
    virtual void terminatePreview() = 0;

protected:
    /// Never deleted through this interface.
    ~TeamServiceKeyset() = default;
};
