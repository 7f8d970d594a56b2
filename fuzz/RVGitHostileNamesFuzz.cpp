// The operations on history, objects, diffs and the working tree are given names that nobody chose
// well.

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "RVGit/base/RVNeverDestroyed.h"
#include "RVGit/diff/RVGitChangeset.h"
#include "RVGit/diff/RVGitDiff.h"
#include "RVGit/history/RVGitBlame.h"
#include "RVGit/history/RVGitCommit.h"
#include "RVGit/history/RVGitContributionInfo.h"
#include "RVGit/history/RVGitLogCommandOptions.h"
#include "RVGit/objects/RVGitBlob.h"
#include "RVGit/objects/RVGitTag.h"
#include "RVGit/objects/RVGitTree.h"
#include "RVGit/repository/RVGitConfig.h"
#include "RVGit/repository/RVGitRef.h"
#include "RVGit/repository/RVGitRefLogEntryManager.h"
#include "RVGit/repository/RVGitRepository.h"
#include "RVGit/worktree/RVGitAttributes.h"
#include "RVGit/worktree/RVGitStash.h"
#include "RVGit/worktree/RVGitWorkingTreeManager.h"
#include "fuzz/support/RVHostileSandbox.h"

namespace {

using Repository = std::shared_ptr<RVGitRepository>;
using Text = std::string;
using Arguments = std::vector<std::string>;

using Operation = std::function<void(const Repository&, const Text& a, const Text& b)>;

const std::vector<Operation>& operations() {
    static const RVNeverDestroyed<std::vector<Operation>> list = {
        [](auto& r, auto& a, auto&) { use(RVGitTag::createTagWithRefName(a, "HEAD", r)); },
        [](auto& r, auto& a, auto&) { use(RVGitTag::createTagWithRefName("v1", a, r)); },
        [](auto& r, auto& a, auto& b) { use(RVGitTag::createTagWithRefName(a, b, a, r)); },
        [](auto& r, auto& a, auto&) { use(RVGitTag::deleteTagWithRefName(a, r)); },
        [](auto& r, auto& a, auto&) { use(RVGitTag::verifyTagWithRefName(a, r)); },
        [](auto& r, auto& a, auto& b) { use(RVGitTag::verifyTagWithRefName(a, b, r)); },
        [](auto& r, auto& a, auto&) { use(RVGitBlob::blobForHash(a, r)); },
        [](auto& r, auto& a, auto& b) { use(RVGitBlob::blobForRevision(a, b, r)); },
        [](auto& r, auto& a, auto&) { use(RVGitTree::treeForTreeHash(a, r)); },
        [](auto& r, auto& a, auto& b) { use(RVGitTree::treeForRevision(a, b, r)); },
        [](auto& r, auto& a, auto& b) { use(RVGitTree::allTreeEntriesForRevision(a, b, r)); },
        [](auto& r, auto& a, auto&) { use(RVGitTree::rootTreeForRevision(a, r)); },
        [](auto& r, auto& a, auto&) { use(RVGitCommit::commitForCommitHash(a, r)); },
        [](auto& r, auto& a, auto&) { use(RVGitCommit::commitForCommitHash(a, r, true)); },
        [](auto& r, auto& a, auto& b) { use(RVGitCommit::allCommitsFromRevision(a, b, r)); },
        [](auto& r, auto& a, auto& b) { use(RVGitCommit::allCommitsByComparingRevision(a, b, r)); },
        [](auto& r, auto& a, auto& b) {
            use(RVGitCommit::allCommitsForRevisions(
                {"HEAD", a}, {b}, r, RVOptions{{RVGitLogOptionSearchPatterns, Arguments{a}}}));
        },
        [](auto& r, auto& a, auto& b) {
            use(RVGitCommit::allCommitHashesForRevisions(
                {a}, {b}, r, RVOptions{{RVGitLogOptionSearchContentPatterns, Arguments{b}}}));
        },
        [](auto& r, auto& a, auto& b) {
            use(RVGitCommit::countAllCommitsForRevisions({a}, {b}, r));
        },
        [](auto& r, auto& a, auto&) { use(RVGitStash::stashForRefName(a, r)); },
        [](auto& r, auto& a, auto&) {
            use(RVGitStash::saveStashFromWorkingTreeInRepository(r, a, 0));
        },
        [](auto& r, auto& a, auto&) { use(RVGitStash::deleteStashWithRefName(a, r)); },
        [](auto& r, auto& a, auto&) { use(RVGitStash::applyStashWithRefName(a, r, false)); },
        [](auto& r, auto& a, auto&) { use(RVGitStash::applyStashWithRefName(a, r, true)); },
        [](auto& r, auto& a, auto& b) {
            use(RVGitDiff::generatePatchByComparingRevision(a, b, {{b}}, r, RVOptions()));
        },
        [](auto& r, auto& a, auto& b) {
            use(RVGitDiff::generatePatchByComparingRevisionWithAncestorForRevision(a, {{b}}, r,
                                                                                   RVOptions()));
        },
        [](auto& r, auto& a, auto& b) {
            use(RVGitDiff::diffByComparingBlob(a, b, r, RVOptions()));
        },
        [](auto& r, auto& a, auto& b) {
            use(RVGitDiff::diffByComparingBlobWithEmptyBlob(a, b, r));
        },
        [](auto& r, auto& a, auto& b) {
            use(RVGitChangeset::changesetByComparingRevisions({a, b}, {{b}}, r, RVOptions()));
        },
        [](auto& r, auto& a, auto& b) {
            use(RVGitChangeset::changesetForRevisionRange(a, {{b}}, r, RVOptions()));
        },
        [](auto& r, auto& a, auto& b) {
            use(RVGitChangeset::changesetByComparingIndexWithRevision(a, {{b}}, r, RVOptions()));
        },
        [](auto& r, auto& a, auto& b) { use(RVGitBlame::blameForFilePath(a, b, r)); },
        [](auto& r, auto& a, auto&) { use(RVGitRef::refForFullRefName(a, r, RVOptions())); },
        [](auto& r, auto& a, auto&) { use(r->config()->valueForConfigKey(a)); },
        [](auto& r, auto& a, auto& b) { use(r->config()->setValue(a, b)); },
        [](auto& r, auto& a, auto&) { use(r->config()->setValue(a, "user.name")); },
        [](auto& r, auto& a, auto& b) { use(r->config()->renameSection(a, b)); },
        [](auto& r, auto& a, auto&) { use(r->config()->removeSection(a)); },
        [](auto& r, auto& a, auto&) {
            use(RVGitRefLogEntryManager(r).loadRefLogEntriesForRefWithName(a, RVOptions()));
        },
        [](auto& r, auto& a, auto& b) {
            use(RVGitContributionInfo::allContributionInfosForRepository(r, a, {{b}}, 5, 0));
        },
        [](auto& r, auto& a, auto& b) {
            use(RVGitAttributes::allEffectiveGitAttributesForFilePaths({a, b}, r));
        },
        [](auto& r, auto& a, auto&) { use(RVGitWorkingTreeManager(r).checkoutRevision(a)); },
        [](auto& r, auto& a, auto&) {
            use(RVGitWorkingTreeManager(r).resetToRevision(a, RVGitResetModeHard, {}));
        },
        [](auto& r, auto& a, auto& b) {
            use(RVGitWorkingTreeManager(r).stageFiles({a, b}));
        },
        [](auto& r, auto& a, auto& b) {
            use(RVGitWorkingTreeManager(r).unstageFiles({a, b}));
        },
        [](auto& r, auto& a, auto& b) {
            use(RVGitWorkingTreeManager(r).untrackFiles({a, b}));
        },
        [](auto& r, auto& a, auto& b) {
            use(RVGitWorkingTreeManager(r).removeFiles({a, b}));
        },
        [](auto& r, auto& a, auto& b) { use(RVGitWorkingTreeManager(r).moveFileAtPath(a, b, 0)); },
        [](auto& r, auto& a, auto& b) {
            use(RVGitWorkingTreeManager(r).setAssumeUnchangedFlagForFilePaths({a, b}));
        },
    };
    return *list;
}

const std::vector<RVHostileSandbox::Operation>& sandboxOperations() {
    static const RVNeverDestroyed<std::vector<RVHostileSandbox::Operation>> list([] {
        std::vector<RVHostileSandbox::Operation> wrapped;
        for (const Operation& operation : operations())
            wrapped.push_back(
                {[&operation](const RVHostileSandbox& sandbox, const Text& a, const Text& b) {
                    operation(sandbox.repository(), a, b);
                }});
        return wrapped;
    }());
    return *list;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    return runInSandbox(sandboxOperations(), data, size);
}
