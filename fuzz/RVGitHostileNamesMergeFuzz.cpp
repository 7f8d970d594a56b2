// The operations that merge, rewrite and preview are given names that nobody chose well.

#include <optional>
#include <string>
#include <vector>

#include "RVGit/base/RVNeverDestroyed.h"
#include "RVGit/base/RVOperationQueue.h"
#include "RVGit/command/RVGitCommandQueue.h"
#include "RVGit/merge/RVGitCherryPickCommand.h"
#include "RVGit/merge/RVGitDiffTool.h"
#include "RVGit/merge/RVGitDiffToolCommand.h"
#include "RVGit/merge/RVGitMergeCommand.h"
#include "RVGit/merge/RVGitMergeManager.h"
#include "RVGit/merge/RVGitMergeTool.h"
#include "RVGit/merge/RVGitMergeToolCommand.h"
#include "RVGit/merge/RVGitMergeTreeEntry.h"
#include "RVGit/merge/RVGitRebaseCommand.h"
#include "RVGit/merge/RVGitRevertCommand.h"
#include "fuzz/support/RVHostileSandbox.h"

namespace {

using Sandbox = RVHostileSandbox;
using Text = std::string;
using Operation = Sandbox::Operation;

RVGitMergeManager managerOf(const Sandbox& sandbox) {
    return RVGitMergeManager(sandbox.repository());
}

/// Stops in the middle, with a conflict in "file".
void stop(const Sandbox& sandbox, const char* command) {
    if (sandbox.isReal())
        (void)sandbox.git({command, "conflict"});
}

Operation plain(bool (*run)(RVGitMergeManager&, const Text& a, const Text& b)) {
    return {[run](const Sandbox& sandbox, const Text& a, const Text& b) {
        RVGitMergeManager manager = managerOf(sandbox);
        (void)run(manager, a, b);
    }};
}

/// Of revisions that are there, and one that is the text.
Operation rewriting(bool (*run)(RVGitMergeManager&, const Sandbox&, const Text& a, const Text& b)) {
    return {[run](const Sandbox& sandbox, const Text& a, const Text& b) {
        RVGitMergeManager manager = managerOf(sandbox);
        (void)run(manager, sandbox, a, b);
    }};
}

/// Of what has stopped.
Operation stopped(const char* command,
                  bool (*run)(RVGitMergeManager&, const Text& a, const Text& b)) {
    return {[command, run](const Sandbox& sandbox, const Text& a, const Text& b) {
                stop(sandbox, command);
                RVGitMergeManager manager = managerOf(sandbox);
                (void)run(manager, a, b);
            },
            Sandbox::RealOnly};
}

/// Of a conflict in a file that has the text's name.
Operation conflicting(bool (*run)(RVGitMergeManager&, const Text& path, const Text& b)) {
    return {[run](const Sandbox& sandbox, const Text& a, const Text& b) {
        sandbox.makeConflict(a);
        sandbox.write(a, "<<<<<<<\n");
        RVGitMergeManager manager = managerOf(sandbox);
        (void)run(manager, a, b);
    }};
}

const std::vector<Operation>& operations() {
    static const RVNeverDestroyed<std::vector<Operation>> list = {
        plain([](auto& m, auto& a, auto&) { return m.mergeWithRevision(a, std::nullopt); }),
        plain([](auto& m, auto& a, auto& b) {
            return m.mergeWithRevision(a, RVOptions{{RVGitMergeOptionVerifySignatures, true},
                                                    {RVGitMergeOptionAllowedSignersFile, b},
                                                    {RVGitMergeOptionSquashCommits, true}});
        }),
        plain([](auto& m, auto& a, auto&) { return m.rebaseWithRevision(a, std::nullopt); }),
        plain(
            [](auto& m, auto& a, auto& b) { return m.rebaseWithRevision(a, b, a, std::nullopt); }),
        plain([](auto& m, auto& a, auto& b) {
            return m.rebaseWithRevision("other", RVOptions{{RVGitRebaseOptionCleanupCommit, a}}) ||
                   m.rebaseWithRevision(b, RVOptions{{RVGitRebaseOptionAutosquash, true}});
        }),
        plain([](auto& m, auto& a, auto& b) {
            return m.cherryPickRevisions({a, b}, std::nullopt);
        }),
        plain([](auto& m, auto& a, auto&) {
            return m.cherryPickRevisions({"HEAD~1", a},
                                         RVOptions{{RVGitCherryPickOptionMainlineParentNumber, 1}});
        }),
        plain([](auto& m, auto& a, auto& b) {
            return m.revertRevisions({a, b}, std::nullopt);
        }),
        plain([](auto& m, auto& a, auto&) {
            return m.revertRevisions({"HEAD", a},
                                     RVOptions{{RVGitRevertOptionCommitChanges, false}});
        }),
        plain([](auto& m, auto& a, auto& b) {
            return m.mergeBaseForSourceRevision(a, b).has_value();
        }),
        plain([](auto& m, auto& a, auto& b) { return m.revisionIsAncestor(a, b); }),
        plain([](auto& m, auto& a, auto& b) {
            RVGitMergeManager::MergeTreeEntries conflicts;
            return m.canMergeRevision(a, b, &conflicts);
        }),
        plain([](auto& m, auto& a, auto& b) {
            return m.canMergeRevision("main", a, b, nullptr, nullptr);
        }),
        plain([](auto& m, auto& a, auto& b) {
            return m.conflictingFilePathsForMergingRevision(a, b).has_value();
        }),
        rewriting([](auto& m, auto& s, auto& a, auto&) {
            return m.moveRevisionsAboveRevision({s.hash(1)}, a);
        }),
        rewriting([](auto& m, auto& s, auto& a, auto& b) {
            return m.moveRevisionsBelowRevision({s.hash(0), a}, b);
        }),
        rewriting([](auto& m, auto& s, auto& a, auto&) {
            return m.deleteRevisions({a}) || m.deleteRevisions({a, s.hash(1)});
        }),
        rewriting([](auto& m, auto& s, auto& a, auto& b) {
            return m.squashRevisions({s.hash(0)}, a) || m.squashRevisions({a, b});
        }),
        rewriting([](auto& m, auto& s, auto& a, auto& b) {
            return m.fixupRevisions({a}, s.hash(1)) || m.fixupRevisions({b, s.hash(2)});
        }),
        // The message is a stranger's.
        rewriting([](auto& m, auto& s, auto& a, auto& b) {
            return m.setCommitMessage(a + "\n" + b, s.hash(1));
        }),
        rewriting([](auto& m, auto&, auto& a, auto& b) { return m.setCommitMessage(b, a); }),
        rewriting([](auto& m, auto&, auto& a, auto& b) {
            return m.editRevision(a) || m.editRevision(b, true);
        }),
        rewriting([](auto& m, auto& s, auto& a, auto& b) {
            return m.rebaseOntoWithRevision(a, {s.hash(0), b}, "other", std::nullopt);
        }),
        rewriting([](auto& m, auto& s, auto& a, auto&) {
            return m.rebaseOntoWithRevision(s.hash(1), {s.hash(0)}, a, std::nullopt);
        }),
        rewriting([](auto& m, auto& s, auto& a, auto& b) {
            return m.allCommitsForInteractiveRebaseIncludingRevision(a).has_value() ||
                   m.allCommitsForRevisions({s.hash(0), a}, b).has_value();
        }),
        stopped("merge",
                [](auto& m, auto& a, auto& b) {
                    (void)m.mergeCommitMessage();
                    return m.continueCurrentOperationWithCommitMessage(a + "\n" + b);
                }),
        stopped("rebase",
                [](auto& m, auto& a, auto& b) {
                    return m.resolveUnmergedFileByAdding("file") &&
                           m.continueRebaseWithCommitMessage(a + "\n" + b);
                }),
        stopped("rebase",
                [](auto& m, auto& a, auto& b) {
                    return m.continueEmptyRebaseWithCommitMessage(a + "\n" + b);
                }),
        stopped("cherry-pick",
                [](auto& m, auto& a, auto& b) {
                    return m.resolveUnmergedFileByAdding("file") &&
                           m.continueCherryPickWithCommitMessage(a + "\n" + b);
                }),
        stopped("revert",
                [](auto& m, auto& a, auto& b) {
                    return m.resolveUnmergedFileByAdding("file") &&
                           m.continueRevertWithCommitMessage(a + "\n" + b);
                }),
        // Files that a stranger's repository may hold.
        {[](auto& s, auto& a, auto& b) {
            for (const char* path :
                 {".git/rebase-merge/head-name", ".git/rebase-merge/onto", ".git/MERGE_HEAD",
                  ".git/MERGE_MSG", ".git/sequencer/todo", ".git/rebase-merge/amend",
                  ".git/rebase-apply/original-commit", ".git/CHERRY_PICK_HEAD",
                  ".git/rebase-merge/git-rebase-todo", ".git/rebase-merge/done"})
                s.write(path, a + "\n" + b + "\n");
            RVGitMergeManager m = managerOf(s);
            (void)m.currentMergeMode();
            (void)m.originalRefName();
            (void)m.originalRevision();
            (void)m.mergedRevision();
            (void)m.mergeCommitMessage();
            (void)m.nextSequenceRevision();
            (void)m.lastSequenceRevision();
            (void)m.nextSequenceStep();
            (void)m.continueCurrentOperationWithCommitMessage(b);
            (void)m.abortCurrentOperation();
        }},
        conflicting([](auto& m, auto& path, auto&) {
            (void)m.canResolveUnmergedFileByAdding(path);
            return m.resolveUnmergedFileByAdding(path);
        }),
        conflicting([](auto& m, auto& path, auto&) {
            (void)m.canResolveUnmergedFileByRemoving(path);
            return m.resolveUnmergedFileByRemoving(path);
        }),
        conflicting([](auto& m, auto& path, auto&) {
            (void)m.restoreAncestorVersionForUnmergedFile(path);
            (void)m.restoreOurVersionForUnmergedFile(path);
            return m.restoreTheirVersionForUnmergedFile(path);
        }),
        conflicting([](auto& m, auto& path, auto& b) {
            (void)m.restoreUnmergedVersionForFile(path);
            return m.restoreUnmergedVersionForFiles({path}, Sandbox::component(b));
        }),
        {[](auto& s, auto& a, auto& b) {
            RVGitMergeTool tool(s.repository(), b);
            tool.launchWithFilePath(a, nullptr);
            tool.queue().waitUntilAllOperationsAreFinished();
        }},
        {[](auto& s, auto& a, auto& b) {
            RVGitDiffTool tool(s.repository(), b);
            tool.launchWithRevisions(std::vector<Text>{"HEAD", a}, std::vector<Text>{b},
                                     RVGitDiffToolOptionPerformsDirectoryDiff, nullptr);
            tool.queue().waitUntilAllOperationsAreFinished();
        }},
    };
    return *list;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static RVHostileSandbox sandbox([](const RVHostileSandbox& made, const std::string& tree) {
        made.git({"checkout", "--quiet", "-b", "conflict", "HEAD~2"}, tree);
        made.git({"commit", "--quiet", "--allow-empty", "-m", "empty"}, tree);
        made.git({"rm", "--quiet", "file"}, tree);
        made.git({"commit", "--quiet", "-m", "-d"}, tree);
        made.git({"checkout", "--quiet", "main"}, tree);
    });
    sandbox.runOne(operations(), data, size);
    return 0;
}
