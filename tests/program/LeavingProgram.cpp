// Leaves while its threads list the history of the repository at the first argument: what the
// library's threads read must not die with the process.

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <thread>
#include <vector>

#include "RVGit/command/RVGitBinary.h"
#include "RVGit/history/RVGitCommit.h"
#include "RVGit/objects/RVGitTag.h"
#include "RVGit/repository/RVGitRepository.h"

namespace {

std::atomic<int> numberOfListings = 0;

void listForever(const std::shared_ptr<RVGitRepository>& repository) {
    while (true) {
        std::optional<RVError> error;
        const auto commits =
            RVGitCommit::allCommitsForRevisions({"HEAD"}, {}, repository, {}, &error);
        if (!commits || commits->empty() || error) {
            std::fprintf(stderr, "The history was not listed\n");
            std::abort();
        }
        // Fails, by way of the tables of errors.
        static_cast<void>(
            RVGitCommit::allCommitsForRevisions({"no-such-revision"}, {}, repository, {}, &error));
        static_cast<void>(RVGitTag::allTagsForRepository(repository, &error));
        ++numberOfListings;
    }
}

// Registered ahead of everything that the library may register, so it is called behind that.
void giveTheThreadsTime() {
    const int before = numberOfListings;
    for (int attempt = 0; attempt < 500 && numberOfListings < before + 4; ++attempt)
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
}

}  // namespace

int main(int, char** arguments) {
    std::atexit(giveTheThreadsTime);
    RVGitBinary::setDefaultGitBinary(RVGitBinary::gitBinaryWithPath(arguments[2]));
    const auto repository = RVGitRepository::repositoryWithPath(arguments[1]);
    if (!repository)
        return 2;
    for (int number = 0; number < 4; ++number)
        std::thread(listForever, repository).detach();
    while (numberOfListings < 4)
        std::this_thread::yield();
    return 0;
}
