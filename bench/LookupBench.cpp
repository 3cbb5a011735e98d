// The telephone's look-ups, among few and among many: lines by their id, keys by their number, appearances by their
// call.
#include <benchmark/benchmark.h>

#include "telephone/configuration/Configuration.h"
#include "telephone/framework/TimerService.h"
#include "telephone/lines/AppearanceMap.h"
#include "telephone/lines/Lines.h"
#include "telephone/management/ConfigurationStore.h"
#include "telephone/management/Settings.h"
#include "telephone/physical/KeyLayout.h"
#include "tests/unit/lines/FakeCalls.h"

namespace {

using namespace telephone;

std::string idOf(int number)
{
    return std::to_string(10000 + number);
}

// Keys with a line each or, beyond the maximum number of lines, with a direct-station party each.
Configuration configurationOf(int count, bool stations)
{
    Configuration configuration;
    for (int number = 1; number <= count; ++number) {
        KeyConfiguration key;
        key.number = number;
        key.function = stations ? "dss" : "line";
        key.target = idOf(number);
        configuration.keys.push_back(key);
        if (!stations || number == 1) {
            LineConfiguration line;
            line.id = stations ? "1" : idOf(number);
            configuration.lines.push_back(line);
        }
    }
    return configuration;
}

struct Telephone
{
    explicit Telephone(int count, bool stations)
        : configuration(configurationOf(count, stations))
    {}

    Configuration const configuration;
    Settings settings{ConfigurationStore::open({}).value(), configuration};
    FakeCalls calls;
    TimerService timers;
    LineTable table{configuration};
    Lines lines{table, configuration, settings, calls, timers};
};

void lineById(benchmark::State& state)
{
    Telephone telephone(static_cast<int>(state.range(0)), false);
    auto const last = idOf(static_cast<int>(state.range(0)));
    for (auto _ : state) {
        benchmark::DoNotOptimize(telephone.lines.getLine(last));
    }
}
BENCHMARK(lineById)->Arg(1)->Arg(10)->Arg(250);

void stationById(benchmark::State& state)
{
    Telephone telephone(static_cast<int>(state.range(0)), true);
    auto const last = idOf(static_cast<int>(state.range(0)));
    for (auto _ : state) {
        benchmark::DoNotOptimize(telephone.lines.getLine(last));
    }
}
BENCHMARK(stationById)->Arg(1)->Arg(10)->Arg(1000);

void lineOfKey(benchmark::State& state)
{
    Telephone telephone(static_cast<int>(state.range(0)), true);
    for (auto _ : state) {
        benchmark::DoNotOptimize(telephone.lines.getDSSLineForFPK(static_cast<int>(state.range(0))));
    }
}
BENCHMARK(lineOfKey)->Arg(1)->Arg(10)->Arg(1000);

void keyOfLine(benchmark::State& state)
{
    Telephone telephone(static_cast<int>(state.range(0)), true);
    auto const last = idOf(static_cast<int>(state.range(0)));
    for (auto _ : state) {
        benchmark::DoNotOptimize(telephone.lines.getFPKforUri(last));
    }
}
BENCHMARK(keyOfLine)->Arg(1)->Arg(10)->Arg(1000);

void keyByNumber(benchmark::State& state)
{
    auto const configuration = configurationOf(static_cast<int>(state.range(0)), true);
    KeyLayout const layout(configuration);
    for (auto _ : state) {
        benchmark::DoNotOptimize(layout.find(static_cast<int>(state.range(0))));
    }
}
BENCHMARK(keyByNumber)->Arg(1)->Arg(10)->Arg(1000);

// Lines with two appearances each; the last line has a call.
void addLines(AppearanceMap& map, int count)
{
    constexpr int kFirst = 1000;
    for (int line = 1; line <= count; ++line) {
        map.addLine(line, idOf(line), {kFirst + 2 * line, kFirst + 1 + 2 * line});
    }
    map.callBegan(count, kFirst + 2 * count);
}

void appearanceOfCall(benchmark::State& state)
{
    auto const count = static_cast<int>(state.range(0));
    AppearanceMap map;
    addLines(map, count);
    int line = 0;
    int index = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(map.findVirtualLineforCallID(count, line, index));
    }
}
BENCHMARK(appearanceOfCall)->Arg(1)->Arg(10)->Arg(1000);

void freeAppearance(benchmark::State& state)
{
    auto const count = static_cast<int>(state.range(0));
    AppearanceMap map;
    addLines(map, count);
    for (auto _ : state) {
        benchmark::DoNotOptimize(map.findFirstFreeVirtualLine(count));
    }
}
BENCHMARK(freeAppearance)->Arg(1)->Arg(10)->Arg(1000);

}  // namespace

BENCHMARK_MAIN();
