// Tests of the package's life. Nothing is born here: each test lives its life in a child process.
#include <gtest/gtest.h>

#include "refhost/RefHost.h"

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    RefHost::PrintReports(false);
    return RUN_ALL_TESTS();
}
