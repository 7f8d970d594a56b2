#include "tests/support/RVGitRepositoryTestCase.h"

#include "RVGit/command/RVGitBinary.h"
#include "RVGit/command/RVGitCommand.h"
#include "RVGit/repository/RVGitRepository.h"

RVGitRepositoryTestCase::RVGitRepositoryTestCase()
    : repositoryPath_(initRepository()),
      repository_(RVGitRepository::repositoryWithWorkingTreeDirectoryPath(
          repositoryPath_, repositoryPath_ + "/.git")) {}

std::string RVGitRepositoryTestCase::gitInRepository(
    const std::vector<std::string>& arguments) const {
    return gitLine(arguments, repositoryPath_);
}

std::string RVGitRepositoryTestCase::makeCommit(std::string_view message) {
    return commitFile(repositoryPath_, "file.txt", std::to_string(++numberOfCommits_), message);
}

void RVGitRepositoryTestCase::change(std::string_view contents) const {
    writeFile(repositoryPath_ + "/file.txt", contents);
}

RVRecordingGit RVGitRepositoryTestCase::useRecordingGit() {
    RVRecordingGit recorder = recordingGit();
    RVGitBinary::setDefaultGitBinary(RVGitBinary::gitBinaryWithPath(recorder.path()));
    recorder.clear();
    return recorder;
}

RVFakeGit RVGitRepositoryTestCase::useFakeGit() {
    RVFakeGit fake = fakeGit();
    RVGitBinary::setDefaultGitBinary(RVGitBinary::gitBinaryWithPath(fake.path()));
    return fake;
}

std::vector<std::string> RVGitRepositoryTestCase::lastArguments(
    const RVRecordingGit& recorder) const {
    const std::vector<std::string> common = {"--git-dir=" + repositoryPath_ + "/.git",
                                             "--work-tree=" + repositoryPath_, "--no-pager"};
    std::vector<std::string> arguments = recorder.lastInvocation().arguments;
    if (arguments.size() < common.size() ||
        !std::equal(common.begin(), common.end(), arguments.begin())) {
        ADD_FAILURE() << "not a command of the repository: " << testing::PrintToString(arguments);
        return arguments;
    }
    arguments.erase(arguments.begin(),
                    arguments.begin() + static_cast<std::ptrdiff_t>(common.size()));
    return arguments;
}

std::vector<std::string> RVGitRepositoryTestCase::argumentsOf(const RVRecordingGit& recorder,
                                                              RVGitCommand& command) const {
    (void)command.run();
    return lastArguments(recorder);
}

RVError RVGitRepositoryTestCase::errorOf(RVGitCommand& command) {
    std::optional<RVError> error;
    EXPECT_FALSE(command.run(&error));
    EXPECT_TRUE(error.has_value());
    return error.value_or(RVError("none", 0));
}
