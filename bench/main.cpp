// The benchmarks' entry: starts the package, registers what walks a list, runs.
#include <cstdio>

#include "RK/indep/frame/RK_Birth.h"
#include "bench/Bench.h"

int main(int argc, char** argv) {
    RefHost::PrintReports(false);
    if (RK_Birth() != RK_kOK) {
        std::fprintf(stderr, "rk_bench: the package did not start\n");
        return 1;
    }
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return RK_Death() == RK_kOK ? 0 : 1;
}
