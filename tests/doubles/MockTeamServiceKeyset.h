#pragma once

#include <type_traits>

#include <gmock/gmock.h>

#include "platform/team/TeamServiceKeyset.h"

class MockTeamServiceKeyset : public TeamServiceKeyset
{
public:
    virtual ~MockTeamServiceKeyset() = default;

    MOCK_METHOD(bool, isKeysetActive, (), (override));
    MOCK_METHOD(void, setCommsSrv, (SvcRTEContext * context, Executable* service), (override));
    MOCK_METHOD(void, init, (), (override));
    MOCK_METHOD(void, timerExpired, (int timerId), (override));
    MOCK_METHOD(sfiResult, answerCall, (std::string const& lineURI), (override));
    MOCK_METHOD(void, makeCall, (std::string const& lineURI), (override));
    MOCK_METHOD(sfiResult, retrieveCall, (std::string const& lineURI, int callID), (override));
    MOCK_METHOD(void, callStateChanged, (std::string const& lineURI, sfiCallState state, int callID, int reason),
                (override));
    MOCK_METHOD(void, callIgnored, (std::string const& lineURI), (override));
    MOCK_METHOD(void, callIsolation, (std::string const& lineURI, bool on), (override));
    MOCK_METHOD(bool, changeMultiUser, (std::string const& lineURI), (override));
    MOCK_METHOD(std::string, getCurrentMultiUser, (), (override));
    MOCK_METHOD(bool, getImmediateRing, (), (override));
    MOCK_METHOD(void, setImmediateRing, (bool on, std::string& outcome), (override));
    MOCK_METHOD(int, getIncomingCallPriority, (std::string const& lineURI), (override));
    MOCK_METHOD(void, handleButtonPressedEvent, (PhysDefs::keyFunctionType function), (override));
    MOCK_METHOD(void, initiateBCAOutgoingCall, (std::string const& lineURI, std::string const& destination),
                (override));
    MOCK_METHOD(bool, isSpoofedDummyLine, (std::string const& lineURI), (override));
    MOCK_METHOD(bool, dummyLine_reserve, (), (override));
    MOCK_METHOD(bool, reserveNextSCA, (std::string const& lineURI), (override));
    MOCK_METHOD(bool, unreserveLine, (std::string const& lineURI), (override));
    MOCK_METHOD(void, setIsInServiceInitiatedState, (std::string const& lineURI, bool initiated), (override));
    MOCK_METHOD(void, terminatePreview, (), (override));
};
static_assert(!std::is_abstract_v<MockTeamServiceKeyset>);
