// The table-driven front, one representative DPT per converter family, and what building
// a converter costs.
#include "BenchCases.h"
#include "HeapCounter.h"

#include <TavObjectModel/KnxValueConverter.h>

#include <benchmark/benchmark.h>

namespace
{
using TavBench::DptCase;

void FromKnxValue(benchmark::State& state, const DptCase& c)
{
    Okaro::KnxValueConverter converter;
    const KnxStack::GroupValue telegram = c.Telegram();
    KNXDPT dpt = c.dpt;
    OKAVALUE value;
    if (!converter.FromKnxValue(dpt, telegram, value))
        state.SkipWithError("the telegram is refused");
    for (auto _ : state)
    {
        benchmark::DoNotOptimize(converter.FromKnxValue(dpt, telegram, value));
        benchmark::ClobberMemory();
    }
}

void ToKnxValue(benchmark::State& state, const DptCase& c)
{
    Okaro::KnxValueConverter converter;
    const OKAVALUE value = c.Value();
    KNXDPT dpt = c.dpt;
    KnxStack::GroupValue telegram;
    if (!converter.ToKnxValue(dpt, value, telegram))
        state.SkipWithError("the value is refused");
    for (auto _ : state)
    {
        benchmark::DoNotOptimize(converter.ToKnxValue(dpt, value, telegram));
        benchmark::ClobberMemory();
    }
}

void ConstructKnxValueConverter(benchmark::State& state)
{
    const TavBench::HeapCount before = TavBench::ReadHeapCount();
    for (auto _ : state)
    {
        Okaro::KnxValueConverter converter;
        benchmark::DoNotOptimize(&converter);
    }
    const TavBench::HeapCount after = TavBench::ReadHeapCount();
    const double constructions = static_cast<double>(state.iterations());
    state.counters["heap_bytes"] = static_cast<double>(after.bytes - before.bytes) / constructions;
    state.counters["allocations"] = static_cast<double>(after.allocations - before.allocations) / constructions;
}
BENCHMARK(ConstructKnxValueConverter);

const bool registered = [] {
    for (const DptCase& c : TavBench::FamilyCases())
    {
        benchmark::RegisterBenchmark((std::string("FromKnxValue/") + c.name).c_str(), FromKnxValue, c);
        if (c.encodes)
            benchmark::RegisterBenchmark((std::string("ToKnxValue/") + c.name).c_str(), ToKnxValue, c);
    }
    return true;
}();
} // namespace
