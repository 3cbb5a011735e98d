// What a step of the trace costs: while nothing is traced, beside the same work without one, and while it is written to
// a file.
#include <functional>
#include <stdexcept>
#include <string>

#include <benchmark/benchmark.h>
#include <unistd.h>

#include "telephone/trace/Trace.h"

namespace {

using telephone::Caused;
using telephone::TraceScope;
using telephone::TraceStep;

std::string const kEvent = "<Method>CallStateChangeEvent</Method><LineID>4711</LineID><CallID>1</CallID>";

// What surrounds a step: a call that the compiler cannot look into.
[[gnu::noinline]] void operation(std::string const& text)
{
    benchmark::DoNotOptimize(text.data());
}

[[gnu::noinline]] void tracedOperation(std::string const& text)
{
    TraceScope const scope(telephone::traceStep("event", [&](TraceStep& step) { step.add("text", text); }));
    benchmark::DoNotOptimize(text.data());
}

void operationWithoutStep(benchmark::State& state)
{
    for (auto _ : state) {
        operation(kEvent);
    }
}
BENCHMARK(operationWithoutStep);

void operationNotTraced(benchmark::State& state)
{
    for (auto _ : state) {
        tracedOperation(kEvent);
    }
}
BENCHMARK(operationNotTraced);

void operationTraced(benchmark::State& state)
{
    std::string const file = "/tmp/trace-bench-" + std::to_string(getpid());
    if (!telephone::startTrace(file, {}, nullptr)) {
        throw std::runtime_error("the trace cannot be written to " + file);
    }
    for (auto _ : state) {
        tracedOperation(kEvent);
    }
    static_cast<void>(telephone::stopTrace());
    ::unlink(file.c_str());
}
BENCHMARK(operationTraced);

// Work for another thread, without and with its cause.
void workHandedOver(benchmark::State& state)
{
    for (auto _ : state) {
        std::function<void()> const work = [] { operation(kEvent); };
        work();
    }
}
BENCHMARK(workHandedOver);

void workHandedOverWithItsCause(benchmark::State& state)
{
    for (auto _ : state) {
        Caused<std::function<void()>> const work(std::function<void()>([] { operation(kEvent); }));
        work();
    }
}
BENCHMARK(workHandedOverWithItsCause);

}  // namespace

BENCHMARK_MAIN();
