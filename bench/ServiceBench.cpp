// A whole service operation over a platform that does nothing, compared with direct calls of the platform's operations;
// and the cost of a disabled trace.
#include <benchmark/benchmark.h>

#include "bench/stubs/StubPlatform.h"
#include "platform/framework/Logging.h"
#include "platform/lines/ClientUtils.h"
#include "platform/lines/Line.h"
#include "platform/lines/LineData.h"
#include "src/CommunicationsService.h"
#include "src/CommunicationsServiceLog.h"

namespace {

std::string const kLine = "4711";

// The cost of holding a call in the platform alone: the same queries to the lines, the same record, the same
// operations.
sfiResult holdDirectly()
{
    auto& lines = *LineManager::Instance();
    sfiCallInfo info{};
    std::string base;
    int index = 0;
    ClientUtils::splitMCADeviceIndex(kLine, base, index);
    if (!lines.getKeysetType().empty() && !lines.isMCALine(base)) {
        auto* const line = lines.getLine(base);
        info = {line->getLineID(), line->getLineData()->getPrimary(), 17, 0};
    }
    auto& sfi = *CSfi::GetInstance();
    sfi.Lock();
    sfi.SetManualHoldIndication(&info, true);
    auto const result = sfi.CallFeature(&info, sfiFeatureHold, "", 1);
    sfi.Unlock();
    return result;
}

void holdPlatform(benchmark::State& state)
{
    for (auto _ : state) {
        benchmark::DoNotOptimize(holdDirectly());
    }
}
BENCHMARK(holdPlatform);

void holdService(benchmark::State& state)
{
    CommunicationsService service;
    for (auto _ : state) {
        benchmark::DoNotOptimize(service.holdCall(kLine, 17, sfiFeatureHold, true));
    }
}
BENCHMARK(holdService);

// Calling the guard is the floor of a trace.
void traceGuard(benchmark::State& state)
{
    for (auto _ : state) {
        benchmark::DoNotOptimize(loggingOnAppUni("SIP Communications Service", kLogTrace));
    }
}
BENCHMARK(traceGuard);

// An operation that only traces and makes one query to the platform.
void tracedOperation(benchmark::State& state)
{
    CommunicationsService service;
    for (auto _ : state) {
        benchmark::DoNotOptimize(service.isLocallyIdleLine());
    }
}
BENCHMARK(tracedOperation);

void untracedOperation(benchmark::State& state)
{
    for (auto _ : state) {
        benchmark::DoNotOptimize(loggingOnAppUni("SIP Communications Service", kLogTrace));
        benchmark::DoNotOptimize(LineManager::Instance()->isLocallyIdleLine());
    }
}
BENCHMARK(untracedOperation);

}  // namespace

BENCHMARK_MAIN();
