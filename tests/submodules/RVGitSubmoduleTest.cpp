#include "RVGit/submodules/RVGitSubmodule.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "RVGit/command/RVGitBinary.h"
#include "RVGit/command/RVGitError.h"
#include "RVGit/history/RVGitCommit.h"
#include "RVGit/remotes/RVGitRemote.h"
#include "RVGit/repository/RVGitRepository.h"
#include "RVGit/submodules/RVGitSubmoduleLoader.h"
#include "tests/submodules/RVGitSubmoduleTestCase.h"

namespace fs = std::filesystem;

namespace {

using testing::IsEmpty;
using testing::SizeIs;

using Helper = RVGitSubmoduleHelper;

class RVGitSubmoduleTest : public RVGitSubmoduleTestCase {
protected:
    [[nodiscard]] std::shared_ptr<RVGitSubmodule> submoduleWithStatus(int status) const {
        auto submodule = RVGitSubmodule::submoduleWithRepository(repository(), "name", "a/lib");
        submodule->setStatus(static_cast<RVGitSubmoduleStatus>(status));
        return submodule;
    }
    [[nodiscard]] std::shared_ptr<RVGitSubmoduleConfig> config(const RVOptions& values) const {
        return RVGitSubmoduleConfig::submoduleConfigWithRepository(
            repository(), RVGitSubmoduleConfigTypeDefault, "name", values);
    }
};

TEST_F(RVGitSubmoduleTest, RequiresARepository) {
    EXPECT_THROW(RVGitSubmodule(nullptr, "a", "a"), RVInvalidParameterException);
}

TEST_F(RVGitSubmoduleTest, StatusTexts) {
    const std::vector<std::string> texts = {
        "None",     "Clean (' ')",           "Uninitialized ('-')",   "Updated ('+')",
        "Unmerged", "Missing Configuration", "Missing Git Directory", "Missing Working Tree Path",
        "None"};
    for (std::size_t value = 0; value < texts.size(); ++value)
        EXPECT_EQ(Helper::stringRepresentationForSubmoduleStatus(
                      static_cast<RVGitSubmoduleStatus>(value)),
                  texts[value]);
    EXPECT_EQ(Helper::stringRepresentationForSubmoduleStatus(static_cast<RVGitSubmoduleStatus>(-1)),
              "None");
}

TEST_F(RVGitSubmoduleTest, ValidAndRegisteredByStatus) {
    for (int status = 0; status <= 7; ++status) {
        const auto submodule = submoduleWithStatus(status);
        EXPECT_EQ(submodule->isValid(), status >= 1 && status <= 4) << status;
        EXPECT_EQ(submodule->isRegistered(), status != 2) << status;
    }
    const auto submodule = submoduleWithStatus(2);
    submodule->setConfig(config({{"url", "x"}}));
    submodule->setLocalConfig(config({{"update", "none"}}));
    EXPECT_FALSE(submodule->isRegistered());
    submodule->setLocalConfig(config({{"url", "x"}}));
    EXPECT_TRUE(submodule->isRegistered());
}

TEST_F(RVGitSubmoduleTest, TheLocalConfigurationCountsFirst) {
    const auto submodule = submoduleWithStatus(1);
    EXPECT_EQ(submodule->URL(), std::nullopt);
    EXPECT_EQ(submodule->updateStrategy(), 0);
    submodule->setConfig(config({{"url", "u"},
                                 {"branch", "b"},
                                 {"update", "merge"},
                                 {"ignore", "all"},
                                 {"fetchrecursesubmodules", "true"}}));
    EXPECT_EQ(submodule->URL(), "u");
    EXPECT_EQ(submodule->upstreamBranch(), "b");
    EXPECT_EQ(submodule->updateStrategy(), RVGitSubmoduleUpdateStrategyMerge);
    EXPECT_EQ(submodule->statusIgnoreMode(), RVGitSubmoduleStatusIgnoreModeAll);
    EXPECT_EQ(submodule->recurseSubmodules(), RVGitSubmoduleRecurseSubmodulesOptionTrue);
    submodule->setLocalConfig(config({{"url", ""}, {"update", "!run"}, {"ignore", "dirty"}}));
    EXPECT_EQ(submodule->URL(), "");
    EXPECT_EQ(submodule->upstreamBranch(), "b");
    EXPECT_EQ(submodule->updateStrategy(), RVGitSubmoduleUpdateStrategyMerge);
    EXPECT_EQ(submodule->statusIgnoreMode(), RVGitSubmoduleStatusIgnoreModeDirty);
    EXPECT_EQ(submodule->recurseSubmodules(), RVGitSubmoduleRecurseSubmodulesOptionTrue);
}

TEST_F(RVGitSubmoduleTest, Paths) {
    const auto& r = repository();
    EXPECT_EQ(Helper::absoluteWorkingDirectoryPathForSubmodulePath("a/./b/", r),
              pathInRepository("a/b"));
    EXPECT_EQ(Helper::absoluteGitDirectoryPathForSubmoduleName("n/m", r),
              pathInRepository(".git/modules/n/m"));
    EXPECT_EQ(Helper::relativeGitDirectoryPathForSubmoduleWithName("n", "p"), "../.git/modules/n");
    EXPECT_EQ(Helper::relativeGitDirectoryPathForSubmoduleWithName("n/m", "p/q/r"),
              "../../../.git/modules/n/m");
    EXPECT_EQ(Helper::relativeWorkingTreePathForSubmoduleWithName("n", "p/q"), "../../../p/q");
    EXPECT_EQ(Helper::relativeWorkingTreePathForSubmoduleWithName("n/m", "p"), "../../../../p");
}

TEST_F(RVGitSubmoduleTest, RelativePathsAreThoseThatGitWrites) {
    addSubmodule("a/b", "x/y/z");
    const auto places = placesOf("a/b", "x/y/z");
    EXPECT_EQ(places.at("link"),
              "gitdir: " + Helper::relativeGitDirectoryPathForSubmoduleWithName("x/y/z", "a/b"));
    EXPECT_EQ(places.at("core.worktree"),
              Helper::relativeWorkingTreePathForSubmoduleWithName("x/y/z", "a/b"));
}

TEST_F(RVGitSubmoduleTest, PathsOfASubmoduleComeFromItsRepositoryIfItIsValid) {
    addSubmodule("a/lib", "name");
    gitAt("a/lib", {"config", "user.name", "x"});
    fs::rename(pathInRepository(".git/modules/name"), pathInRepository(".git/modules/other"));
    writeFile("repository/a/lib/.git", "gitdir: ../../.git/modules/other\n");
    const auto submodule = submoduleWithStatus(1);
    EXPECT_EQ(Helper::absoluteGitDirectoryPathForSubmodule(*submodule, repository()),
              pathInRepository(".git/modules/other"));
    EXPECT_EQ(Helper::absoluteWorkingDirectoryPathForSubmodule(*submodule, repository()),
              pathInRepository("a/lib"));
    const auto invalid = submoduleWithStatus(6);
    EXPECT_EQ(Helper::absoluteGitDirectoryPathForSubmodule(*invalid, repository()),
              pathInRepository(".git/modules/name"));
    EXPECT_EQ(Helper::absoluteWorkingDirectoryPathForSubmodule(*invalid, repository()),
              pathInRepository("a/lib"));
}

TEST_F(RVGitSubmoduleTest, AnUninitializedOneHasNoRepository) {
    const auto submodule = submoduleWithStatus(2);
    const RVRecordingGit recorder = useRecordingGit();
    EXPECT_EQ(submodule->submoduleRepository(), nullptr);
    EXPECT_EQ(submodule->layoutFormat(), RVGitSubmoduleLayoutFormatUnknown);
    EXPECT_EQ(submodule->originRemote(), nullptr);
    EXPECT_EQ(submodule->commit(), nullptr);
    EXPECT_EQ(submodule->numberOfDirtyChanges(), 0);
    EXPECT_THAT(recorder.argumentLists(), IsEmpty());
}

TEST_F(RVGitSubmoduleTest, OpensItsRepositoryOnce) {
    addSubmodule("a/lib", "name");
    const auto submodule = submoduleWithStatus(1);
    const auto opened = submodule->submoduleRepository();
    ASSERT_TRUE(opened);
    ASSERT_TRUE(opened->isValid());
    EXPECT_EQ(opened->path(), pathInRepository("a/lib"));
    EXPECT_EQ(submodule->submoduleRepository(), opened);
    EXPECT_EQ(submodule->layoutFormat(), RVGitSubmoduleLayoutFormatLinked);
}

TEST_F(RVGitSubmoduleTest, HasTheRemoteOrigin) {
    addSubmodule("a/lib", "name");
    const auto submodule = submoduleWithStatus(1);
    const auto remote = submodule->originRemote();
    ASSERT_NE(remote, nullptr);
    EXPECT_EQ(remote->URL(), scratchPath("library"));
    const RVRecordingGit recorder = useRecordingGit();
    EXPECT_EQ(submodule->originRemote(), remote);
    EXPECT_THAT(recorder.argumentLists(), IsEmpty());
}

TEST_F(RVGitSubmoduleTest, ItsCommitIsLookedForInTheSuperproject) {
    addSubmodule("a/lib", "name");
    const auto submodule = submoduleAt("a/lib");
    ASSERT_TRUE(submodule);
    EXPECT_EQ(submodule->commit(), nullptr);
    const RVRecordingGit recorder = useRecordingGit();
    EXPECT_EQ(submodule->commit(), nullptr);
    EXPECT_THAT(recorder.argumentLists(), IsEmpty());
    const auto other = submoduleWithStatus(1);
    other->setCommitHash(gitInRepository({"rev-parse", "HEAD"}));
    ASSERT_NE(other->commit(), nullptr);
    EXPECT_EQ(other->commit(), other->commit());
}

TEST_F(RVGitSubmoduleTest, CountsCommitsAheadAndBehindOnce) {
    addSubmodule("lib");
    commitInSubmodule("lib");
    commitInSubmodule("lib");
    gitInRepository({"commit", "-q", "-am", "Two more"});
    gitAt("lib", {"checkout", "-q", "HEAD~2"});
    gitAt("lib", {"commit", "-q", "--allow-empty", "-m", "Aside"});
    const auto submodule = submoduleAt("lib");
    ASSERT_TRUE(submodule);
    EXPECT_EQ(submodule->status(), RVGitSubmoduleStatusUpdated);
    EXPECT_FALSE(submodule->loadedUpdatedCommitsAhead());
    EXPECT_FALSE(submodule->loadedUpdatedCommitsBehind());
    EXPECT_EQ(submodule->updatedCommitsAhead(), 1);
    EXPECT_EQ(submodule->updatedCommitsBehind(), 2);
    EXPECT_TRUE(submodule->loadedUpdatedCommitsAhead());
    EXPECT_TRUE(submodule->loadedUpdatedCommitsBehind());
    const RVRecordingGit recorder = useRecordingGit();
    EXPECT_EQ(submodule->updatedCommitsAhead(), 1);
    EXPECT_EQ(submodule->updatedCommitsBehind(), 2);
    EXPECT_THAT(recorder.argumentLists(), IsEmpty());
}

TEST_F(RVGitSubmoduleTest, CountsNoCommitsForOneThatIsCleanOrWhereGitFails) {
    addSubmodule("lib");
    const auto clean = submoduleAt("lib");
    ASSERT_TRUE(clean);
    {
        const RVRecordingGit recorder = useRecordingGit();
        EXPECT_EQ(clean->updatedCommitsAhead(), 0);
        EXPECT_EQ(clean->updatedCommitsBehind(), 0);
        EXPECT_THAT(recorder.argumentLists(), IsEmpty());
        EXPECT_FALSE(clean->loadedUpdatedCommitsAhead());
    }
    clean->setStatus(RVGitSubmoduleStatusUpdated);
    clean->setIndexCommitHash(std::string(40, '1'));
    EXPECT_EQ(clean->updatedCommitsAhead(), 0);
    EXPECT_TRUE(clean->loadedUpdatedCommitsAhead());
}

TEST_F(RVGitSubmoduleTest, CountsDirtyChangesAsTheIgnoreModeSays) {
    addSubmodule("lib");
    writeFile("repository/lib/lib.c", "changed\n");
    writeFile("repository/lib/new", "x");
    const auto count = [&](const char* mode) {
        const auto submodule = submoduleAt("lib");
        EXPECT_TRUE(submodule->isDirty());
        if (mode)
            submodule->setLocalConfig(config({{"ignore", mode}}));
        const auto number = submodule->numberOfDirtyChanges();
        EXPECT_EQ(submodule->loadedNumberOfDirtyChanges(), number > 0);
        return number;
    };
    EXPECT_EQ(count(nullptr), 2);
    EXPECT_EQ(count("none"), 2);
    EXPECT_EQ(count("untracked"), 1);
    EXPECT_EQ(count("dirty"), 0);
    EXPECT_EQ(count("all"), 0);
    const auto submodule = submoduleAt("lib");
    ASSERT_TRUE(submodule);
    EXPECT_EQ(submodule->numberOfDirtyChanges(), 2);
    const RVRecordingGit recorder = useRecordingGit();
    EXPECT_EQ(submodule->numberOfDirtyChanges(), 2);
    EXPECT_THAT(recorder.argumentLists(), IsEmpty());
    const auto clean = submoduleAt("lib");
    ASSERT_TRUE(clean);
    clean->setDirty(false);
    EXPECT_EQ(clean->numberOfDirtyChanges(), 0);
}

}  // namespace
