#include "RVGit/merge/RVGitMergeOptionValues.h"

void rvgit::openNoEditor(RVGitCommand& command) {
    command.addEnvironmentVariables({{"GIT_EDITOR", ":"}, {"GIT_SEQUENCE_EDITOR", ":"}});
    // It would have git open an editor where it does not by itself.
    command.setValueForEnvironmentVariable(std::nullopt, "GIT_MERGE_AUTOEDIT");
}
