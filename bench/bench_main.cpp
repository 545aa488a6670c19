// The benchmark program: the benchmarks register themselves, each file its
// own (see benchutil.h).
#include <benchmark/benchmark.h>

BENCHMARK_MAIN();
