#include "RVGit/command/RVGitConfiguration.h"

#include <gtest/gtest.h>

namespace {

TEST(RVGitConfigurationTest, EightCommandsRunAtOnceUnlessSetOtherwise) {
    RVGitConfiguration configuration;
    EXPECT_EQ(configuration.maxConcurrentCommands(), 8U);
    configuration.setMaxConcurrentCommands(3);
    EXPECT_EQ(configuration.maxConcurrentCommands(), 3U);
}

TEST(RVGitConfigurationTest, IsSharedByTheProcess) {
    EXPECT_EQ(&RVGitConfiguration::sharedConfiguration(),
              &RVGitConfiguration::sharedConfiguration());
}

}  // namespace
