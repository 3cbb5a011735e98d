// How much the invoker and the proxy allocate, and what happens without memory: the exception may propagate, but
// nothing leaks.
#include "Allocations.h"

#include <fstream>
#include <functional>
#include <new>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "platform/framework/FrameworkContext.h"
#include "platform/framework/InvokerResponse.h"
#include "platform/framework/Proxy.h"
#include "platform/framework/ProxyRequest.h"
#include "src/CommunicationsServiceEventProxy.h"
#include "src/CommunicationsServiceInvoker.h"
#include "tests/doubles/ObservedService.h"

namespace {
// None of these allocates by itself.
class QuietResponse : public InvokerResponse
{
public:
    void finish() override {}
    void sendResponse(char const* /*answer*/, int length) override { answered = length; }
    std::string const& channelName() override { return name; }

    int answered = 0;
    std::string name;
};

class QuietProxy : public Proxy
{
public:
    void initProxy(ProxyRequest& /*request*/) override {}
};

class QuietContext : public FrameworkContext
{
public:
    Proxy* findProxy(std::string const& /*interfaceName*/, std::string const& /*channelName*/) override
    {
        return &proxy;
    }

    QuietProxy proxy;
};

class QuietRequest : public ProxyRequest
{
public:
    void setProtocol(std::string const& /*protocolName*/) override {}
    void sendEvent(std::string const& message) override { sent = message.size(); }
    FrameworkContext& context() override { return quietContext; }

    std::size_t sent = 0;
    QuietContext quietContext;
};

std::size_t allocationsOf(std::function<void()> const& work)
{
    work();  // objects created on first use are not counted
    Allocations::count();
    work();
    return Allocations::stop();
}

// Lets each allocation of the work fail in turn.
void failEachAllocationOf(std::function<void()> const& work)
{
    for (std::size_t n = 1;; ++n) {
        bool failed = false;
        Allocations::failFrom(n);
        try {
            work();
        } catch (std::bad_alloc const&) {
            failed = true;
        }
        auto const count = Allocations::stop();
        auto const open = Allocations::open();
        ASSERT_EQ(open, 0) << "with allocation " << n << " failing";
        ASSERT_EQ(failed, count >= n) << "with allocation " << n << " failing";
        if (!failed) {
            return;
        }
        ASSERT_LT(n, 100U);
    }
}

class RequestMemory : public testing::Test
{
protected:
    RequestMemory() { invoker.initInvoker(&context); }

    std::function<void()> handling(std::string const& request)
    {
        return [this, request] {
            invoker.handleMessage(&service, request.c_str(), static_cast<int>(request.size()), &response);
        };
    }

    ObservedService<NoObserver> service;
    QuietResponse response;
    QuietContext context;
    CommunicationsServiceInvoker invoker;
};

TEST_F(RequestMemory, HoldCall_WithAShortLine_AllocatesNothing)
{
    auto const work = handling("<Method>HoldCall</Method><Line>123456789012345</Line><CallID>3</CallID>"
                               "<HoldCallReason>5</HoldCallReason><Manual>1</Manual>");

    EXPECT_EQ(allocationsOf(work), 0U);
    EXPECT_EQ(response.answered, 10);
}

TEST_F(RequestMemory, HoldCall_WithALongLine_AllocatesTheLine)
{
    auto const work = handling("<Method>HoldCall</Method><Line>sip:4711@example.com</Line><CallID>3</CallID>"
                               "<HoldCallReason>5</HoldCallReason><Manual>1</Manual>");

    EXPECT_EQ(allocationsOf(work), 1U);
}

TEST_F(RequestMemory, Request_AmongOneMegabyteOfOtherText_AllocatesNothing)
{
    auto const work = handling(std::string(1U << 20U, 'x') + "<Method>HoldCall</Method><Line>4711</Line>");

    EXPECT_EQ(allocationsOf(work), 0U);
}

TEST_F(RequestMemory, UnknownMethod_AllocatesNothing)
{
    EXPECT_EQ(allocationsOf(handling("<Method>AMethodThatNobodyKnowsOfAtAll</Method>")), 0U);
}

TEST_F(RequestMemory, AnyRequest_WithoutMemory_LosesNothing)
{
    auto const requests = nlohmann::json::parse(std::ifstream(GOLDEN_FOLDER "/requests.json"));
    std::string const padding(40, 'x');
    for (auto const& request : requests) {
        for (auto const& exchange : request.at("exchanges")) {
            auto text = exchange.at("request").get<std::string>();
            service.result = exchange.at("result").is_null() ? 0 : exchange.at("result").get<int>();
            SCOPED_TRACE(text);
            auto const work = handling(text);
            work();
            failEachAllocationOf(work);
            // Every value is too long for a string to hold without allocating.
            for (auto place = text.find("</"); place != std::string::npos; place = text.find("</", place + 1)) {
                if (text.compare(place, 9, "</Method>") != 0) {
                    text.insert(place, padding);
                    place += padding.size();
                }
            }
            failEachAllocationOf(handling(text));
        }
    }
}

TEST_F(RequestMemory, RequestWithManyElements_WithoutMemory_LosesNothing)
{
    std::string text = "<Method>SetAgentState</Method>";
    for (int index = 0; index < 40; ++index) {
        text += "<element>";
    }
    failEachAllocationOf(handling(text + "<Line>a line that is long enough</Line><agentState>ready</agentState>"));
}

TEST_F(RequestMemory, SigEvent_WithoutMemory_LosesNothing)
{
    failEachAllocationOf(handling("SigEvent:a payload that is long enough to be allocated"));
}

class EventMemory : public testing::Test
{
protected:
    EventMemory() { proxy.initProxy(request); }

    std::string const line = "sip:4711@example.com";
    std::string const uri = "sip:4712@example.com";
    std::string const name = "Alice Example";
    sfiReplacesDisplay display{};
    QuietRequest request;
    CommunicationsServiceEventProxy proxy;
};

TEST_F(EventMemory, EventOfSeventeenFields_AllocatesItsMessage)
{
    auto const work = [this] {
        proxy.callStateChange(line, 3, sfiCallStateConnected, sfiReasonNormal, sfiSendOptionsEvents, uri, name,
                              &display, sfiResourcePriorityNone, sfiPreemptionCauseNone, name, true, {1, 2});
    };

    EXPECT_EQ(allocationsOf(work), 1U);
    EXPECT_GT(request.sent, 400U);
    failEachAllocationOf(work);
}

TEST_F(EventMemory, EventOfFiveFields_AllocatesItsMessage)
{
    auto const work = [this] {
        proxy.callCompletionEvent(line, uri, sfiCallCompletionOnBusy, sfiCallCompletionReady, true);
    };

    EXPECT_EQ(allocationsOf(work), 1U);
    failEachAllocationOf(work);
}

TEST_F(EventMemory, UnusedEvent_AllocatesNothing)
{
    EXPECT_EQ(allocationsOf([this] { proxy.csCommunicationsServiceEvent(line); }), 0U);
}

TEST_F(EventMemory, EventWithLists_WithoutMemory_LosesNothing)
{
    std::vector<int> calls = {1234567, 2345678, 3456789};
    std::vector<std::string> lines = {line, uri};

    failEachAllocationOf([&] { proxy.securityStatusChanged(line, 1, sfiSecurityStatusSecure, calls, lines); });
}

TEST_F(EventMemory, EveryOtherEvent_WithoutMemory_LosesNothing)
{
    failEachAllocationOf([this] { proxy.incomingPickupCall(line, 1, uri, name); });
    failEachAllocationOf([this] { proxy.callForwarded(line, 1, uri, name, uri, sfiForwardReasonBusy); });
    failEachAllocationOf([this] {
        proxy.incomingCall(line, 1, uri, name, uri, name, true, sfiCallTypeInternal, uri, name, sfiForwardReasonBusy,
                           true, sfiResourcePriorityNone, {1, 2}, false);
    });
    failEachAllocationOf([this] { proxy.b2buaCSTAResponse(line, true, name); });
    failEachAllocationOf([this] { proxy.devicesChanged(); });
}
}  // namespace
