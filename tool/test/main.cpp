// The tool's unit tests run with the package started.
#include <gtest/gtest.h>

#include "Library.h"

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    const Library library;
    return RUN_ALL_TESTS();
}
