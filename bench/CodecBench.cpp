// The switch-driven codec for the DPTs applications use most: a temperature, a time of day,
// a text and a date with time.
#include "BenchCases.h"
#include "HeapCounter.h"

#include <Tav/MeasureDuration.h>
#include <TavObjectModel/GroupValueOkaValue.h>

#include <benchmark/benchmark.h>

namespace
{
using TavBench::DptCase;

void GroupValueToOkaValue(benchmark::State& state, const DptCase& c)
{
    const KnxStack::GroupValue telegram = c.Telegram();
    const unsigned long packed = c.Packed();
    if (!Okaro::GroupValueToOkaValue(telegram, packed))
        state.SkipWithError("the telegram is refused");
    const TavBench::HeapPerIteration heap;
    for (auto _ : state)
        benchmark::DoNotOptimize(Okaro::GroupValueToOkaValue(telegram, packed));
    heap.Report(state);
}

void OkaValueToGroupValue(benchmark::State& state, const DptCase& c)
{
    OKAVALUE value = c.Value();
    // The codec wants the main type's value type: a time of day is a day-time value.
    if (c.dpt.main == 10)
        value.Deserialize(oka_string("15/2:2000-01-01T13:30:15.00;w=1;k=1;l=1;d=0"));
    const unsigned long packed = c.Packed();
    if (!Okaro::OkaValueToGroupValue(value, packed))
        state.SkipWithError("the value is refused");
    const TavBench::HeapPerIteration heap;
    for (auto _ : state)
        benchmark::DoNotOptimize(Okaro::OkaValueToGroupValue(value, packed));
    heap.Report(state);
}

// The timing every decode starts with (threshold mode, nothing logged below 0.1 s): its CPU
// timer reads the process times twice, one system call each.
void DecodeTiming(benchmark::State& state)
{
    const TavBench::HeapPerIteration heap;
    for (auto _ : state)
    {
        const Okaro::MeasureDuration measure("Decoding a KNX value took ", 100000000, true);
        benchmark::DoNotOptimize(&measure);
    }
    heap.Report(state);
}
BENCHMARK(DecodeTiming);

const bool registered = [] {
    for (const char* name : {"9.001", "10.001", "16.001", "19.001"})
    {
        const DptCase& c = TavBench::FindCase(name);
        benchmark::RegisterBenchmark((std::string("GroupValueToOkaValue/") + name).c_str(), GroupValueToOkaValue, c);
        benchmark::RegisterBenchmark((std::string("OkaValueToGroupValue/") + name).c_str(), OkaValueToGroupValue, c);
    }
    return true;
}();
} // namespace
