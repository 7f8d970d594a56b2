#include "RVGit/command/RVGitConfiguration.h"

RVGitConfiguration& RVGitConfiguration::sharedConfiguration() {
    static auto& configuration = *new RVGitConfiguration;
    return configuration;
}
