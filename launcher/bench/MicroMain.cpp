// The micro-benchmarks, in the locale of the environment and with English
// texts, as a launcher has them. Prints as Google Benchmark is asked to:
//
//     launcher_microbench --benchmark_filter=LogRecord --benchmark_repetitions=9
//         --benchmark_enable_random_interleaving=true --benchmark_format=json
#include <benchmark/benchmark.h>

#include <clocale>

#include "ScopedCatalogue.h"

int main(int argc, char** argv)
{
    std::setlocale(LC_CTYPE, "");
    const ScopedCatalogue texts;
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
