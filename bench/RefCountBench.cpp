// The cost of a reference count, compared with one increment and decrement of an atomic counter.
#include "vx/Reference.h"
#include "vx/String.h"

#include <benchmark/benchmark.h>

#include <atomic>
#include <cstdint>

namespace {

void bareCounter(benchmark::State& state)
{
    std::atomic<std::uint32_t> counter {1};
    for (auto _ : state) {
        benchmark::DoNotOptimize(&counter);
        benchmark::DoNotOptimize(counter.fetch_add(1, std::memory_order_relaxed));
        benchmark::DoNotOptimize(counter.fetch_sub(1, std::memory_order_acq_rel));
    }
    if (counter != 1)
        state.SkipWithError("lost count");
}
BENCHMARK(bareCounter);

void addRefAndRelease(benchmark::State& state)
{
    const vx::Reference<vx::Object> holder(new vx::Object);
    const vx::Object* object = holder.get();
    for (auto _ : state) {
        benchmark::DoNotOptimize(object);
        benchmark::DoNotOptimize(object->AddRef());
        benchmark::DoNotOptimize(object->Release());
    }
    if (object->GetRefCount() != 1)
        state.SkipWithError("lost count");
}
BENCHMARK(addRefAndRelease);

void copyReference(benchmark::State& state)
{
    vx::Reference<vx::Object> holder(new vx::Object);
    for (auto _ : state) {
        benchmark::DoNotOptimize(holder);
        const vx::Reference<vx::Object> copy(holder);
        benchmark::DoNotOptimize(copy);
    }
    if (holder->GetRefCount() != 1)
        state.SkipWithError("lost count");
}
BENCHMARK(copyReference);

void copyString(benchmark::State& state)
{
    const vx::String text(u"text that two strings share");
    for (auto _ : state) {
        benchmark::DoNotOptimize(&text);
        const vx::String copy(text);
        benchmark::DoNotOptimize(&copy);
    }
    if (vx::String(text) != u"text that two strings share")
        state.SkipWithError("lost text");
}
BENCHMARK(copyString);

} // namespace
