#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "RVGit/base/RVError.h"
#include "RVGit/command/RVGitBinary.h"
#include "RVGit/command/RVGitErrorCodes.h"
#include "RVGit/command/RVGitErrorKeys.h"
#include "RVGit/merge/RVGitRebaseCommand.h"
#include "RVGit/repository/RVGitRepository.h"
#include "tests/merge/RVGitMergeTestCase.h"
#include "tests/support/RVErrorMatchers.h"
#include "tests/support/RVRecordingGit.h"

/// Base of the tests of RVGitMergeManager: operations from their start to their end, against the
/// real git.
class RVGitMergeManagerTestCase : public RVGitMergeTestCase {
protected:
    using Words = std::vector<std::string>;

    /// It succeeds, and leaves no error.
    static void expectSuccess(const std::function<bool(RVErrorPlace)>& operation) {
        std::optional<RVError> error;
        EXPECT_TRUE(operation(&error));
        EXPECT_FALSE(error.has_value())
            << (error ? error->userInfoString(RVGitCommandErrorOutputErrorKey).value_or("") : "");
    }
    /// The command line of the last git, behind the two directories and "--no-pager".
    static Words lineOf(const RVRecordingGit& recorder) {
        Words line = recorder.lastInvocation().arguments;
        line.erase(line.begin(), line.begin() + 3);
        return line;
    }
    [[nodiscard]] RVRecordingGit record() const {
        RVRecordingGit recorder = recordingGit();
        RVGitBinary::setDefaultGitBinary(RVGitBinary::gitBinaryWithPath(recorder.path()));
        recorder.clear();
        return recorder;
    }
    [[nodiscard]] std::string gitFile(const std::string& name) const {
        return *repository()->gitDirectoryPath() + "/" + name;
    }

    void stopMerge(const std::string& revision = "topic") {
        EXPECT_THAT(
            [&](RVErrorPlace error) {
                return manager().mergeWithRevision(revision, std::nullopt, error);
            },
            failsWith(RVGitMergeConflictsError));
    }
    /// A rebase of "topic" by the merge backend that stops at Two.
    void stopRebase() {
        checkOut("topic");
        // Older gits take the merge backend for a list of steps alone.
        const std::optional<RVOptions> options =
            rebasesByMerging() ? std::nullopt
                               : std::optional(RVOptions{{RVGitRebaseOptionInteractive, true},
                                                         {RVGitRebaseOptionAutosquash, true}});
        EXPECT_THAT(
            [&](RVErrorPlace error) {
                return manager().rebaseWithRevision("main", options, error);
            },
            failsWith(RVGitRebaseConflictsError));
        EXPECT_EQ(manager().currentMergeMode(), RVGitMergeModeRebase);
    }
    void stopCherryPick(const Words& revisions) {
        EXPECT_THAT(
            [&](RVErrorPlace error) {
                return manager().cherryPickRevisions(revisions, std::nullopt, error);
            },
            failsWith(RVGitRebaseConflictsError));
        EXPECT_EQ(manager().currentMergeMode(), RVGitMergeModeCherryPick);
    }
    void stopRevert(const Words& revisions) {
        EXPECT_THAT(
            [&](RVErrorPlace error) {
                return manager().revertRevisions(revisions, std::nullopt, error);
            },
            failsWith(RVGitRebaseConflictsError));
        EXPECT_EQ(manager().currentMergeMode(), RVGitMergeModeRevert);
    }
    void resolve(const std::string& contents, const std::string& file = "file") {
        write(file, contents);
        expectSuccess(
            [&](RVErrorPlace error) { return manager().resolveUnmergedFileByAdding(file, error); });
    }
    [[nodiscard]] std::string unmerged() const { return gitHere({"ls-files", "--unmerged"}); }
};
