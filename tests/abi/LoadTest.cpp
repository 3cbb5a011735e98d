// The shared library as the framework uses it: loaded at run time into a program that has the platform's symbols, asked
// for its three factories, used and unloaded, twice over.
#include <memory>
#include <string>

#include <dlfcn.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "CommunicationsServiceEventIfc.h"
#include "CommunicationsServiceIfc.h"
#include "MediaRecordingServiceIfc.h"
#include "TeamServiceIfc.h"
#include "tests/doubles/Doubles.h"

namespace {

using testing::_;
using testing::NiceMock;
using testing::Return;
using testing::ReturnRef;

// The loaded library. Its objects must be deleted first.
class LoadedLibrary
{
public:
    LoadedLibrary()
        : handle_(dlopen(LIBRARY_PATH, RTLD_NOW | RTLD_LOCAL))
    {
        if (handle_ == nullptr) {
            throw std::runtime_error(dlerror());
        }
    }
    ~LoadedLibrary() { dlclose(handle_); }
    LoadedLibrary(LoadedLibrary const&) = delete;
    LoadedLibrary& operator=(LoadedLibrary const&) = delete;

    // The result of a factory, taken as its first base.
    template <class Base>
    std::unique_ptr<Base> create(char const* factory)
    {
        auto* const function = reinterpret_cast<Base* (*)()>(dlsym(handle_, factory));
        if (function == nullptr) {
            throw std::runtime_error(dlerror());
        }
        return std::unique_ptr<Base>(function());
    }

private:
    void* handle_;
};

bool isLoaded()
{
    void* const handle = dlopen(LIBRARY_PATH, RTLD_NOW | RTLD_NOLOAD);
    if (handle != nullptr) {
        dlclose(handle);
    }
    return handle != nullptr;
}

class LoadTest : public testing::Test
{
protected:
    void SetUp() override
    {
        ON_CALL(recording_, init(_, _, _, _)).WillByDefault([this](auto&, auto*, auto*, auto* configuration) {
            recordingConfiguration_.reset(configuration);
        });
        ON_CALL(sfi_, StartTimer(_)).WillByDefault(Return(77));
        ON_CALL(context_, findExecutable("DigitAnalysisServiceIfc")).WillByDefault(Return(&digits_));
    }

    void useOnce(LoadedLibrary& library);

    NiceMock<MockCSfi> sfi_;
    NiceMock<MockLineManager> lines_;
    NiceMock<MockTeamServiceKeyset> keyset_;
    NiceMock<MockTeamServiceFeatures> features_;
    NiceMock<MockDirectedPickupHandler> pickup_;
    NiceMock<MockFeatureToggle> toggle_;
    NiceMock<MockMediaRecordingService> recording_;
    NiceMock<MockSvcRTEContext> context_;
    NiceMock<MockInvokerResponse> response_;
    NiceMock<MockProxyRequest> proxyRequest_;
    FoundExecutable<NiceMock<MockDigitAnalysisServiceIfc>> digits_;
    std::unique_ptr<RecordingConfigManager> recordingConfiguration_;

    CurrentDouble<CSfi> currentSfi_{sfi_};
    CurrentDouble<LineManager> currentLines_{lines_};
    CurrentDouble<TeamServiceKeyset> currentKeyset_{keyset_};
    CurrentDouble<TeamServiceFeatures> currentFeatures_{features_};
    CurrentDouble<DirectedPickupHandler> currentPickup_{pickup_};
    CurrentDouble<FeatureToggle> currentToggle_{toggle_};
    CurrentDouble<MediaRecordingService> currentRecording_{recording_};
};

void LoadTest::useOnce(LoadedLibrary& library)
{
    auto const service = library.create<Service>("createCommunicationsService");
    auto const invoker = library.create<Invoker>("createCommunicationsServiceInvoker");
    auto const proxy = library.create<Proxy>("createCommunicationsServiceEventProxy");

    // Casts in this program to types of which the library has its own copies, and casts in the library to this
    // program's types.
    EXPECT_NE(dynamic_cast<CommunicationsServiceIfc*>(service.get()), nullptr);
    EXPECT_NE(dynamic_cast<TeamServiceIfc*>(service.get()), nullptr);
    EXPECT_NE(dynamic_cast<MediaRecordingServiceIfc*>(service.get()), nullptr);
    EXPECT_NE(dynamic_cast<MgmtAgentIfc*>(service.get()), nullptr);
    EXPECT_NE(dynamic_cast<physicalEventObserver*>(service.get()), nullptr);
    EXPECT_NE(dynamic_cast<functionalEventObserver*>(service.get()), nullptr);
    auto* const events = dynamic_cast<CommunicationsServiceEventIfc*>(proxy.get());
    ASSERT_NE(events, nullptr);
    EXPECT_CALL(lines_, setDigitAnalysisService(&digits_));
    service->init(context_);

    EXPECT_CALL(sfi_, Activate()).WillOnce(Return(sfiSuccess));
    EXPECT_CALL(response_, sendResponse(testing::StrEq("sfiSuccess"), 10));
    EXPECT_CALL(response_, finish());
    invoker->initInvoker(&context_);
    std::string const request = "<Method>Activate</Method>";
    invoker->handleMessage(service.get(), request.c_str(), static_cast<int>(request.size()), &response_);

    EXPECT_CALL(proxyRequest_, setProtocol("CommunicationsServiceProtocol"));
    EXPECT_CALL(proxyRequest_, sendEvent("<Method>CallHeldEvent</Method><LineID>4711</LineID><CallID>7</CallID>"));
    proxy->initProxy(proxyRequest_);
    events->callHeld("4711", 7);

    service->shutdown();
}

TEST_F(LoadTest, Library_IsLoadedUsedAndUnloadedTwice)
{
    for (int round = 0; round < 2; ++round) {
        ASSERT_FALSE(isLoaded()) << "round " << round;
        {
            LoadedLibrary library;
            EXPECT_TRUE(isLoaded());
            useOnce(library);
        }
        EXPECT_FALSE(isLoaded()) << "something keeps the library in memory, round " << round;
    }
}

TEST_F(LoadTest, Library_HasNoOtherWayInThanItsFactories)
{
    void* const handle = dlopen(LIBRARY_PATH, RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(handle, nullptr) << dlerror();

    EXPECT_EQ(dlsym(handle, "_ZN21CommunicationsServiceC1Ev"), nullptr);
    EXPECT_EQ(dlsym(handle, "_ZN28CommunicationsServiceInvokerC1Ev"), nullptr);

    dlclose(handle);
}

}  // namespace
