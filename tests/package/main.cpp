#include <filesystem>
#include <iostream>

#include "RVGit/RVGit.h"

int main(int argc, char** argv) {
    RVGitBinary::setDefaultGitBinary(RVGitBinary::gitBinaryInPath());
    const std::string path = std::filesystem::absolute(argc > 1 ? argv[1] : ".");
    const auto repository = RVGitRepository::repositoryWithPath(path);

    std::optional<RVError> error;
    const auto commits = RVGitCommit::allCommitsForRevisions(
        {"HEAD"}, {}, repository, RVOptions{{RVGitLogOptionLimit, 10}}, &error);
    if (!commits) {
        std::cerr << error->localizedDescription().value_or("Failed") << "\n"
                  << error->localizedFailureReason().value_or("") << "\n";
        return 1;
    }
    for (const auto& commit : *commits)
        std::cout << RVGitShortenHash(commit->commitHash()).value_or("") << " "
                  << commit->subject().value_or("") << "\n";
}
