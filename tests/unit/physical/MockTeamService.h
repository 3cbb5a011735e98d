// The loaded service for tests of keys: its calls and its team interface in one executable. Each recorded operation
// must come without the phone lock.
#pragma once

#include <string>

#include <gmock/gmock.h>

#include "TeamServiceIfc.h"
#include "tests/doubles/MockCommunicationsService.h"
#include "tests/unit/lines/FakeCalls.h"

namespace telephone {

class MockTeamService : public MockCommunicationsService, public TeamServiceIfc
{
public:
    explicit MockTeamService(FakeCalls& calls)
        : calls_(calls)
    {}

    MOCK_METHOD(void, lineKeyPressedFPK, (int), (override));
    MOCK_METHOD(void, lineKeyPressed, (std::string const&), (override));
    MOCK_METHOD(void, dssKeyPressedFPK, (int, EDSSContext, std::string const&, std::string const&), (override));
    MOCK_METHOD(void, dssKeyPressed, (std::string const&, EDSSContext, std::string const&, std::string const&),
                (override));
    MOCK_METHOD(void, blfKeyPressedFPK, (int, bool), (override));
    MOCK_METHOD(void, setDNDStatusForBLF, (std::string const&, bool), (override));
    MOCK_METHOD(int, getLineRingDelay, (std::string const&), (override));
    MOCK_METHOD(std::string, getShortDescription, (std::string const&), (override));
    MOCK_METHOD(int, getPrimary, (std::string const&), (override));
    MOCK_METHOD(bool, getVisibleOnOverview, (std::string const&), (override));
    MOCK_METHOD(int, getOverviewPosition, (std::string const&), (override));
    MOCK_METHOD(int, getState, (std::string const&), (override));
    MOCK_METHOD(std::string, getRemoteURI, (std::string const&), (override));
    MOCK_METHOD(bool, isKeyset, (), (override));
    MOCK_METHOD(bool, observe, (Executable*), (override));
    MOCK_METHOD(bool, reserveLine, (std::string const&), (override));
    MOCK_METHOD(bool, unreserveLine, (std::string const&), (override));
    MOCK_METHOD(bool, reserveNextSCA, (std::string const&), (override));
    MOCK_METHOD(std::string, getWarmLine, (), (override));
    MOCK_METHOD(int, getLineRing, (std::string const&), (override));
    MOCK_METHOD(void, requestOverviewData, (std::string const&), (override));
    MOCK_METHOD(void, ftToggleKeyPressed, (int), (override));
    MOCK_METHOD(bool, getImmediateRing, (), (override));
    MOCK_METHOD(void, setImmediateRing, (bool), (override));
    MOCK_METHOD(std::string, getURIforFPK, (int), (override));
    MOCK_METHOD(int, getFPKforUri, (std::string const&), (override));
    MOCK_METHOD(void, callIgnored, (std::string const&), (override));
    MOCK_METHOD(void, callIsolation, (std::string const&, bool), (override));
    MOCK_METHOD(int, getLineHeadsetOverride, (), (override));
    MOCK_METHOD(bool, bridgeCall, (std::string const&), (override));
    MOCK_METHOD(void, pushRequest, (std::string&, std::string&), (override));
    MOCK_METHOD(sfiResult, retrieveRemotelyHeldCall, (std::string const&), (override));
    MOCK_METHOD(int, getIncomingCallPriority, (std::string const&), (override));
    MOCK_METHOD(void, terminatePreview, (), (override));
    MOCK_METHOD(int, getHotWarmLineStatus, (std::string const&), (override));
    MOCK_METHOD(std::string, getHotWarmLineDialInfo, (std::string const&), (override));
    MOCK_METHOD(bool, isLocallyIdleLine, (), (override));
    MOCK_METHOD(std::string, getEACockpitData, (std::string), (override));
    MOCK_METHOD(bool, setEACockpitData, (std::string, std::string), (override));
    MOCK_METHOD(bool, lineConsideredAsPrivate, (std::string const&), (override));
    MOCK_METHOD(int, getLineAudibleAlert, (std::string const&), (override));
    MOCK_METHOD(void, setMissedCallIndication, (std::string const&, bool), (override));
    MOCK_METHOD(void, changeMultiUser, (std::string const&), (override));
    MOCK_METHOD(void, processInvokeDOAction, (int, int, bool, std::string const&), (override));
    MOCK_METHOD(void, processInvokeDVAction,
                (ZEBLocalFeaturesDefs::LF_NOTIFICATION_ID, int, int, ZEBLocalFeaturesDefs::eActionType), (override));
    MOCK_METHOD(void, initiateBCAOutgoingCall, (std::string const&, std::string const&), (override));

    // Records the operation; fails when the caller holds the phone lock.
    void note(std::string operation)
    {
        EXPECT_FALSE(calls_.isLockedByCaller()) << operation << " with the phone lock held";
        std::lock_guard const lock(mutex_);
        noted_.push_back(std::move(operation));
    }
    std::vector<std::string> takeNoted()
    {
        std::lock_guard const lock(mutex_);
        return std::exchange(noted_, {});
    }

private:
    FakeCalls& calls_;
    std::mutex mutex_;
    std::vector<std::string> noted_;
};
static_assert(!std::is_abstract_v<MockTeamService>);

}  // namespace telephone
