#include "RVGit/command/RVGitConfiguration.h"

#include <gtest/gtest.h>

namespace {

TEST(RVGitConfigurationTest, EightCommandsRunAtOnceUnlessSetOtherwise) {
    RVGitConfiguration configuration;
    EXPECT_EQ(configuration.maxConcurrentCommands(), 8U);
    configuration.setMaxConcurrentCommands(3);
    EXPECT_EQ(configuration.maxConcurrentCommands(), 3U);
}

TEST(RVGitConfigurationTest, TheEnvironmentIsPassedOnAsItIsUnlessSetOtherwise) {
    RVGitConfiguration configuration;
    EXPECT_FALSE(configuration.sanitizesInheritedEnvironment());
    configuration.setSanitizesInheritedEnvironment(true);
    EXPECT_TRUE(configuration.sanitizesInheritedEnvironment());
}

TEST(RVGitConfigurationTest, IsSharedByTheProcess) {
    EXPECT_EQ(&RVGitConfiguration::sharedConfiguration(),
              &RVGitConfiguration::sharedConfiguration());
}

}  // namespace
