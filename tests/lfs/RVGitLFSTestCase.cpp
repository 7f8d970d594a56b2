#include "tests/lfs/RVGitLFSTestCase.h"

#include <fcntl.h>
#include <sched.h>
#include <sys/mount.h>
#include <unistd.h>

#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include "RVGit/lfs/RVGitLFSPointer.h"
#include "tests/support/RVGitTestEnvironment.h"

RVGitLFSTestCase::RVGitLFSTestCase() {
    gitInRepository({"lfs", "install", "--local"});
    writeFile("repository/.gitattributes", "*.bin filter=lfs diff=lfs merge=lfs -text\n");
    gitInRepository({"add", ".gitattributes"});
    gitInRepository({"commit", "-m", "Track"});
}

std::shared_ptr<RVGitLFSPointer> RVGitLFSTestCase::pointerFor(const std::string& contents) const {
    const auto sum = runProgram({"sha256sum"}, {}, contents);
    return RVGitLFSPointer::pointerFromData(
        "version https://git-lfs.github.com/spec/v1\n"
        "oid sha256:" +
        sum.standardOutput.substr(0, 64) + "\nsize " + std::to_string(contents.size()) + "\n");
}

bool RVGitLFSTestCase::holdsObject(const std::string& gitDirectory,
                                   const std::string& contents) const {
    const std::string hash = pointerFor(contents)->objectID().substr(7);
    return fileExists(gitDirectory + "/lfs/objects/" + hash.substr(0, 2) + "/" + hash.substr(2, 2) +
                      "/" + hash);
}

std::shared_ptr<RVGitLFSPointer> RVGitLFSTestCase::keepObject(const std::string& contents) const {
    git({"lfs", "clean"}, repositoryPath(), contents);
    return pointerFor(contents);
}

bool RVGitLFSTestCase::withPrivateTemporaryDirectory(const std::function<void()>& body) {
    bool mounted = false;
    // What else lies there and is to be seen still: the tests' files, and a git that was installed
    // there, with its "bin" and its "libexec".
    std::vector<std::string> kept = {
        RVGitTestEnvironment::rootDirectory(),
        std::filesystem::canonical(gitPath()).parent_path().parent_path().string()};
    std::erase_if(kept, [](const std::string& path) { return !path.starts_with("/tmp/"); });
    // A thread has mounts of its own if it asks for them, and so has all that it starts.
    std::thread([&] {
        mounted = ::unshare(CLONE_NEWNS) == 0 &&
                  ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0;
        // What a mount hides can still be reached by an open descriptor.
        std::vector<int> directories;
        for (const std::string& path : kept)
            directories.push_back(::open(path.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
        mounted = mounted && ::mount("tmpfs", "/tmp", "tmpfs", 0, "mode=1777") == 0;
        for (std::size_t i = 0; i < kept.size(); ++i) {
            if (mounted) {
                const std::string source = "/proc/thread-self/fd/" + std::to_string(directories[i]);
                std::filesystem::create_directories(kept[i]);
                mounted = ::mount(source.c_str(), kept[i].c_str(), nullptr, MS_BIND, nullptr) == 0;
            }
            ::close(directories[i]);
        }
        if (mounted)
            body();
    }).join();
    return mounted;
}
