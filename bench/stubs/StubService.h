// A service that answers every operation at once: a benchmark then measures the invoker alone.
#pragma once

#include "CommunicationsServiceIfc.h"
#include "platform/framework/Executable.h"
#include "platform/framework/InvokerResponse.h"

class StubService final : public Executable, public CommunicationsServiceIfc
{
public:
    void init(Context& /*context*/) override {}
    void shutdown() override {}

    void processSignallingComponentEvent(char const*, int) override {}
    sfiResult activate() override { return done(); }
    sfiResult deactivate(bool) override { return done(); }
    sfiResult callClear(std::string const&, int, CSTAEventCause) override { return done(); }
    sfiResult outgoingCallMake(std::string const&, int, char const*, bool, bool, bool) override { return done(); }
    sfiResult acceptCall(std::string const&, int, bool) override { return done(); }
    sfiResult answerCall(std::string const&, int) override { return done(); }
    sfiResult deflectCall(std::string const&, int, char const*) override { return done(); }
    sfiResult holdCall(std::string const&, int, sfiFeature, bool) override { return done(); }
    sfiResult retrieveCall(std::string const&, int) override { return done(); }
    sfiResult attendedTransferCall(std::string const&, int, int) override { return done(); }
    sfiResult blindTransferCall(std::string const&, int, char const*) override { return done(); }
    sfiResult SendCSTARequest(std::string const&, std::string const&) override { return done(); }
    sfiResult sendUACSTAServerMessage(std::string&, std::string&) override { return done(); }
    sfiResult InitializeOrFinalizeServerFeatures(std::string const&, bool) override { return done(); }
    sfiResult activateCallbackRinging(std::string const&, int) override { return done(); }
    sfiResult activateCallbackBusy(std::string const&, int) override { return done(); }
    sfiResult cancelCallbacks(std::string const&, int, std::string const&, sfiCancelCallBackType, bool) override
    {
        return done();
    }
    sfiResult consultationCall(std::string const&, int, char const*) override { return done(); }
    sfiResult refuseCall(std::string const&, int, sfiRefuseCall) override { return done(); }
    sfiResult subscribe(Executable*) override { return done(); }
    sfiResult directedPickupCall(std::string const&, int, std::string const&, bool) override { return done(); }
    sfiResult groupPickupCall(std::string const&, int) override { return done(); }
    sfiResult setServiceState(sfiServiceState) override { return done(); }
    sfiResult getServiceState(sfiServiceState&) override { return done(); }
    sfiResult setDoNotDisturb(std::string const&, bool) override { return done(); }
    sfiResult getDoNotDisturb(std::string const&, bool&) override { return done(); }
    sfiResult setAgentState(std::string const&, std::string const&) override { return done(); }
    sfiResult setMicrophoneMute(bool) override { return done(); }
    sfiResult getMicrophoneMute(bool&) override { return done(); }
    sfiResult systemStatus(char const*, char const*) override { return done(); }
    sfiResult generateDigits(std::string const&, int, char const*) override { return done(); }
    sfiResult getDevices(std::vector<std::string>& devices) override
    {
        devices.emplace_back("<prime:4711>");
        return done();
    }
    sfiResult conferenceCall(std::string const&, int, int, sfiFeature) override { return done(); }
    bool getManualHoldIndication(std::string const&, int) override { return done() == sfiSuccess; }
    sfiResult alternateCalls(std::string const&) override { return done(); }
    sfiResult getMessageWaitingIndicator(int&, unsigned int&, unsigned int&, unsigned int&, unsigned int&, int&, int&,
                                         int&, std::string&) override
    {
        return done();
    }
    sfiResult setAssociatedCalls(bool) override { return done(); }
    sfiResult setLampMode(std::string const&, std::string const&, int) override { return done(); }
    sfiResult makeSecurityChangeReinvite(std::string const&, int, bool) override { return done(); }
    void setIsInServiceInitiatedState(std::string const&, bool) override { done(); }
    sfiResult setForwardingConfiguration(std::string const&, sfiForwardingType, bool, std::string const&, int,
                                         bool) override
    {
        return done();
    }
    sfiResult getForwardingConfiguration(sfiForwardingType, bool&, std::string&, int&) override { return done(); }
    void callbackDOFeatureCallID(std::string const&, int) override { done(); }
    std::string csCommunicationsService(char const*) override { return {}; }
    void activateStoredFwd() override {}

    unsigned long calls = 0;

private:
    sfiResult done()
    {
        ++calls;
        return sfiSuccess;
    }
};

// Discards the answer.
class StubResponse final : public InvokerResponse
{
public:
    void finish() override { ++finished; }
    void sendResponse(char const* /*answer*/, int length) override { bytes += static_cast<unsigned long>(length); }
    std::string const& channelName() override { return channel_; }

    unsigned long finished = 0;
    unsigned long bytes = 0;

private:
    std::string channel_ = "bench";
};
