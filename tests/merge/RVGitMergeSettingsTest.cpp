#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "RVGit/command/RVGitErrorCodes.h"
#include "RVGit/command/RVGitErrorKeys.h"
#include "RVGit/merge/RVGitMergeCommand.h"
#include "RVGit/merge/RVGitRebaseCommand.h"
#include "RVGit/repository/RVGitRepository.h"
#include "tests/merge/RVGitMergeTestCase.h"
#include "tests/support/RVGitRequirement.h"
#include "tests/support/RVRepositorySnapshot.h"

namespace fs = std::filesystem;

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;
using Words = std::vector<std::string>;

/// The operations with settings of the user that no test of the makers would have.
class RVGitMergeSettingsTest : public RVGitMergeTestCase {
protected:
    static std::int64_t codeOf(const std::function<bool(RVErrorPlace)>& operation) {
        std::optional<RVError> error;
        const bool done = operation(&error);
        EXPECT_EQ(done, !error);
        if (error) {
            EXPECT_THAT(error->userInfoString(RVGitCommandErrorOutputErrorKey).value_or(""),
                        Not(HasSubstr("an editor was opened")));
        }
        return error ? error->code() : 0;
    }
    std::int64_t rebase(const std::string& branch, const std::string& onto = "main") {
        checkOut(branch);
        return codeOf(
            [&](RVErrorPlace e) { return manager().rebaseWithRevision(onto, std::nullopt, e); });
    }
    std::int64_t merge(const std::string& revision) {
        return codeOf(
            [&](RVErrorPlace e) { return manager().mergeWithRevision(revision, std::nullopt, e); });
    }
    std::int64_t pick(const Words& revisions) {
        return codeOf([&](RVErrorPlace e) {
            return manager().cherryPickRevisions(revisions, std::nullopt, e);
        });
    }
    std::int64_t revert(const Words& revisions) {
        return codeOf(
            [&](RVErrorPlace e) { return manager().revertRevisions(revisions, std::nullopt, e); });
    }
    void expectAbortRestores(const RVRepositorySnapshot& before) {
        EXPECT_EQ(codeOf([&](RVErrorPlace e) { return manager().abortCurrentOperation(e); }), 0);
        EXPECT_EQ(manager().currentMergeMode(), RVGitMergeModeNone);
        EXPECT_EQ(RVRepositorySnapshot(path()).differencesFrom(before), "");
    }
    void resolve(std::string_view contents) {
        write("file", contents);
        EXPECT_TRUE(manager().resolveUnmergedFileByAdding("file"));
    }
    std::int64_t goOn(const std::optional<std::string>& message = std::nullopt) {
        return codeOf([&](RVErrorPlace e) {
            return manager().continueCurrentOperationWithCommitMessage(message, e);
        });
    }
    void set(const std::string& key, const std::string& value) { gitHere({"config", key, value}); }
};

struct Setting {
    const char* key;
    const char* value;
    /// The first git that takes the value; older ones die of it.
    const char* version = "1";
};

/// All of these leave the operations as they are.
constexpr Setting harmlessSettings[] = {
    {"rebase.autoSquash", "true"},
    {"rebase.autoStash", "true"},
    {"rebase.updateRefs", "true"},
    {"rebase.abbreviateCommands", "true"},
    {"rebase.missingCommitsCheck", "error"},
    {"rebase.instructionFormat", "%s -- %an %H"},
    {"rebase.rebaseMerges", "true"},
    {"rebase.stat", "true"},
    {"rebase.backend", "apply"},
    {"commit.cleanup", "verbatim"},
    {"commit.cleanup", "whitespace"},
    {"commit.verbose", "true"},
    {"commit.status", "false"},
    {"core.commentChar", ";"},
    {"merge.conflictStyle", "diff3"},
    {"merge.conflictStyle", "zdiff3", "2.35"},
    {"merge.ff", "false"},
    {"merge.stat", "false"},
    {"rerere.enabled", "true"},
    {"core.autocrlf", "input"},
    {"core.quotePath", "true"},
    {"color.ui", "always"},
    {"advice.mergeConflict", "false"},
    {"i18n.commitEncoding", "UTF-8"},
    {"diff.renames", "copies"},
    {"core.fsyncMethod", "batch"},
    {"sequence.editor", "false"},
    {"core.editor", "false"},
};

TEST_F(RVGitMergeSettingsTest, ARebaseWithEachSetting) {
    for (const Setting& setting : harmlessSettings) {
        if (!isTestedGitAtLeast(setting.version))
            continue;
        SCOPED_TRACE(std::string(setting.key) + "=" + setting.value);
        // "label onto" and "reset onto" are steps as well.
        const std::size_t stepsBefore =
            setting.key == std::string("rebase.rebaseMerges") && isTestedGitAtLeast("2.41") ? 2 : 0;
        makePlace(RVGitMergePlace::Repository);
        set(setting.key, setting.value);
        checkOut("topic");
        const RVRepositorySnapshot before(path());
        EXPECT_EQ(rebase("topic"), RVGitRebaseConflictsError);
        EXPECT_EQ(manager().currentMergeMode(), RVGitMergeModeRebase);
        EXPECT_EQ(manager().nextSequenceStep(), 2u + stepsBefore);
        EXPECT_EQ(manager().lastSequenceStep(), 4u + stepsBefore);
        EXPECT_EQ(manager().nextSequenceRevision(), hash("Two"));
        EXPECT_EQ(manager().originalRefName(), "refs/heads/topic");
        expectAbortRestores(before);

        EXPECT_EQ(rebase("topic"), RVGitRebaseConflictsError);
        resolve("two\n");
        EXPECT_EQ(goOn("Mine"), 0);
        EXPECT_EQ(manager().currentMergeMode(), RVGitMergeModeNone);
        EXPECT_THAT(subjects(5), ElementsAre("Four", "Three", "Mine", "One", "Ours"));
        EXPECT_EQ(read("file"), "four\n");
    }
}

TEST_F(RVGitMergeSettingsTest, TheOthersWithEachSetting) {
    for (const Setting& setting : harmlessSettings) {
        if (!isTestedGitAtLeast(setting.version))
            continue;
        SCOPED_TRACE(std::string(setting.key) + "=" + setting.value);
        makePlace(RVGitMergePlace::Repository);
        set(setting.key, setting.value);
        const RVRepositorySnapshot before(path());
        EXPECT_EQ(merge("topic"), RVGitMergeConflictsError);
        EXPECT_EQ(manager().currentMergeMode(), RVGitMergeModeMerge);
        expectAbortRestores(before);
        EXPECT_EQ(pick({"One", "Two"}), RVGitRebaseConflictsError);
        EXPECT_EQ(manager().currentMergeMode(), RVGitMergeModeCherryPick);
        expectAbortRestores(before);
        EXPECT_EQ(pick({"Two", "Three"}), RVGitRebaseConflictsError);
        resolve("two\n");
        EXPECT_EQ(goOn(), 0);
        EXPECT_THAT(subjects(3), ElementsAre("Three", "Two", "Ours"));
        EXPECT_EQ(revert({"Ours"}), RVGitRebaseConflictsError);
        EXPECT_EQ(manager().currentMergeMode(), RVGitMergeModeRevert);
        resolve("ours no more\n");
        EXPECT_EQ(goOn(), 0);
        EXPECT_EQ(merge("clean"), 0);
        EXPECT_EQ(manager().currentMergeMode(), RVGitMergeModeNone);
        EXPECT_THAT(subjects(1), ElementsAre(isTitleOfMerge("clean")));
    }
}

TEST_F(RVGitMergeSettingsTest, CommentsAreThoseOfTheConfiguredCharacter) {
    set("core.commentChar", ";");
    EXPECT_EQ(merge("topic"), RVGitMergeConflictsError);
    resolve("both\n");
    EXPECT_THAT(manager().mergeCommitMessage().value_or(""), HasSubstr("\n; Conflicts:\n"));
    EXPECT_EQ(goOn(), 0);
    EXPECT_THAT(message(), isTitleOfMerge("topic"));
    // A line with the usual one is text.
    EXPECT_EQ(rebase("later"), RVGitRebaseConflictsError);
    resolve("early\n");
    EXPECT_EQ(goOn("Mine\n\n# text\n; comment"), 0);
    // The apply backend takes the message as it is.
    EXPECT_EQ(gitHere({"log", "-1", "--format=%B", "HEAD~2"}),
              rebasesByMerging() ? "Mine\n\n# text" : "Mine\n\n# text\n; comment");
}

TEST_F(RVGitMergeSettingsTest, AnAutomaticStashIsPutBack) {
    set("rebase.autoStash", "true");
    checkOut("topic");
    write("other", "changed\n");
    const RVRepositorySnapshot before(path());
    EXPECT_EQ(rebase("topic"), RVGitRebaseConflictsError);
    EXPECT_EQ(read("other"), "other\n");
    expectAbortRestores(before);
    EXPECT_EQ(rebase("topic"), RVGitRebaseConflictsError);
    resolve("two\n");
    EXPECT_EQ(goOn(), 0);
    EXPECT_EQ(read("other"), "changed\n");
}

TEST_F(RVGitMergeSettingsTest, OnlyFastForwardsFailsAndChangesNothing) {
    set("merge.ff", "only");
    const RVRepositorySnapshot before(path());
    EXPECT_EQ(merge("clean"), RVGitRVGitGenericError);
    EXPECT_EQ(RVRepositorySnapshot(path()).differencesFrom(before), "");
    gitHere({"checkout", "-q", "-B", "behind", "Base"});
    EXPECT_EQ(merge("clean"), 0);
    EXPECT_EQ(hash("HEAD"), hash("clean"));
}

TEST_F(RVGitMergeSettingsTest, ResolutionsThatGitRemembers) {
    set("rerere.enabled", "true");
    set("rerere.autoUpdate", "true");
    EXPECT_EQ(merge("topic"), RVGitMergeConflictsError);
    resolve("remembered\n");
    EXPECT_EQ(goOn(), 0);
    gitHere({"reset", "-q", "--hard", "HEAD^"});
    // It stops all the same, with nothing left to resolve.
    EXPECT_EQ(merge("topic"), RVGitMergeConflictsError);
    EXPECT_EQ(manager().currentMergeMode(), RVGitMergeModeMerge);
    EXPECT_EQ(read("file"), "remembered\n");
    EXPECT_EQ(gitHere({"ls-files", "--unmerged"}), "");
    EXPECT_EQ(goOn(), 0);
    EXPECT_THAT(message(), isTitleOfMerge("topic"));
}

TEST_F(RVGitMergeSettingsTest, LineEndsOfWindows) {
    set("core.autocrlf", "true");
    gitHere({"checkout", "-q", "topic"});
    const RVRepositorySnapshot before(path());
    EXPECT_EQ(rebase("topic"), RVGitRebaseConflictsError);
    EXPECT_TRUE(manager().restoreTheirVersionForUnmergedFile("file"));
    EXPECT_EQ(read("file"), "two\r\n");
    // The bytes of the blob.
    EXPECT_TRUE(manager().restoreAncestorVersionForUnmergedFile("file"));
    EXPECT_EQ(read("file"), "base\n");
    expectAbortRestores(before);
}

TEST_F(RVGitMergeSettingsTest, AKeyThatCannotSignFailsAndCanBePutBack) {
    RVGIT_TEST_NEEDS_GIT("2.20", "a merge that it cannot sign leaves no MERGE_HEAD");
    set("commit.gpgSign", "true");
    set("gpg.program", writeFile("no-gpg", "#!/bin/sh\necho 'no key' >&2\nexit 2\n", 0755));
    gitHere({"checkout", "-q", "topic"});
    const RVRepositorySnapshot topic(path());
    // By the exit code of the git.
    EXPECT_THAT(rebase("topic", "clean"),
                testing::AnyOf(RVGitRVGitGenericError, RVGitGPGSigningKeyUnvailableError));
    if (manager().isMerging()) {
        expectAbortRestores(topic);
    } else {
        EXPECT_EQ(RVRepositorySnapshot(path()).differencesFrom(topic), "");
    }
    gitHere({"checkout", "-q", "main"});
    const RVRepositorySnapshot before(path());
    EXPECT_EQ(merge("clean"), RVGitGPGSigningKeyUnvailableError);
    EXPECT_EQ(manager().currentMergeMode(), RVGitMergeModeMerge);
    expectAbortRestores(before);
    EXPECT_NE(pick({"Clean"}), 0);
    EXPECT_EQ(manager().currentMergeMode(), RVGitMergeModeCherryPick);
    expectAbortRestores(before);
    EXPECT_NE(revert({"Ours"}), 0);
    if (manager().isMerging())
        expectAbortRestores(before);
}

TEST_F(RVGitMergeSettingsTest, AKeyThatSigns) {
    RVGIT_TEST_NEEDS_GIT("2.34", "it knows no signatures by SSH");
    const std::string key = scratchPath("key");
    ASSERT_EQ(runProgram({"ssh-keygen", "-q", "-t", "ed25519", "-N", "", "-f", key}).exitCode, 0);
    set("gpg.format", "ssh");
    set("user.signingKey", key + ".pub");
    set("commit.gpgSign", "true");
    EXPECT_EQ(rebase("topic"), RVGitRebaseConflictsError);
    resolve("two\n");
    EXPECT_EQ(goOn("Mine"), 0);
    EXPECT_THAT(subjects(3), ElementsAre("Four", "Three", "Mine"));
    for (const char* revision : {"HEAD", "HEAD~2"})
        EXPECT_THAT(gitHere({"cat-file", "commit", revision}), HasSubstr("gpgsig "));
    gitHere({"checkout", "-q", "main"});
    EXPECT_EQ(merge("clean"), 0);
    EXPECT_THAT(gitHere({"cat-file", "commit", "HEAD"}), HasSubstr("gpgsig "));
}

TEST_F(RVGitMergeSettingsTest, HooksThatFailAndTalk) {
    RVGIT_TEST_NEEDS_GIT("2.15", "its merges run no hook that could refuse");
    const std::string hooks = makeDirectory("hooks");
    const auto putHook = [&](const std::string& name, const std::string& script) {
        writeFile(hooks + "/" + name, "#!/bin/sh\n" + script + "\n", 0755);
    };
    set("core.hooksPath", hooks);
    for (const char* name :
         {"post-checkout", "post-commit", "post-merge", "post-rewrite", "prepare-commit-msg"})
        putHook(name, "echo 'a hook talks: error: could not be worse'; echo more >&2");
    EXPECT_EQ(rebase("topic"), RVGitRebaseConflictsError);
    resolve("two\n");
    EXPECT_EQ(goOn(), 0);
    EXPECT_THAT(subjects(2), ElementsAre("Four", "Three"));

    // One that refuses: the failure is told, and the state can be put back.
    putHook("pre-merge-commit", "echo refused >&2; exit 1");
    putHook("commit-msg", "exit 1");
    putHook("pre-rebase", "exit 1");
    gitHere({"checkout", "-q", "main"});
    const RVRepositorySnapshot before(path());
    EXPECT_EQ(merge("clean"), RVGitRVGitGenericError);
    EXPECT_EQ(manager().currentMergeMode(), RVGitMergeModeMerge);
    expectAbortRestores(before);
    EXPECT_EQ(codeOf([&](RVErrorPlace e) {
                  return manager().mergeWithRevision(
                      "clean", RVOptions{{RVGitMergeOptionNoVerify, true}}, e);
              }),
              0);
    gitHere({"reset", "-q", "--hard", "Ours"});
    EXPECT_EQ(rebase("main", "topic"), RVGitRVGitGenericError);
    EXPECT_EQ(manager().currentMergeMode(), RVGitMergeModeNone);
    EXPECT_EQ(hash("main"), hash("Ours"));
}

TEST_F(RVGitMergeSettingsTest, MissingStepsAreNoErrorOfAPlainRebase) {
    set("rebase.missingCommitsCheck", "error");
    EXPECT_EQ(rebase("clean"), 0);
    EXPECT_THAT(subjects(2), ElementsAre("Clean", "Ours"));
}

TEST_F(RVGitMergeSettingsTest, MessagesAreUTF8WhateverCommitsAreEncodedIn) {
    const std::string text = "Änderung – zwei";
    const auto expectText = [&] {
        EXPECT_EQ(subjects(1).front(), text);
        EXPECT_THAT(gitHere({"cat-file", "commit", "HEAD"}), HasSubstr("\n\n" + text));
        EXPECT_THAT(gitHere({"cat-file", "commit", "HEAD"}), Not(HasSubstr("\nencoding ")));
    };
    set("i18n.commitEncoding", "ISO-8859-1");
    setEnvironmentVariable("GIT_CONFIG_PARAMETERS", "'user.name=Somebody Else'");
    EXPECT_EQ(pick({"Two"}), RVGitRebaseConflictsError);
    resolve("two\n");
    EXPECT_EQ(goOn(text), 0);
    expectText();
    EXPECT_THAT(gitHere({"cat-file", "commit", "HEAD"}), HasSubstr("committer Somebody Else"));
    EXPECT_EQ(revert({"Ours"}), RVGitRebaseConflictsError);
    resolve("x\n");
    EXPECT_EQ(goOn(text), 0);
    expectText();
    for (const char* backend : {"merge", "apply"}) {
        SCOPED_TRACE(backend);
        makePlace(RVGitMergePlace::Repository);
        set("i18n.commitEncoding", "ISO-8859-1");
        set("rebase.backend", backend);
        gitHere({"checkout", "-q", "-b", "two", "Two"});
        EXPECT_EQ(rebase("two"), RVGitRebaseConflictsError);
        resolve("two\n");
        EXPECT_EQ(goOn(text), 0);
        expectText();
    }
    EXPECT_TRUE(manager().setCommitMessage(text + "!", hash("HEAD")));
    EXPECT_EQ(subjects(1).front(), text + "!");
}

TEST_F(RVGitMergeSettingsTest, WhatARebaseTellsItsStepsHidesNoCherryPick) {
    setEnvironmentVariable("GIT_CHERRY_PICK_HELP", "words of another git");
    const RVRepositorySnapshot before(path());
    EXPECT_EQ(pick({"Two"}), RVGitRebaseConflictsError);
    EXPECT_EQ(manager().currentMergeMode(), RVGitMergeModeCherryPick);
    expectAbortRestores(before);
}

TEST_F(RVGitMergeSettingsTest, NoEditorOfTheEnvironmentIsOpened) {
    const std::string editor = scratchPath("no-editor");
    for (const char* name : {"GIT_EDITOR", "GIT_SEQUENCE_EDITOR", "VISUAL", "EDITOR"})
        setEnvironmentVariable(name, editor);
    setEnvironmentVariable("GIT_MERGE_AUTOEDIT", "yes");
    EXPECT_EQ(merge("clean"), 0);
    EXPECT_EQ(pick({"Three"}), 0);
    EXPECT_EQ(revert({"HEAD"}), 0);
    EXPECT_EQ(pick({"Two"}), RVGitRebaseConflictsError);
    resolve("two\n");
    EXPECT_EQ(goOn(), 0);
    EXPECT_EQ(revert({"Ours"}), RVGitRebaseConflictsError);
    resolve("x\n");
    EXPECT_EQ(goOn(), 0);
    EXPECT_EQ(merge("third"), RVGitMergeConflictsError);
    resolve("third\n");
    EXPECT_EQ(goOn(), 0);
    checkOut("later");
    EXPECT_EQ(codeOf([&](RVErrorPlace e) {
                  return manager().rebaseWithRevision(
                      "Base",
                      RVOptions{{RVGitRebaseOptionInteractive, true},
                                {RVGitRebaseOptionAutosquash, true}},
                      e);
              }),
              0);
    EXPECT_EQ(rebase("topic", "third"), RVGitRebaseConflictsError);
    resolve("two\n");
    EXPECT_EQ(goOn(), 0);
    EXPECT_EQ(manager().currentMergeMode(), RVGitMergeModeNone);
}

}  // namespace
