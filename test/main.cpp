// The tests' entry: sets the processor record, starts the package, runs, stops it.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>

#include "RK/indep/frame/RK_Birth.h"
#include "refhost/RefHost.h"

// --cpu=none|sse2|ssse3|both picks the processor record; without it the machine's own stands.
int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    for (int i = 1; i < argc; ++i) {
        if (std::strncmp(argv[i], "--cpu=", 6) != 0) continue;
        const char* record = argv[i] + 6;
        const bool both = std::strcmp(record, "both") == 0;
        const bool none = std::strcmp(record, "none") == 0;
        const bool sse2 = both || std::strcmp(record, "sse2") == 0;
        const bool ssse3 = both || std::strcmp(record, "ssse3") == 0;
        if (!none && !sse2 && !ssse3) {
            std::fprintf(stderr, "rk_tests: unknown processor record %s\n", record);
            return 2;
        }
        RefHost::SetCPU({sse2, ssse3});
    }
    RefHost::PrintReports(false);
    if (RK_Birth() != RK_kOK) {
        std::fprintf(stderr, "rk_tests: the package did not start\n");
        return 1;
    }
    RefHost::TakeReports();
    const int failed = RUN_ALL_TESTS();
    if (RK_Death() != RK_kOK) {
        std::fprintf(stderr, "rk_tests: the package did not stop cleanly\n");
        return 1;
    }
    return failed;
}
