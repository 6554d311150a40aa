// The table-driven front, one representative DPT per converter family, and what building
// a converter costs; each with the heap it takes per call.
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
    const TavBench::HeapPerIteration heap;
    for (auto _ : state)
    {
        benchmark::DoNotOptimize(converter.FromKnxValue(dpt, telegram, value));
        benchmark::ClobberMemory();
    }
    heap.Report(state);
}

void ToKnxValue(benchmark::State& state, const DptCase& c)
{
    Okaro::KnxValueConverter converter;
    const OKAVALUE value = c.Value();
    KNXDPT dpt = c.dpt;
    KnxStack::GroupValue telegram;
    if (!converter.ToKnxValue(dpt, value, telegram))
        state.SkipWithError("the value is refused");
    const TavBench::HeapPerIteration heap;
    for (auto _ : state)
    {
        benchmark::DoNotOptimize(converter.ToKnxValue(dpt, value, telegram));
        benchmark::ClobberMemory();
    }
    heap.Report(state);
}

void ConstructKnxValueConverter(benchmark::State& state)
{
    const TavBench::HeapPerIteration heap;
    for (auto _ : state)
    {
        Okaro::KnxValueConverter converter;
        benchmark::DoNotOptimize(&converter);
    }
    heap.Report(state);
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
