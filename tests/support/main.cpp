#include <gmock/gmock.h>

#include "tests/support/RVGitTestEnvironment.h"

int main(int argc, char** argv) {
    RVGitTestEnvironment::replaceProcessEnvironment();
    testing::InitGoogleMock(&argc, argv);
    testing::AddGlobalTestEnvironment(new RVGitTestEnvironment);
    return RUN_ALL_TESTS();
}
