// Measures single stages of the deleted scan; ./dev bench micro runs it.

#include <benchmark/benchmark.h>

BENCHMARK_MAIN();
