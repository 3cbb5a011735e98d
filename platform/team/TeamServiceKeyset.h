// The keyset: a telephone of several line keys. The telephone owns the singleton.
// The service calls some operations while it holds the call-control lock; none may call back into a service operation
// that takes the team lock.
#pragma once

#include <string>

#include "platform/physical/PhysDefs.h"
#include "platform/sfi/SfiTypes.h"

class Executable;
class SvcRTEContext;

class TeamServiceKeyset
{
public:
    static TeamServiceKeyset* Instance();

    // Whether the keyset handles the telephone's calls.
    virtual bool isKeysetActive() = 0;

    virtual void setCommsSrv(SvcRTEContext* context, Executable* service) = 0;
    virtual void init() = 0;
    // Offers one timer expiry; ids that are not its own are ignored.
    virtual void timerExpired(int timerId) = 0;
    // Answers the call that rings on a line.
    virtual sfiResult answerCall(std::string const& lineURI) = 0;
    // Seizes a line for a new call; whether it succeeded shows in the line's state.
    virtual void makeCall(std::string const& lineURI) = 0;
    virtual sfiResult retrieveCall(std::string const& lineURI, int callID) = 0;
    virtual void callStateChanged(std::string const& lineURI, sfiCallState state, int callID, int reason) = 0;
    virtual void callIgnored(std::string const& lineURI) = 0;
    virtual void callIsolation(std::string const& lineURI, bool on) = 0;
    // False when the user can't be changed to that line.
    virtual bool changeMultiUser(std::string const& lineURI) = 0;
    virtual std::string getCurrentMultiUser() = 0;
    virtual bool getImmediateRing() = 0;
    // `outcome` is a text for the display.
    virtual void setImmediateRing(bool on, std::string& outcome) = 0;
    virtual int getIncomingCallPriority(std::string const& lineURI) = 0;
    virtual void handleButtonPressedEvent(PhysDefs::keyFunctionType function) = 0;
    virtual void initiateBCAOutgoingCall(std::string const& lineURI, std::string const& destination) = 0;
    // A line that exists for the applications only.
    virtual bool isSpoofedDummyLine(std::string const& lineURI) = 0;
    virtual bool dummyLine_reserve() = 0;
    // Reserves the next free appearance of a shared line.
    virtual bool reserveNextSCA(std::string const& lineURI) = 0;
    virtual bool unreserveLine(std::string const& lineURI) = 0;
    virtual void setIsInServiceInitiatedState(std::string const& lineURI, bool initiated) = 0;
    virtual void terminatePreview() = 0;

protected:
    ~TeamServiceKeyset() = default;
};
