#include <iostream>

#include "tests/guide/Guide.h"

/// Without arguments: lists the sections whose examples are to be run, by their numbers. With the
/// number of one, a repository, an address and a destination: runs that one. It fails if it leaves
/// an error in the place that it was given.
int main(int argc, char** argv) {
    if (argc < 5) {
        for (std::size_t index = 0; index < examples.size(); ++index)
            if (examples[index].isRun)
                std::cout << index << "\n";
        return 0;
    }
    const Example& example = examples.at(std::stoul(argv[1]));
    RVGitBinary::setDefaultGitBinary(RVGitBinary::gitBinaryInPath());
    Given given{RVGitRepository::repositoryWithPath(argv[2]), argv[2], {}, argv[3], argv[4]};
    std::cout << example.title << "\n";
    example.run(given);
    if (!given.error)
        return 0;
    std::cerr << example.title << ": " << given.error->localizedDescription().value_or("") << "\n"
              << given.error->localizedFailureReason().value_or("") << "\n";
    return 1;
}
