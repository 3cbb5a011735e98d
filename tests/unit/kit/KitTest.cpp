// What works in the kit, and how it says what does not.
#include <chrono>
#include <cstdarg>
#include <cstdio>
#include <future>
#include <mutex>
#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "platform/framework/Logging.h"
#include "platform/framework/Semaphore.h"
#include "platform/framework/Serializer.h"
#include "platform/kit/Check.h"
#include "platform/kit/DefaultAuditoryDeviceIfc.h"
#include "platform/kit/DefaultCSfi.h"
#include "platform/kit/DefaultCertificateMgmtSvcIfc.h"
#include "platform/kit/DefaultDigitAnalysisServiceIfc.h"
#include "platform/kit/DefaultLineManager.h"
#include "platform/kit/DefaultLocalMgmtIfc.h"
#include "platform/kit/DefaultPhysicalInterfaceServiceIfc.h"
#include "platform/kit/ServiceHost.h"
#include "platform/kit/Timers.h"
#include "platform/lines/ClientUtils.h"
#include "platform/lines/LineManager.h"
#include "platform/lines/Utility.h"

namespace {

std::vector<std::string> logged;
std::mutex loggedMutex;

std::vector<std::string> linesWith(std::string const& part)
{
    std::lock_guard const hold(loggedMutex);
    std::vector<std::string> found;
    for (auto const& line : logged) {
        if (line.find(part) != std::string::npos) {
            found.push_back(line);
        }
    }
    return found;
}

bool hasLines = true;

class Context final : public SvcRTEContext
{
public:
    Executable* findExecutable(std::string const& /*name*/) override { return executable; }

    Executable* executable = nullptr;
};

class TimerReceiver final : public Executable
{
public:
    void init(::Context& /*context*/) override {}
    void shutdown() override {}
    void timerEvent(int timerId) override { expired.set_value(timerId); }

    std::promise<int> expired;
};

using Strings = std::vector<std::string>;

TEST(Missing, OperationThatIsUsedTwice_IsLoggedOnce)
{
    kit::DefaultCSfi callControl;

    EXPECT_EQ(callControl.Activate(), sfiFailure);
    EXPECT_EQ(callControl.Activate(), sfiFailure);

    EXPECT_EQ(linesWith("CSfi::Activate "),
              Strings{"CSfi::Activate is not there yet: start SIP operation and register the lines"});
}

TEST(Check, ExecutableOfAnotherClass_IsNamedAsSuch)
{
    kit::DefaultAuditoryDeviceIfc sound;
    Context context;
    context.executable = &sound;

    auto const findings = kit::check(context);

    ASSERT_EQ(findings.size(), 4U);
    EXPECT_EQ(kit::describe(findings.back()),
              "the executable \"CertificateMgmtSvcIfc\" is not a CertificateMgmtSvcIfc: "
              "the team features are given no certificates");
}

TEST(Check, NothingIsFoundByName_NamesTheFiveServices)
{
    Context context;
    std::vector<std::string> names;
    for (auto const& finding : kit::check(context)) {
        names.emplace_back(finding.collaborator.name);
    }
    EXPECT_EQ(names, (Strings{"AuditoryDeviceIfc", "PhysicalInterfaceServiceIfc", "DigitAnalysisServiceIfc",
                              "LocalMgmtIfc", "CertificateMgmtSvcIfc"}));
}

TEST(ServiceHost, CollaboratorWithoutWhichInitCrashesIsNull_RefusesToStart)
{
    kit::ServiceHost host(LIBRARY_PATH);
    hasLines = false;
    try {
        host.start();
        FAIL() << "it has started";
    } catch (std::runtime_error const& error) {
        EXPECT_STREQ(error.what(), "LineManager::Instance returns null: init crashes: it hands the lines their keys");
    }
    hasLines = true;
}

TEST(ServiceHost, LibraryDoesNotExist_NamesIt)
{
    try {
        kit::ServiceHost const host("/does/not/exist.so");
        FAIL() << "it was loaded";
    } catch (std::runtime_error const& error) {
        EXPECT_STREQ(error.what(), "/does/not/exist.so: cannot open shared object file: No such file or directory");
    }
}

TEST(ServiceHost, ServicesAreProvided_ServiceFindsThem)
{
    kit::DefaultAuditoryDeviceIfc sound;
    kit::DefaultPhysicalInterfaceServiceIfc keys;
    kit::DefaultDigitAnalysisServiceIfc plan;
    kit::DefaultLocalMgmtIfc store;
    kit::DefaultCertificateMgmtSvcIfc certificates;
    kit::ServiceHost host(LIBRARY_PATH);
    host.provide("AuditoryDeviceIfc", sound);
    host.provide("PhysicalInterfaceServiceIfc", keys);
    host.provide("DigitAnalysisServiceIfc", plan);
    host.provide("LocalMgmtIfc", store);
    host.provide("CertificateMgmtSvcIfc", certificates);

    EXPECT_TRUE(kit::check(host).empty());
    host.start();
    EXPECT_EQ(host.request("application", "<Method>setLampMode</Method><lampId>Hold</lampId>"), "sfiSuccess");
    EXPECT_EQ(host.request("application", "<Method>Subscribe</Method>"), "sfiFailure") << "its channel is not open";
}

TEST(Timers, TimerExpires_DeliversItsId)
{
    TimerReceiver receiver;
    kit::Timers timers;
    timers.deliverTo(&receiver);

    int const id = timers.start(1);

    EXPECT_GT(id, 0);
    EXPECT_EQ(receiver.expired.get_future().get(), id);
}

TEST(Timers, Ended_DeliversNothing)
{
    TimerReceiver receiver;
    kit::Timers timers;
    timers.deliverTo(&receiver);

    int const first = timers.start(0x7fffffff);
    timers.end();
    int const second = timers.start(0);

    EXPECT_NE(first, second);
    EXPECT_EQ(receiver.expired.get_future().wait_for(std::chrono::seconds(0)), std::future_status::timeout);
}

TEST(KitSemaphore, NoUnitIsFree_TakeRunsOutOfTime)
{
    Semaphore semaphore(0, 1, true);
    EXPECT_FALSE(semaphore.take(0));
    semaphore.give();
    semaphore.give();
    EXPECT_TRUE(semaphore.take(0));
    EXPECT_FALSE(semaphore.take(0)) << "what was given beyond the maximum is lost";
}

TEST(KitSemaphore, UnitIsGiven_WaitingThreadTakesIt)
{
    Semaphore semaphore(0, 1, false);
    auto taken = std::async(std::launch::async, [&semaphore] { return semaphore.take(Semaphore::kNoTimeLimit); });
    semaphore.give();
    EXPECT_TRUE(taken.get());
}

TEST(KitSerializer, Lists_AreSeparatedAndEscaped)
{
    EXPECT_EQ(Serializer::serialize(std::vector<int>{1, -2, 3}), "1,-2,3");
    EXPECT_EQ(Serializer::serialize(Strings{"a,b", "", "c\\"}), "a\\,b,,c\\\\");
    EXPECT_EQ(Serializer::serialize(Strings{}), "");
}

TEST(KitClientUtils, Identifier_IsSplitAtItsIndex)
{
    struct Case
    {
        std::string identifier;
        std::string base;
        int index;
    };
    for (auto const& each : {Case{"4711#2", "4711", 2}, Case{"4711", "4711", -1}, Case{"a#b#255", "a#b", 255},
                             Case{"4711#256", "4711#256", -1}, Case{"4711#0", "4711#0", -1}, Case{"#1", "#1", -1}}) {
        std::string base;
        int index = -1;
        ClientUtils::splitMCADeviceIndex(each.identifier, base, index);
        EXPECT_EQ(base, each.base);
        EXPECT_EQ(index, each.index) << each.identifier;
    }
}

TEST(KitUtility, LineHeldForAConsultation_CanCarryAnotherCall)
{
    EXPECT_TRUE(Utility::isLineStateBusy(eLineStateActive));
    EXPECT_TRUE(Utility::isLineStateBusy(eLineStateActiveElsewhere));
    EXPECT_FALSE(Utility::isLineStateBusy(eLineStateHoldConsult));
    EXPECT_FALSE(Utility::isLineStateBusy(eLineStateIdle));
    EXPECT_FALSE(Utility::bridgeCall(nullptr));
}

}  // namespace

// These definitions take the place of the kit's.
LineManager* LineManager::Instance()
{
    static kit::DefaultLineManager lines;
    return hasLines ? &lines : nullptr;
}

bool loggingOnAppUni(char const* /*component*/, int level)
{
    return level <= kLogFailure;
}

void logAppUni(char const* /*component*/, char const* /*source*/, int /*level*/, int /*line*/, char const* format, ...)
{
    char text[512];
    std::va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
    std::lock_guard const hold(loggedMutex);
    logged.emplace_back(text);
}
