// Asks the repository at the first argument for its file of allowed signers, as whoever reads a
// signature does, and tells which one was made up for it.

#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

#include "RVGit/base/RVFileManager.h"
#include "RVGit/command/RVGitBinary.h"
#include "RVGit/repository/RVGitRepository.h"

int main(int, char** arguments) {
    RVGitBinary::setDefaultGitBinary(RVGitBinary::gitBinaryWithPath(arguments[2]));
    const auto repository = RVGitRepository::repositoryWithPath(arguments[1]);
    static_cast<void>(repository->allowedSignersFileFullPath());
    const auto file = RVGitRepository::temporaryFilePath();
    if (!file || !RVFileManager::fileExistsAtPath(*file))
        return 2;
    // A process that was forked off leaves the file to its parent.
    const pid_t child = fork();
    if (child == 0)
        std::exit(0);
    waitpid(child, nullptr, 0);
    if (!RVFileManager::fileExistsAtPath(*file))
        return 3;
    std::puts(file->c_str());
    return 0;
}
