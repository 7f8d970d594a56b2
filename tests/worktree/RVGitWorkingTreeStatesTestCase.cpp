#include "tests/worktree/RVGitWorkingTreeStatesTestCase.h"

#include <filesystem>
#include <set>

#include "RVGit/base/RVString.h"
#include "RVGit/objects/RVGitTreeEntry.h"
#include "RVGit/worktree/RVGitIndexEntry.h"
#include "RVGit/worktree/RVGitWorkingTreeOptions.h"

const RVOptions RVGitWorkingTreeStatesTestCase::everything = {
    {RVGitWorkingTreeOptionIncludeUnchangedFiles, true},
    {RVGitWorkingTreeOptionIncludeIgnoredFiles, true},
    {RVGitWorkingTreeOptionUntrackedFilesMode, 3}};

void RVGitWorkingTreeStatesTestCase::writeContents(const std::string& file) const {
    writeFile("repository/" + file, contentsForFile(file));
}

void RVGitWorkingTreeStatesTestCase::changeFile(const std::string& file) const {
    writeFile("repository/" + file, contentsForFile(file) + "changed\n");
}

void RVGitWorkingTreeStatesTestCase::stage(const std::string& file) const {
    gitInRepository({"add", "-f", "--", file});
}

void RVGitWorkingTreeStatesTestCase::remove(const std::string& file) const {
    std::filesystem::remove(scratchPath("repository/" + file));
}

void RVGitWorkingTreeStatesTestCase::replaceByLink(const std::string& file,
                                                   const std::string& target) const {
    remove(file);
    std::filesystem::create_symlink(target, scratchPath("repository/" + file));
}

void RVGitWorkingTreeStatesTestCase::expectListingOfGit() const {
    const auto statuses = porcelainStatusesByPath(
        git({"status", "--porcelain=v2", "-z", "--ignored", "--untracked-files=all"},
            repositoryPath()));
    std::set<std::string> paths;
    for (const auto& [path, status] : statuses)
        paths.insert(path);
    const std::string tracked = git({"ls-files", "-z"}, repositoryPath());
    for (const auto& path : componentsSeparatedByNULByte(tracked))
        if (!path.empty())
            paths.insert(std::string(path));

    const auto entries = entriesByPath(everything);
    std::set<std::string> listed;
    for (const auto& [path, entry] : entries) {
        listed.insert(path);
        SCOPED_TRACE(path);
        const auto status = statuses.find(path);
        if (status != statuses.end())
            expectEntry(*entry, status->second);
        else
            EXPECT_THAT(textOfEntry(*entry), testing::StartsWith("   "));
    }
    EXPECT_EQ(listed, paths);
}

void RVGitWorkingTreeStatesTestCase::expectEntry(const RVGitWorkingTreeEntry& entry,
                                                 const RVPorcelainStatus& status) const {
    EXPECT_EQ(textOfEntry(entry).substr(0, 2), std::string({status.left, status.right}));
    EXPECT_EQ(entry.originalFilePath(), status.originalPath);
    EXPECT_EQ(entry.isUnmergedFile(), status.isUnmerged);
    if (status.hashes.empty())
        return;
    const auto expectVersion = [](const std::shared_ptr<RVGitFileEntry>& version,
                                  const std::string& mode, const std::string& hash) {
        if (hash == RVGitNullObjectHash) {
            EXPECT_EQ(version, nullptr);
            return;
        }
        ASSERT_TRUE(version);
        EXPECT_EQ(version->objectHash(), hash);
        EXPECT_EQ(version->fileMode(), RVGitFileModeFromString(mode));
    };
    if (status.isUnmerged) {
        expectVersion(entry.unmergedBaseVersion(), status.modes[0], status.hashes[0]);
        expectVersion(entry.unmergedOursVersion(), status.modes[1], status.hashes[1]);
        expectVersion(entry.unmergedTheirsVersion(), status.modes[2], status.hashes[2]);
        EXPECT_EQ(entry.stagedVersion(), nullptr);
    } else {
        // Git reads a leading colon as magic.
        if (!status.path.starts_with(':'))
            expectVersion(entry.baseVersion(), status.modes[0], status.hashes[0]);
        // For git a file of which only the intent is known is not in the index, where it stands
        // with the hash of an empty one.
        if (status.right != 'A')
            expectVersion(entry.stagedVersion(), status.modes[1], status.hashes[1]);
    }
    // Git tells no mode of what is left over of a deleted file, and a deleted submodule keeps
    // the mode of the index here.
    const std::string& mode = status.modes.back();
    if (status.right != '?' && !status.submodule.starts_with('S')) {
        EXPECT_EQ(entry.fileMode(),
                  mode == "000000" ? RVGitFileModeNone : RVGitFileModeFromString(mode));
    }
}
