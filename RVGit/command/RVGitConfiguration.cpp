#include "RVGit/command/RVGitConfiguration.h"

#include "RVGit/base/RVNeverDestroyed.h"

RVGitConfiguration& RVGitConfiguration::sharedConfiguration() {
    static RVNeverDestroyed<RVGitConfiguration> configuration;
    return *configuration;
}
