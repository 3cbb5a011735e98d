/// @file
/// TeamServiceKeyset, answering "not there".
#pragma once

#include "platform/kit/Missing.h"
#include "platform/team/TeamServiceKeyset.h"

namespace kit {

/// The keyset of a telephone that has none.
class DefaultTeamServiceKeyset : public TeamServiceKeyset
{
public:
    /// Deleted by whoever made it.
    virtual ~DefaultTeamServiceKeyset() = default;

    bool isKeysetActive() override
    {
        kMissing.report("isKeysetActive", "return true on a telephone with several line keys");
        return false;
    }
    void setCommsSrv(SvcRTEContext* /*context*/, Executable* /*service*/) override
    {
        kMissing.report("setCommsSrv", "keep the context and the service");
    }
    void init() override { kMissing.report("init", "set the keyset up"); }
    void timerExpired(int /*timerId*/) override
    {
        kMissing.report("timerExpired", "act on the ids of your own timers, ignore the others");
    }
    sfiResult answerCall(std::string const& /*lineURI*/) override
    {
        kMissing.report("answerCall", "answer the call that rings on the line");
        return sfiFailure;
    }
    void makeCall(std::string const& /*lineURI*/) override { kMissing.report("makeCall", "seize the line"); }
    sfiResult retrieveCall(std::string const& /*lineURI*/, int /*callID*/) override
    {
        kMissing.report("retrieveCall", "take the line's call back from hold");
        return sfiFailure;
    }
    void callStateChanged(std::string const& /*lineURI*/, sfiCallState /*state*/, int /*callID*/,
                          int /*reason*/) override
    {
        kMissing.report("callStateChanged", "note that the call alerts on the keyset alone");
    }
    void callIgnored(std::string const& /*lineURI*/) override { kMissing.report("callIgnored", "silence the line"); }
    void callIsolation(std::string const& /*lineURI*/, bool /*on*/) override
    {
        kMissing.report("callIsolation", "let one line be heard, or all");
    }
    bool changeMultiUser(std::string const& /*lineURI*/) override
    {
        kMissing.report("changeMultiUser", "change the user to that of the line");
        return false;
    }
    std::string getCurrentMultiUser() override
    {
        kMissing.report("getCurrentMultiUser", "return the identifier of the user's line");
        return {};
    }
    bool getImmediateRing() override
    {
        kMissing.report("getImmediateRing", "tell whether lines ring without their delay");
        return false;
    }
    void setImmediateRing(bool /*on*/, std::string& /*outcome*/) override
    {
        kMissing.report("setImmediateRing", "set whether lines ring without their delay");
    }
    int getIncomingCallPriority(std::string const& /*lineURI*/) override
    {
        kMissing.report("getIncomingCallPriority", "tell the place of the ringing line");
        return 0;
    }
    void handleButtonPressedEvent(PhysDefs::keyFunctionType /*function*/) override
    {
        kMissing.report("handleButtonPressedEvent", "act on the keys Preview and IgnoreCall");
    }
    void initiateBCAOutgoingCall(std::string const& /*lineURI*/, std::string const& /*destination*/) override
    {
        kMissing.report("initiateBCAOutgoingCall", "reserve an appearance and call from it");
    }
    bool isSpoofedDummyLine(std::string const& /*lineURI*/) override
    {
        kMissing.report("isSpoofedDummyLine", "tell whether the name stands for any free line");
        return false;
    }
    bool dummyLine_reserve() override
    {
        kMissing.report("dummyLine_reserve", "seize any free line");
        return false;
    }
    bool reserveNextSCA(std::string const& /*lineURI*/) override
    {
        kMissing.report("reserveNextSCA", "reserve the next free appearance");
        return false;
    }
    bool unreserveLine(std::string const& /*lineURI*/) override
    {
        kMissing.report("unreserveLine", "give the line back");
        return false;
    }
    void setIsInServiceInitiatedState(std::string const& /*lineURI*/, bool /*initiated*/) override
    {
        kMissing.report("setIsInServiceInitiatedState", "show the line as off the hook");
    }
    void terminatePreview() override { kMissing.report("terminatePreview", "end the preview"); }

private:
    static constexpr Missing kMissing{"TeamServiceKeyset", "platform/team/TeamServiceKeyset.h"};
};

}  // namespace kit
