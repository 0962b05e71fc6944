#include "support/TestEnvironment.h"

#include <gmock/gmock.h>

int main(int argc, char** argv) {
    kestrant::test::useTestEnvironment();
    ::testing::InitGoogleMock(&argc, argv);
    return RUN_ALL_TESTS();
}
