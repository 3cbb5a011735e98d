// What the kit says of null is true of the library: each collaborator, result and argument is null in turn, in a
// process of its own, which is initialised, sent requests, timer expiries and key presses, and shut down.
#include <algorithm>
#include <cstdio>
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include "CommunicationsServiceEventIfc.h"
#include "CommunicationsServiceRequests.h"
#include "TeamServiceIfc.h"
#include "platform/framework/SvcRTEContext.h"
#include "platform/kit/Check.h"
#include "platform/kit/CollectedAnswer.h"
#include "platform/kit/DefaultAuditoryDeviceIfc.h"
#include "platform/kit/DefaultCSfi.h"
#include "platform/kit/DefaultCertificateMgmtSvcIfc.h"
#include "platform/kit/DefaultDigitAnalysisServiceIfc.h"
#include "platform/kit/DefaultDirectedPickupHandler.h"
#include "platform/kit/DefaultFeatureToggle.h"
#include "platform/kit/DefaultLine.h"
#include "platform/kit/DefaultLineManager.h"
#include "platform/kit/DefaultLocalMgmtIfc.h"
#include "platform/kit/DefaultMediaRecordingService.h"
#include "platform/kit/DefaultPhysicalInterfaceServiceIfc.h"
#include "platform/kit/DefaultTeamServiceFeatures.h"
#include "platform/kit/DefaultTeamServiceKeyset.h"
#include "platform/kit/EventChannel.h"
#include "platform/kit/Library.h"
#include "platform/physical/physicalEventObserver.h"

namespace {

// The one collaborator that is null. Set in a child process only.
std::string nullName;

template <class Class>
Class* unlessNull(char const* name, Class& object)
{
    return nullName == name ? nullptr : &object;
}

// What the service has asked of the platform.
std::vector<std::string> calls;

bool called(std::string const& call)
{
    return std::find(calls.begin(), calls.end(), call) != calls.end();
}

class CallControl final : public kit::DefaultCSfi
{
public:
    void SetAuditoryDevice(AuditoryDeviceIfc* device) override
    {
        calls.emplace_back(device == nullptr ? "no sound device" : "sound device");
    }
    int StartTimer(int /*milliseconds*/) override { return kTimer; }
    bool IsPhoneLocked() override { return locked; }
    sfiResult CallMake(sfiCallInfo* /*call*/, std::string const& /*destination*/, int /*mode*/, int /*option*/,
                       bool /*dssDirectCall*/, bool /*bridgeCall*/, bool /*callCompletionCall*/,
                       bool numberFlag) override
    {
        calls.emplace_back(numberFlag ? "emergency call" : "call");
        return sfiSuccess;
    }
    sfiResult SetDoNotDisturb(int /*lineID*/, bool /*on*/) override
    {
        calls.emplace_back("do-not-disturb");
        return sfiSuccess;
    }
    sfiResult SetAgentState(int /*lineID*/, std::string const& /*state*/) override
    {
        calls.emplace_back("agent state");
        return sfiSuccess;
    }
    void SetHeadsetPlugged(bool /*plugged*/) override { calls.emplace_back("headset"); }
    sfiResult Subscribe(Executable* subscriber) override { return subscriber == nullptr ? sfiFailure : sfiSuccess; }

    static constexpr int kTimer = 77;
    bool locked = false;
};

// A keyset whose only line has appearances and, unless it is hidden, no configuration.
class Lines final : public kit::DefaultLineManager
{
public:
    std::string getKeysetType() override { return keyset ? "keyset" : ""; }
    bool isMCALine(std::string const& /*baseURI*/) override { return keyset; }
    Line* getLine(std::string const& /*lineURI*/) override { return line; }
    Line* getLineForFPK(int /*keyNumber*/) override { return line; }
    Line* getDSSLineForFPK(int /*keyNumber*/) override { return line; }
    Line* getLineInState(ELineState /*state*/, std::string const& /*baseURI*/) override { return line; }
    std::string getURIforFPK(int /*keyNumber*/) override { return "4711"; }
    std::string getLocalHeldLine() override { return "4711"; }

    bool keyset = false;
    Line* line = nullptr;
};

class Features final : public kit::DefaultTeamServiceFeatures
{
public:
    void setCertMgmtInterface(CertificateMgmtSvcIfc* certificates) override
    {
        calls.emplace_back(certificates == nullptr ? "no certificates" : "certificates");
    }
};

class Store final : public kit::DefaultLocalMgmtIfc
{
public:
    int setManageableData(ManageableData& /*data*/) override { return 1; }
    void registerForTag(MgmtAgentIfc* /*agent*/, char const* tag) override { calls.emplace_back(tag); }
};

class DialPlan final : public kit::DefaultDigitAnalysisServiceIfc
{
public:
    bool isPermittedNumber(std::string const& /*number*/) override { return true; }
    void queryNumberFlag(std::string const& /*number*/, std::string& answer) override { answer = "true"; }
};

class Keys final : public kit::DefaultPhysicalInterfaceServiceIfc
{
public:
    bool subscribePhysicalEvents(physicalEventObserver* /*observer*/,
                                 std::vector<PhysDefs::SubscriptionGrp>& /*groups*/) override
    {
        calls.emplace_back("keys");
        return true;
    }
    void setLamp(int /*lamp*/, int /*mode*/, int /*colour*/, int /*option*/) override { calls.emplace_back("lamp"); }
};

CallControl callControl;
Lines lines;
Features features;

// The framework's part: everything is there but what `nullName` names.
class Telephone final : public SvcRTEContext
{
public:
    Executable* findExecutable(std::string const& name) override
    {
        return name == nullName ? nullptr : executables_.at(name);
    }
    Proxy* findProxy(std::string const& /*interface*/, std::string const& /*channel*/) override { return proxy; }

    std::string request(std::string const& text)
    {
        kit::CollectedAnswer answer("application");
        invoker->handleMessage(service.get(), text.c_str(), static_cast<int>(text.size()), &answer);
        return answer.text();
    }
    void init()
    {
        service->init(*this);
        invoker->initInvoker(this);
    }

    kit::Library library{LIBRARY_PATH};
    std::unique_ptr<Service> service = library.createService();
    std::unique_ptr<Invoker> invoker = library.createInvoker();
    Proxy* proxy = nullptr;

private:
    kit::DefaultAuditoryDeviceIfc sound_;
    Keys keys_;
    DialPlan plan_;
    Store store_;
    kit::DefaultCertificateMgmtSvcIfc certificates_;
    std::map<std::string, Executable*> executables_{{"AuditoryDeviceIfc", &sound_},
                                                    {"PhysicalInterfaceServiceIfc", &keys_},
                                                    {"DigitAnalysisServiceIfc", &plan_},
                                                    {"LocalMgmtIfc", &store_},
                                                    {"CertificateMgmtSvcIfc", &certificates_}};
};

// A request with a value for each of its parameters.
std::string requestOf(RequestDescription const& description)
{
    std::string text = "<Method>" + std::string(description.name) + "</Method>";
    for (auto const& parameter : description.parameters) {
        std::string const tag(parameter.tag);
        std::string const value(parameter.sample);
        text += parameter.kind == RequestParameterKind::body ? value : "<" + tag + ">" + value + "</" + tag + ">";
    }
    return text;
}

void sendEveryRequest(Telephone& telephone)
{
    for (auto const& description : kRequestDescriptions) {
        telephone.request(requestOf(description));
    }
}

void useWholly(Telephone& telephone)
{
    telephone.init();
    sendEveryRequest(telephone);
    telephone.service->timerEvent(CallControl::kTimer);
    telephone.service->timerEvent(1);
    auto& observer = dynamic_cast<physicalEventObserver&>(*telephone.service);
    for (auto const key : {PhysDefs::keyFunctionForwarding, PhysDefs::keyFunctionPreview, PhysDefs::keyFunctionHold}) {
        observer.buttonPressedEvent(key, 1, PhysDefs::actionPressed, "");
    }
    observer.jackEvent(PhysDefs::plugHeadset, PhysDefs::plugIn);
    observer.fpkAvailableEvent();
    telephone.service->shutdown();
}

// Whether a process of its own survives the use of a telephone without `name`, and `use` then returns true.
enum class End
{
    asExpected,
    otherwise,
    crash,
};

End endOf(std::string const& name, std::function<bool(Telephone&)> const& use)
{
    pid_t const child = fork();
    if (child == 0) {
        // What the kit logs and a sanitizer reports would fill the test's output.
        static_cast<void>(freopen("/dev/null", "w", stderr));
        nullName = name;
        bool expected = false;
        {
            Telephone telephone;
            expected = use(telephone);
        }
        _exit(expected ? 10 : 11);
    }
    int status = 0;
    waitpid(child, &status, 0);
    int const code = WIFEXITED(status) ? WEXITSTATUS(status) : 0;
    return code == 10 ? End::asExpected : code == 11 ? End::otherwise : End::crash;
}

class NullCollaborator : public testing::TestWithParam<kit::Collaborator>
{};

INSTANTIATE_TEST_SUITE_P(Each, NullCollaborator, testing::ValuesIn(kit::kCollaborators),
                         [](auto const& each) { return std::string(each.param.name); });

TEST_P(NullCollaborator, IsWhatTheTableSays)
{
    auto const initialised = [](Telephone& telephone) {
        telephone.init();
        return true;
    };
    auto const usedWholly = [](Telephone& telephone) {
        useWholly(telephone);
        return true;
    };
    End const init = endOf(GetParam().name, initialised);
    End const use = endOf(GetParam().name, usedWholly);

    kit::WhenNull const whenNull = GetParam().whenNull;
    EXPECT_EQ(init, whenNull == kit::WhenNull::initCrashes ? End::crash : End::asExpected);
    EXPECT_EQ(use, whenNull == kit::WhenNull::lacksItsFeature ? End::asExpected : End::crash);
}

TEST_P(NullCollaborator, IsFoundByTheCheck)
{
    auto const isTheOnlyFinding = [](Telephone& telephone) {
        auto const findings = kit::check(telephone);
        return findings.size() == 1 && findings.front().collaborator.name == std::string(GetParam().name) &&
               !findings.front().isOfAnotherClass;
    };
    EXPECT_EQ(endOf(GetParam().name, isTheOnlyFinding), End::asExpected);
}

TEST(NullCollaborators, TelephoneThatHasAll_IsUsedWithoutFault)
{
    EXPECT_EQ(endOf("",
                    [](Telephone& telephone) {
                        useWholly(telephone);
                        return kit::check(telephone).empty();
                    }),
              End::asExpected);
}

TEST(NullCollaborators, CallControlIsNull_FiveRequestsSurvive)
{
    std::set<std::string> survivors;
    for (auto const& description : kRequestDescriptions) {
        auto const sent = [&description](Telephone& telephone) {
            auto const proxy = telephone.library.createEventProxy();
            telephone.proxy = proxy.get();
            telephone.init();
            telephone.request(requestOf(description));
            return true;
        };
        if (endOf("CSfi", sent) == End::asExpected) {
            survivors.insert(std::string(description.name));
        }
    }
    EXPECT_EQ(survivors, (std::set<std::string>{"GetDevices", "callbackDOFeatureCallID", "getForwardingConfiguration",
                                                "setIsInServiceInitiatedState", "setLampMode"}));
}

TEST(NullCollaborators, CallControlIsNull_TimersKeysAndShutdownCrash)
{
    for (std::function<void(Telephone&)> const& use : std::vector<std::function<void(Telephone&)>>{
             [](Telephone& telephone) { telephone.service->timerEvent(1); },
             [](Telephone& telephone) {
                 dynamic_cast<physicalEventObserver&>(*telephone.service)
                     .buttonPressedEvent(PhysDefs::keyFunctionHold, 1, PhysDefs::actionPressed, "");
             },
             [](Telephone& telephone) { telephone.service->shutdown(); }}) {
        EXPECT_EQ(endOf("CSfi",
                        [&use](Telephone& telephone) {
                            telephone.init();
                            use(telephone);
                            return true;
                        }),
                  End::crash);
    }
}

// Runs what needs a named service, with it and without it, and compares what happened.
void expectDifference(std::string const& name, std::function<bool(Telephone&, bool isThere)> const& holds)
{
    for (bool const isThere : {true, false}) {
        EXPECT_EQ(endOf(isThere ? "" : name,
                        [&](Telephone& telephone) {
                            telephone.init();
                            return holds(telephone, isThere);
                        }),
                  End::asExpected)
            << name << (isThere ? " is there" : " is null");
    }
}

TEST(NullCollaborators, SoundDevice_CallControlIsGivenNone)
{
    expectDifference("AuditoryDeviceIfc", [](Telephone&, bool isThere) {
        return called("sound device") == isThere && called("no sound device") != isThere;
    });
}

TEST(NullCollaborators, PhysicalInterface_NoKeysNoLampsNoJack)
{
    expectDifference("PhysicalInterfaceServiceIfc", [](Telephone& telephone, bool isThere) {
        telephone.service->timerEvent(CallControl::kTimer);
        std::string const answer =
            telephone.request("<Method>setLampMode</Method><lampId>Hold</lampId><lampMode>1</lampMode>");
        return answer == "sfiSuccess" && called("keys") == isThere && called("lamp") == isThere &&
               called("headset") == isThere;
    });
}

TEST(NullCollaborators, DialPlan_LockedPhoneDialsNothingAndNoNumberIsAnEmergencyNumber)
{
    std::string const call = "<Method>OutgoingCallMakeRequest</Method><Destination>112</Destination>";
    expectDifference("DigitAnalysisServiceIfc", [&call](Telephone& telephone, bool isThere) {
        bool const dialled =
            telephone.request(call) == "sfiSuccess" && called("emergency call") == isThere && called("call") != isThere;
        callControl.locked = true;
        return dialled && telephone.request(call) == (isThere ? "sfiSuccess" : "sfiFailure");
    });
}

TEST(NullCollaborators, Store_ForwardingIsRefusedAndOtherSettingsHaveNoEffect)
{
    expectDifference("LocalMgmtIfc", [](Telephone& telephone, bool isThere) {
        std::string const forwarding =
            telephone.request("<Method>setForwardingConfiguration</Method><fwType>0</fwType>");
        std::string const doNotDisturb = telephone.request("<Method>SetDoNotDisturb</Method>");
        std::string const agent = telephone.request("<Method>SetAgentState</Method><agentState>ready</agentState>");
        telephone.service->timerEvent(CallControl::kTimer);
        return forwarding == (isThere ? "sfiSuccess" : "sfiFailure") && doNotDisturb == "sfiSuccess" &&
               agent == "sfiSuccess" && called("do-not-disturb") == isThere && called("agent state") == isThere &&
               called("interface-status") == isThere;
    });
}

TEST(NullCollaborators, Certificates_TeamFeaturesAreGivenNone)
{
    expectDifference("CertificateMgmtSvcIfc", [](Telephone&, bool isThere) {
        return called("certificates") == isThere && called("no certificates") != isThere;
    });
}

void useEveryLine(Telephone& telephone)
{
    useWholly(telephone);
    auto& team = dynamic_cast<TeamServiceIfc&>(*telephone.service);
    team.lineKeyPressedFPK(1);
    team.lineKeyPressed("4711");
    team.dssKeyPressedFPK(1, eDSSContextBlindTransfer, "", "");
    team.dssKeyPressed("4711", eDSSContextNone, "", "");
    team.getPrimary("4711");
    team.getShortDescription("4711");
    team.getLineRing("4711");
    team.getLineRingDelay("4711");
    team.getOverviewPosition("4711");
    team.getVisibleOnOverview("4711");
    team.getLineAudibleAlert("4711");
    team.getState("4711");
    team.getRemoteURI("4711");
    team.getHotWarmLineDialInfo("4711");
    team.getHotWarmLineStatus("4711");
    team.getURIforFPK(1);
    team.setMissedCallIndication("4711", true);
    team.retrieveRemotelyHeldCall("4711");
    team.reserveLine("4711");
    team.changeMultiUser("4711");
    team.bridgeCall("4711");
}

// DefaultCSfi has no table of appearances, and DefaultLine no configuration.
TEST(NullResults, KeysetWithoutLinesConfigurationOrTableOfAppearances_IsUsedWithoutFault)
{
    for (bool const hasLine : {false, true}) {
        EXPECT_EQ(endOf("",
                        [hasLine](Telephone& telephone) {
                            static kit::DefaultLine line;
                            lines.keyset = true;
                            lines.line = hasLine ? &line : nullptr;
                            useEveryLine(telephone);
                            return true;
                        }),
                  End::asExpected)
            << hasLine;
    }
}

TEST(NullResults, AgentCockpit_AnswersQuestionMarks)
{
    EXPECT_EQ(endOf("",
                    [](Telephone& telephone) {
                        telephone.init();
                        auto& team = dynamic_cast<TeamServiceIfc&>(*telephone.service);
                        return team.getEACockpitData("name") == "??" && !team.setEACockpitData("name", "value");
                    }),
              End::asExpected);
}

TEST(NullResults, Proxy_SubscriptionFails)
{
    EXPECT_EQ(endOf("",
                    [](Telephone& telephone) {
                        telephone.init();
                        return telephone.request("<Method>Subscribe</Method>") == "sfiFailure";
                    }),
              End::asExpected);
}

TEST(NullArguments, ContextOfInvoker_SubscriptionFails)
{
    EXPECT_EQ(endOf("",
                    [](Telephone& telephone) {
                        telephone.service->init(telephone);
                        telephone.invoker->initInvoker(nullptr);
                        return telephone.request("<Method>Subscribe</Method>") == "sfiFailure";
                    }),
              End::asExpected);
}

TEST(NullArguments, Service_EveryRequestFails)
{
    EXPECT_EQ(endOf("",
                    [](Telephone& telephone) {
                        telephone.init();
                        telephone.service.reset();
                        return telephone.request("<Method>GetServiceState</Method>") == "sfiFailure";
                    }),
              End::asExpected);
}

TEST(NullArguments, Response_NothingIsAnswered)
{
    EXPECT_EQ(endOf("",
                    [](Telephone& telephone) {
                        telephone.init();
                        telephone.invoker->handleMessage(telephone.service.get(), "<Method>Activate</Method>", 25,
                                                         nullptr);
                        return true;
                    }),
              End::asExpected);
}

TEST(NullArguments, Message_Crashes)
{
    EXPECT_EQ(endOf("",
                    [](Telephone& telephone) {
                        telephone.init();
                        kit::CollectedAnswer answer("application");
                        telephone.invoker->handleMessage(telephone.service.get(), nullptr, 0, &answer);
                        return true;
                    }),
              End::crash);
}

TEST(NullArguments, RecordOfAReplacedCall_Crashes)
{
    EXPECT_EQ(endOf("",
                    [](Telephone& telephone) {
                        kit::EventChannel channel(telephone, telephone.library.createEventProxy(), [](auto const&) {});
                        dynamic_cast<CommunicationsServiceEventIfc&>(channel.proxy())
                            .callStateChange("4711", 1, sfiCallStateIdle, sfiReasonNormal, sfiSendOptionsNone, "", "",
                                             nullptr, sfiResourcePriorityNone, sfiPreemptionCauseNone, "", false, {});
                        return true;
                    }),
              End::crash);
}

TEST(NullArguments, EventBeforeInitProxy_Crashes)
{
    EXPECT_EQ(endOf("",
                    [](Telephone& telephone) {
                        auto const proxy = telephone.library.createEventProxy();
                        dynamic_cast<CommunicationsServiceEventIfc&>(*proxy).callHeld("4711", 1);
                        return true;
                    }),
              End::crash);
}

}  // namespace

CSfi* CSfi::GetInstance()
{
    return unlessNull("CSfi", callControl);
}

LineManager* LineManager::Instance()
{
    return unlessNull("LineManager", lines);
}

TeamServiceFeatures* TeamServiceFeatures::Instance()
{
    return unlessNull("TeamServiceFeatures", features);
}

TeamServiceKeyset* TeamServiceKeyset::Instance()
{
    static kit::DefaultTeamServiceKeyset keyset;
    return unlessNull("TeamServiceKeyset", keyset);
}

DirectedPickupHandler* DirectedPickupHandler::Instance()
{
    static kit::DefaultDirectedPickupHandler pickup;
    return unlessNull("DirectedPickupHandler", pickup);
}

FeatureToggle* FeatureToggle::Instance()
{
    static kit::DefaultFeatureToggle toggle;
    return unlessNull("FeatureToggle", toggle);
}

MediaRecordingService* MediaRecordingService::GetInstance()
{
    static kit::DefaultMediaRecordingService recorder;
    return unlessNull("MediaRecordingService", recorder);
}
