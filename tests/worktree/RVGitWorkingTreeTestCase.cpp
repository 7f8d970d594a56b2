#include "tests/worktree/RVGitWorkingTreeTestCase.h"

#include "RVGit/worktree/RVGitWorkingTreeHelper.h"

void RVGitWorkingTreeTestCase::stageFile(const std::string& file, std::string_view contents) const {
    writeFile("repository/" + file, contents);
    git({"--literal-pathspecs", "add", "-f", "--", file}, repositoryPath());
}

void RVGitWorkingTreeTestCase::commitIndex(const std::string& message) const {
    git({"commit", "-q", "--allow-empty", "-m", message}, repositoryPath());
}

std::string RVGitWorkingTreeTestCase::contentsForFile(const std::string& file) {
    std::string contents;
    for (int line = 0; line < 20; ++line)
        contents += "line " + std::to_string(line) + " of " + file + "\n";
    return contents;
}

void RVGitWorkingTreeTestCase::makeConflicts() const {
    for (const char* file : {"both", "ours-deleted", "theirs-deleted", "renamed"})
        stageFile(file, contentsForFile(file));
    commitIndex("Base");
    git({"branch", "theirs"}, repositoryPath());

    for (const char* file : {"both", "theirs-deleted"})
        stageFile(file, contentsForFile(file) + "ours\n");
    stageFile("added", "ours\n");
    git({"rm", "-q", "ours-deleted"}, repositoryPath());
    git({"mv", "renamed", "renamed-by-us"}, repositoryPath());
    commitIndex("Ours");

    git({"checkout", "-q", "theirs"}, repositoryPath());
    for (const char* file : {"both", "ours-deleted"})
        stageFile(file, contentsForFile(file) + "theirs\n");
    stageFile("added", "theirs\n");
    git({"rm", "-q", "theirs-deleted"}, repositoryPath());
    git({"mv", "renamed", "renamed-by-them"}, repositoryPath());
    commitIndex("Theirs");

    git({"checkout", "-q", "main"}, repositoryPath());
    EXPECT_EQ(runGit({"merge", "-q", "theirs"}, repositoryPath()).exitCode, 1);
}

std::string RVGitWorkingTreeTestCase::addSubmodule(const std::string& path) const {
    const std::string origin = initRepository("origin of " + path);
    commitFile(origin, "inside", "1", "Inside");
    git({"-c", "protocol.file.allow=always", "submodule", "--quiet", "add", origin, path},
        repositoryPath());
    commitIndex("Submodule");
    return scratchPath("repository/" + path);
}

RVGitWorkingTreeEntry::Entries RVGitWorkingTreeTestCase::entries(
    const std::optional<RVOptions>& options, const std::optional<std::string>& filePath) const {
    std::optional<RVError> error;
    const auto loaded = RVGitWorkingTreeEntry::workingTreeEntriesForFilePath(filePath, repository(),
                                                                             options, &error);
    EXPECT_TRUE(loaded.has_value());
    EXPECT_FALSE(error.has_value()) << error->localizedFailureReason().value_or("");
    return loaded.value_or(RVGitWorkingTreeEntry::Entries());
}

RVGitWorkingTreeTestCase::EntriesByPath RVGitWorkingTreeTestCase::entriesByPath(
    const std::optional<RVOptions>& options) const {
    EntriesByPath byPath;
    for (const auto& entry : entries(options))
        EXPECT_TRUE(byPath.emplace(entry->filePath(), entry).second) << entry->filePath();
    return byPath;
}

std::shared_ptr<RVGitWorkingTreeEntry> RVGitWorkingTreeTestCase::entryAt(
    const std::string& filePath, const std::optional<RVOptions>& options) const {
    if (const auto entry = entriesByPath(options)[filePath])
        return entry;
    ADD_FAILURE() << "no entry of " << filePath;
    return newEntry(RVGitFileStatusNone, RVGitFileStatusNone, filePath);
}

std::shared_ptr<RVGitWorkingTreeEntry> RVGitWorkingTreeTestCase::newEntry(
    RVGitFileStatus leftStatus, RVGitFileStatus rightStatus, const std::string& filePath) const {
    return std::make_shared<Entry>(repository(), filePath, RVGitFileModeRegular, leftStatus,
                                   rightStatus);
}

std::string RVGitWorkingTreeTestCase::textOfEntry(const RVGitWorkingTreeEntry& entry) {
    const auto letter = [](RVGitFileStatus status) {
        return RVGitWorkingTreeHelper::shortStringRepresentationForFileStatus(status).value_or("-");
    };
    const bool isUnmerged = entry.isUnmergedFile();
    const auto originalPath = entry.originalFilePath();
    return letter(isUnmerged ? entry.unmergedOursStatus() : entry.stagedStatus()) +
           letter(isUnmerged ? entry.unmergedTheirsStatus() : entry.currentStatus()) + " " +
           RVGitFileEntry::stringRepresentationForFileMode(entry.fileMode()) + " " +
           entry.filePath() + (originalPath ? " <- " + *originalPath : "");
}

std::vector<std::string> RVGitWorkingTreeTestCase::listing(
    const std::optional<RVOptions>& options, const std::optional<std::string>& filePath) const {
    std::vector<std::string> texts;
    for (const auto& entry : entries(options, filePath))
        texts.push_back(textOfEntry(*entry));
    return texts;
}
