// Requests, from text to answer, over a service that does nothing, compared with the floor.
#include <algorithm>
#include <array>
#include <random>

#include <benchmark/benchmark.h>

#include "bench/floors/RequestFloor.h"
#include "bench/stubs/RequestSet.h"
#include "bench/stubs/StubService.h"
#include "src/CommunicationsServiceInvoker.h"

namespace {

class CountingTarget final : public FloorTarget
{
public:
    int call(std::string_view const* texts, int const* numbers, int count) override
    {
        benchmark::DoNotOptimize(texts);
        benchmark::DoNotOptimize(numbers);
        benchmark::DoNotOptimize(count);
        return 5;
    }
};

struct FloorRequest
{
    char const* text;
    std::string_view method;
    std::array<bool, FloorTarget::kMaximum> isNumber{};
};

FloorRequest floorRequest(SampleRequest const& sample)
{
    FloorRequest request{sample.text.c_str(), sample.method, {}};
    for (std::size_t i = 0; i < sample.values.size(); ++i) {
        request.isNumber[i] = sample.values[i].isNumber;
    }
    return request;
}

// The same random order for every benchmark, too long for a branch predictor to learn.
std::vector<std::size_t> randomOrder()
{
    std::mt19937 random(1);
    std::vector<std::size_t> order(4096);
    std::uniform_int_distribution<std::size_t> pick(0, sampleRequests().size() - 1);
    std::generate(order.begin(), order.end(), [&] { return pick(random); });
    return order;
}

void holdCallFloor(benchmark::State& state)
{
    auto const request = floorRequest(sampleRequest("HoldCall"));
    CountingTarget target;
    StubResponse response;
    for (auto _ : state) {
        answerAtLeastCost(target, request.text, request.method, request.isNumber.data(), response);
    }
}
BENCHMARK(holdCallFloor);

void holdCall(benchmark::State& state)
{
    auto const& text = sampleRequest("HoldCall").text;
    CommunicationsServiceInvoker invoker;
    StubService service;
    StubResponse response;
    for (auto _ : state) {
        invoker.handleMessage(&service, text.c_str(), static_cast<int>(text.size()), &response);
    }
    benchmark::DoNotOptimize(service.calls);
}
BENCHMARK(holdCall);

void mixFloor(benchmark::State& state)
{
    std::vector<FloorRequest> requests;
    std::transform(sampleRequests().begin(), sampleRequests().end(), std::back_inserter(requests), floorRequest);
    auto const order = randomOrder();
    CountingTarget target;
    StubResponse response;
    std::size_t next = 0;
    for (auto _ : state) {
        auto const& request = requests[order[next++ % order.size()]];
        answerAtLeastCost(target, request.text, request.method, request.isNumber.data(), response);
    }
}
BENCHMARK(mixFloor);

void mix(benchmark::State& state)
{
    auto const& requests = sampleRequests();
    auto const order = randomOrder();
    CommunicationsServiceInvoker invoker;
    StubService service;
    StubResponse response;
    std::size_t next = 0;
    for (auto _ : state) {
        auto const& text = requests[order[next++ % order.size()]].text;
        invoker.handleMessage(&service, text.c_str(), static_cast<int>(text.size()), &response);
    }
    benchmark::DoNotOptimize(service.calls);
}
BENCHMARK(mix);

// How the cost grows with the length of the request: the destination has the length asked for.
void requestLength(benchmark::State& state)
{
    std::string const text =
        "<Method>OutgoingCallMakeRequest</Method><Line>4711</Line><CallID>1</CallID><Destination>" +
        std::string(static_cast<std::size_t>(state.range(0)), '5') + "</Destination>";
    CommunicationsServiceInvoker invoker;
    StubService service;
    StubResponse response;
    for (auto _ : state) {
        invoker.handleMessage(&service, text.c_str(), static_cast<int>(text.size()), &response);
    }
    state.SetComplexityN(state.range(0));
}
BENCHMARK(requestLength)->RangeMultiplier(10)->Range(100, 1000000);

// One row for each number of parameters, 0 to 6.
void parameters(benchmark::State& state)
{
    auto const wanted = static_cast<std::size_t>(state.range(0));
    static std::array<std::string_view, 7> constexpr kMethods = {
        "Activate",        "SetMicrophoneMute",      "AnswerCall", "DeflectCall", "HoldCall",
        "CancelCallbacks", "OutgoingCallMakeRequest"};
    auto const& text = sampleRequest(kMethods[wanted]).text;
    CommunicationsServiceInvoker invoker;
    StubService service;
    StubResponse response;
    for (auto _ : state) {
        invoker.handleMessage(&service, text.c_str(), static_cast<int>(text.size()), &response);
    }
}
BENCHMARK(parameters)->DenseRange(0, 6);

// Several threads at once, each with its own service and response; only the invoker is shared.
void threads(benchmark::State& state)
{
    static CommunicationsServiceInvoker invoker;
    auto const& text = sampleRequest("HoldCall").text;
    StubService service;
    StubResponse response;
    for (auto _ : state) {
        invoker.handleMessage(&service, text.c_str(), static_cast<int>(text.size()), &response);
    }
}
BENCHMARK(threads)->ThreadRange(1, 4)->UseRealTime();

}  // namespace

BENCHMARK_MAIN();
