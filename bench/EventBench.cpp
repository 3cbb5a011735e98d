// Events, from the call to the finished text, compared with a plain copy of that text and with a string stream.
#include <cstring>
#include <memory>
#include <sstream>

#include <benchmark/benchmark.h>

#include "platform/framework/FrameworkContext.h"
#include "platform/framework/ProxyRequest.h"
#include "src/CommunicationsServiceEventProxy.h"

namespace {

// Keeps the last text; the benchmark of the copy uses it.
class StubRequest final : public ProxyRequest
{
public:
    void setProtocol(std::string const& /*protocolName*/) override {}
    void sendEvent(std::string const& message) override
    {
        bytes += message.size();
        if (keep) {
            text = message;
        }
    }
    FrameworkContext& context() override { return context_; }

    std::size_t bytes = 0;
    std::string text;
    bool keep = false;

private:
    FrameworkContext context_;
};

std::string const kLine = "4711";
std::string const kUri = "sip:100@exchange.example";
std::string const kName = "Echo";
std::string const kNoText;

void sendSeventeenFields(CommunicationsServiceEventIfc& proxy, sfiReplacesDisplay& display)
{
    proxy.callStateChange(kLine, 17, sfiCallStateConnected, sfiReasonNormal, sfiSendOptionsEvents, kUri, kName,
                          &display, sfiResourcePriorityNone, sfiPreemptionCauseNone, kNoText, true, {1, 2});
}

void sendFiveFields(CommunicationsServiceEventIfc& proxy)
{
    proxy.callCompletionEvent(kLine, kUri, sfiCallCompletionOnBusy, sfiCallCompletionReady, true);
}

struct Bound
{
    Bound() { proxy.initProxy(request); }

    StubRequest request;
    CommunicationsServiceEventProxy proxy;
    sfiReplacesDisplay display{};
};

void copyOf(benchmark::State& state, std::string const& text)
{
    auto const target = std::make_unique<char[]>(text.size());
    for (auto _ : state) {
        std::memcpy(target.get(), text.data(), text.size());
        benchmark::DoNotOptimize(target.get());
        benchmark::ClobberMemory();
    }
}

// The minimum cost of an event that is passed on as a new string.
void newStringOf(benchmark::State& state, std::string const& text)
{
    for (auto _ : state) {
        std::string const copy(text);
        benchmark::DoNotOptimize(copy.data());
        benchmark::ClobberMemory();
    }
}

void seventeenFieldsCopy(benchmark::State& state)
{
    Bound bound;
    bound.request.keep = true;
    sendSeventeenFields(bound.proxy, bound.display);
    copyOf(state, bound.request.text);
}
BENCHMARK(seventeenFieldsCopy);

void seventeenFieldsNewString(benchmark::State& state)
{
    Bound bound;
    bound.request.keep = true;
    sendSeventeenFields(bound.proxy, bound.display);
    newStringOf(state, bound.request.text);
}
BENCHMARK(seventeenFieldsNewString);

void seventeenFields(benchmark::State& state)
{
    Bound bound;
    for (auto _ : state) {
        sendSeventeenFields(bound.proxy, bound.display);
    }
    benchmark::DoNotOptimize(bound.request.bytes);
}
BENCHMARK(seventeenFields);

void fiveFieldsCopy(benchmark::State& state)
{
    Bound bound;
    bound.request.keep = true;
    sendFiveFields(bound.proxy);
    copyOf(state, bound.request.text);
}
BENCHMARK(fiveFieldsCopy);

void fiveFieldsNewString(benchmark::State& state)
{
    Bound bound;
    bound.request.keep = true;
    sendFiveFields(bound.proxy);
    newStringOf(state, bound.request.text);
}
BENCHMARK(fiveFieldsNewString);

void fiveFields(benchmark::State& state)
{
    Bound bound;
    for (auto _ : state) {
        sendFiveFields(bound.proxy);
    }
    benchmark::DoNotOptimize(bound.request.bytes);
}
BENCHMARK(fiveFields);

void seventeenFieldsStream(benchmark::State& state)
{
    StubRequest request;
    sfiReplacesDisplay const display{};
    for (auto _ : state) {
        std::ostringstream out;
        out << "<Method>CallStateChangeEvent</Method><LineID>" << kLine << "</LineID><CallID>" << 17
            << "</CallID><CallState>" << 6 << "</CallState><Reason>" << 0 << "</Reason><SendOptions>" << 1
            << "</SendOptions><URI>" << kUri << "</URI><Name>" << kName << "</Name><GPUCLG>" << display.calling
            << "</GPUCLG><GPUCLGName>" << display.callingName << "</GPUCLGName><GPUCLD>" << display.called
            << "</GPUCLD><GPUCLDName>" << display.calledName << "</GPUCLDName><ResourcePriority>" << 0
            << "</ResourcePriority><PreemptionCause>" << 0 << "</PreemptionCause><PreemptionText>" << kNoText
            << "</PreemptionText><CallBackFearureAvailable>" << true << "</CallBackFearureAvailable><ILCallLevel>" << 1
            << "</ILCallLevel><ILLocalLevel>" << 2 << "</ILLocalLevel>";
        request.sendEvent(out.str());
    }
    benchmark::DoNotOptimize(request.bytes);
}
BENCHMARK(seventeenFieldsStream);

void fiveFieldsStream(benchmark::State& state)
{
    StubRequest request;
    for (auto _ : state) {
        std::ostringstream out;
        out << "<Method>callCompletionEvent</Method><LineID>" << kLine << "</LineID><URI>" << kUri
            << "</URI><CallCompletionType>" << 1 << "</CallCompletionType><CallCompletionState>" << 1
            << "</CallCompletionState><DisplayOutcomeCallUI>" << true << "</DisplayOutcomeCallUI>";
        request.sendEvent(out.str());
    }
    benchmark::DoNotOptimize(request.bytes);
}
BENCHMARK(fiveFieldsStream);

// One event to many subscribers, each with its own proxy.
void subscribers(benchmark::State& state)
{
    std::vector<std::unique_ptr<Bound>> all(static_cast<std::size_t>(state.range(0)));
    for (auto& one : all) {
        one = std::make_unique<Bound>();
    }
    for (auto _ : state) {
        for (auto& one : all) {
            sendSeventeenFields(one->proxy, one->display);
        }
    }
}
BENCHMARK(subscribers)->Arg(1)->Arg(10)->Arg(100);

}  // namespace

BENCHMARK_MAIN();
