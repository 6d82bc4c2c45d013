#pragma once

// Registration of each group of benchmarks, in the order main() runs them.

void registerMemoryBenchmarks();
void registerLogBenchmarks();
// Routers at `registrySize` registered instances, for every leg count.
void registerRoutingBenchmarks(int registrySize);
void registerQueryBenchmarks(int registrySize);
void registerTickBenchmarks();
void registerLatencyBenchmarks();
