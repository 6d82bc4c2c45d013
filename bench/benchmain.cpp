// The benchmark executable: every figure beside its floor, in one run.
//
// Order matters: the registry only grows, so each stage (1k, 10k, 100k
// instances) runs its routing and query benchmarks before the next stage
// adds instances. Names pair a figure "X" with its floor "floor/X";
// scripts/bench_table.py turns the JSON output into the README table.

#include "benchmarks.h"
#include "fixture.h"

#include <QCoreApplication>

#include <benchmark/benchmark.h>

int main(int argc, char** argv)
{
    benchmark::Initialize(&argc, argv);
    QCoreApplication app(argc, argv);
    Bench::setUpHost();

    registerMemoryBenchmarks();
    registerLogBenchmarks();
    for (int size : Bench::kRegistrySizes) {
        registerRoutingBenchmarks(size);
        registerQueryBenchmarks(size);
        if (size == 10000) {
            registerTickBenchmarks();
            registerLatencyBenchmarks();
        }
    }
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
