#include "support/TestEnvironment.h"

#include <gtest/gtest.h>

int main(int argc, char** argv) {
    const support::TestEnvironment environment;
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
