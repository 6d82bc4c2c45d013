// Reader latency under routing load: one thread routes progress-gather
// answers for every instance of a 10k registry as fast as it can, while the
// benchmark thread, like a user interface, reads instance fields under the
// content lock (AlgoLogic::ReadLocker) and runs a registry query, with a
// short pause between reads. Reports the wait for the content lock and the
// query's latency as p50 / p99 / max in microseconds, and the writer's rate.

#include "benchmarks.h"
#include "fixture.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <thread>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;

constexpr auto kDuration = std::chrono::seconds(3);
constexpr auto kPause = std::chrono::microseconds(20);

double micros(Clock::duration d)
{
    return std::chrono::duration<double, std::micro>(d).count();
}

void setPercentiles(benchmark::State& state, const char* prefix, std::vector<double>& samples)
{
    if (samples.empty())
        return;
    std::sort(samples.begin(), samples.end());
    const auto at = [&samples](double q) {
        return samples[std::min(samples.size() - 1, size_t(q * double(samples.size())))];
    };
    state.counters[std::string(prefix) + "_p50_us"] = at(0.50);
    state.counters[std::string(prefix) + "_p99_us"] = at(0.99);
    state.counters[std::string(prefix) + "_max_us"] = samples.back();
    state.counters[std::string(prefix) + "_samples"] = double(samples.size());
}

// Spins rather than sleeps or yields: the reader keeps its core, so what is
// measured is the lock, not the scheduler handing the core to another thread.
void pause(Clock::duration d)
{
    const auto until = Clock::now() + d;
    while (Clock::now() < until) {
    }
}

} // namespace

void registerLatencyBenchmarks()
{
    // What one uncontended read acquisition of the content lock costs (it is
    // recursive, so every acquisition goes through Qt's internal mutex and
    // its per-thread bookkeeping), beside a non-recursive lock for scale.
    benchmark::RegisterBenchmark("lock/content-read", [](benchmark::State& state) {
        QReadWriteLock* lock = InstanceMgr::instance()->getLocker();
        for (auto _ : state)
            AlgoLogic::ReadLocker locker(lock);
    });
    benchmark::RegisterBenchmark("ref/lock/non-recursive-read", [](benchmark::State& state) {
        QReadWriteLock lock;
        for (auto _ : state)
            AlgoLogic::ReadLocker locker(&lock);
    });

    benchmark::RegisterBenchmark("latency/readers-vs-router/n:10000", [](benchmark::State& state) {
        Bench::ensureRegistrySize(10000);
        InstanceMgr* mgr = InstanceMgr::instance();
        std::vector<VariantMapList> inputs;
        const QStringList ids = mgr->GetAllInstanceIDs(Algo_Values::AlgoGlobalType::unknown);
        for (int i = 0; i < Bench::registrySize() - 3 * Bench::kHotCount; ++i)
            inputs.push_back(Bench::classProgressInput(Bench::backgroundId(i),
                                                        Bench::backgroundClass(i)));
        const QStringList& hot = Bench::hotIds(4);

        std::atomic<bool> stop{false};
        std::atomic<long> routed{0};
        std::vector<double> lockWaits;
        std::vector<double> queryTimes;
        for (auto _ : state) {
            std::thread writer([&] {
                size_t i = 0;
                while (!stop.load(std::memory_order_relaxed)) {
                    mgr->OnRecv_StrategyProgressGatherResponse(inputs[i++ % inputs.size()]);
                    routed.fetch_add(1, std::memory_order_relaxed);
                }
            });
            const auto end = Clock::now() + kDuration;
            int k = 0;
            double sink = 0.0;
            while (Clock::now() < end) {
                const QString& id = hot.at(k++ % hot.size());
                InstanceInfoBase* inst = mgr->GetInstanceInfoForAllType().value(id);
                const auto asked = Clock::now();
                {
                    AlgoLogic::ReadLocker locker(mgr->getLocker());
                    lockWaits.push_back(micros(Clock::now() - asked));
                    sink += inst->filledQty() + inst->progrees() + inst->status().size();
                    for (SymbolInfoBase* leg : inst->GetAllSymbols_Ptr<SymbolInfoBase>())
                        sink += leg->filledQty();
                }
                pause(kPause);
                if (k % 16 == 0) {
                    const auto started = Clock::now();
                    sink += mgr->GetAllInstanceIDsExceptDeleted(QStringLiteral("Normal"), false)
                                .size();
                    queryTimes.push_back(micros(Clock::now() - started));
                    pause(kPause);
                }
            }
            stop = true;
            writer.join();
            benchmark::DoNotOptimize(sink);
        }
        setPercentiles(state, "read_wait", lockWaits);
        setPercentiles(state, "query", queryTimes);
        state.counters["routed_per_s"] =
            double(routed.load()) / std::chrono::duration<double>(kDuration).count();
    })->Iterations(1)->Unit(benchmark::kMillisecond);
}
