#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "RVGit/base/RVTypes.h"
#include "RVGit/worktree/RVGitIndexEntry.h"
#include "RVGit/worktree/RVGitWorkingTreeEntry.h"
#include "RVGit/worktree/RVGitWorkingTreeOptions.h"
#include "tests/support/RVGitRepositoryTestCase.h"
#include "tests/support/RVPorcelainStatus.h"
#include "tests/worktree/RVGitWorkingTreeModel.h"

namespace {

using Model = RVGitWorkingTreeModel;
using Files = Model::Files;

/// What a listing says of one path, in the letters of git's short format.
struct Listed {
    std::string letters;
    std::string originalPath;

    bool operator==(const Listed&) const = default;
};
using Listing = std::map<std::string, Listed>;

void PrintTo(const Listed& listed, std::ostream* stream) {
    *stream << '"' << listed.letters << "\" " << listed.originalPath;
}

/// Random operations, after each of which the files, the index and the listing are compared with
/// the model, and the listing with what git prints in another format.
class RVGitWorkingTreeSequenceSlowTest : public RVGitTestCase,
                                         public testing::WithParamInterface<unsigned> {
protected:
    void runSequence(unsigned seed);

    /// How often each operation has been run and checked.
    std::map<std::string, int> numberOfRuns_;

private:
    void checkFiles(const Model& model) const;
    void checkIndex(const Model& model);
    void checkListing(const Model& model) const;
    [[nodiscard]] static Listing listingOfModel(const Model& model);
    [[nodiscard]] Listing listingOfGit() const;

    std::string directory_;
    bool detectsRenames_ = false;
    /// Of the index, by path, as git tells them.
    std::map<std::string, std::string> hashes_;
};

void RVGitWorkingTreeSequenceSlowTest::checkFiles(const Model& model) const {
    Files found;
    for (auto entry = std::filesystem::recursive_directory_iterator(directory_);
         entry != std::filesystem::recursive_directory_iterator(); ++entry) {
        const std::string path = entry->path().lexically_relative(directory_);
        if (path == ".git")
            entry.disable_recursion_pending();
        else if (!entry->is_directory())
            found.emplace(path, readFile(entry->path().string()));
    }
    EXPECT_EQ(found, model.files());
}

void RVGitWorkingTreeSequenceSlowTest::checkIndex(const Model& model) {
    const std::string output = git({"ls-files", "--stage", "-z"}, directory_);
    std::vector<std::string> paths;
    std::string hashes;
    hashes_.clear();
    for (std::size_t start = 0; start < output.size();) {
        const std::size_t tab = output.find('\t', start);
        const std::size_t end = output.find('\0', start);
        paths.push_back(output.substr(tab + 1, end - tab - 1));
        hashes_[paths.back()] = output.substr(start + 7, 40);
        hashes += hashes_[paths.back()] + "\n";
        start = end + 1;
    }
    const std::string blobs = git({"cat-file", "--batch"}, directory_, hashes);
    Files found;
    std::size_t start = 0;
    for (const std::string& path : paths) {
        const std::size_t size = std::stoul(blobs.substr(blobs.find("blob ", start) + 5));
        start = blobs.find('\n', start) + 1;
        found.emplace(path, blobs.substr(start, size));
        start += size + 1;
    }
    EXPECT_EQ(found, model.index());
}

Listing RVGitWorkingTreeSequenceSlowTest::listingOfModel(const Model& model) {
    Listing listing;
    const auto change = [](const Files& before, const Files& after, const std::string& path) {
        if (!before.contains(path))
            return after.contains(path) ? 'A' : ' ';
        if (!after.contains(path))
            return 'D';
        return before.at(path) == after.at(path) ? ' ' : 'M';
    };
    for (const std::string& path : model.allPaths()) {
        std::string letters = {change(model.head(), model.index(), path),
                               change(model.index(), model.files(), path)};
        // A new file is not an added one before git has been told of it.
        if (letters[1] == 'A')
            letters = letters[0] == ' ' ? "??" : "D?";
        if (letters != "  ")
            listing[path] = {letters, ""};
    }
    return listing;
}

/// Read from another of git's formats than the library reads.
Listing RVGitWorkingTreeSequenceSlowTest::listingOfGit() const {
    std::vector<std::string> arguments = {"status", "--porcelain=v2", "-z"};
    if (!detectsRenames_)
        arguments.push_back("--untracked-files=all");
    Listing listing;
    for (const auto& [path, status] : porcelainStatusesByPath(git(arguments, directory_)))
        listing[path] = {{status.left, status.right}, status.originalPath.value_or("")};
    return listing;
}

void RVGitWorkingTreeSequenceSlowTest::checkListing(const Model& model) const {
    std::optional<RVOptions> options;
    if (!detectsRenames_)
        options = {{RVGitWorkingTreeOptionUntrackedFilesMode, RVGitUntrackedFilesModeAll},
                   {RVGitWorkingTreeOptionIncludeUnchangedFiles, true}};
    std::optional<RVError> error;
    const auto entries = RVGitWorkingTreeEntry::allWorkingTreeEntriesForRepository(
        model.repository(), options, &error);
    ASSERT_TRUE(entries);
    EXPECT_FALSE(error);
    Listing listing;
    std::set<std::string> paths;
    for (const auto& entry : *entries) {
        const std::string& path = entry->filePath();
        EXPECT_TRUE(paths.insert(path).second) << path << " is listed twice";
        const std::string letters =
            RVGitShortStringForFileStatus(entry->stagedStatus()).value_or("") +
            RVGitShortStringForFileStatus(entry->currentStatus()).value_or("");
        if (letters != "  ")
            listing[path] = {letters, entry->originalFilePath().value_or("")};
        if (detectsRenames_)
            continue;
        const auto version = entry->stagedVersion();
        ASSERT_EQ(version != nullptr, model.isTracked(path)) << path;
        if (version) {
            EXPECT_EQ(version->objectHash(), hashes_.at(path)) << path;
        }
    }
    EXPECT_EQ(listing, listingOfGit());
    if (detectsRenames_)
        return;
    EXPECT_EQ(listing, listingOfModel(model));
    for (const auto& [path, contents] : model.index())
        EXPECT_TRUE(paths.contains(path)) << path;
}

struct Operation {
    const char* name;
    bool (Model::*run)();
    /// How often it is chosen, beside the others.
    unsigned weight;
};

constexpr Operation operations[] = {
    {"create", &Model::createFile, 2},   {"edit", &Model::editFile, 3},
    {"delete", &Model::deleteFile, 1},   {"stage", &Model::stageFile, 1},
    {"stage all", &Model::stageAll, 1},  {"stage lines", &Model::stageLines, 3},
    {"unstage", &Model::unstageFile, 1}, {"unstage lines", &Model::unstageLines, 3},
    {"discard", &Model::discardFile, 1}, {"remove", &Model::removeFile, 1},
    {"untrack", &Model::untrackFile, 1}, {"move", &Model::moveFile, 1},
    {"stash", &Model::saveStash, 1},     {"pop", &Model::popStash, 8},
    {"commit", &Model::commit, 2},
};

const Operation& anyOperation(Model& model) {
    unsigned total = 0;
    for (const Operation& operation : operations)
        total += operation.weight;
    unsigned choice = model.below(total);
    const Operation* chosen = operations;
    while (choice >= chosen->weight)
        choice -= chosen++->weight;
    return *chosen;
}

void RVGitWorkingTreeSequenceSlowTest::runSequence(unsigned seed) {
    constexpr int numberOfSteps = 12;
    directory_ = initRepository("sequence");
    detectsRenames_ = seed % 2 == 0;
    git({"config", "status.renames", detectsRenames_ ? "true" : "false"}, directory_);
    Model model(directory_, seed);
    // Some start on an unborn branch.
    if (model.below(6) != 0) {
        while (model.files().size() < 4)
            model.createFile();
        model.stageAll();
        model.commit();
    }
    std::string trace = "seed " + std::to_string(seed) + ":";
    for (int step = 0; step < numberOfSteps && !HasFailure();) {
        const Operation& operation = anyOperation(model);
        if (!(model.*operation.run)())
            continue;
        ++step;
        ++numberOfRuns_[operation.name];
        trace += std::string(" ") + operation.name + ",";
        SCOPED_TRACE(trace);
        checkFiles(model);
        checkIndex(model);
        checkListing(model);
    }
    std::filesystem::remove_all(directory_);
}

constexpr unsigned sequencesOfATest = 50;

TEST_P(RVGitWorkingTreeSequenceSlowTest, EachStepLeavesWhatItShould) {
    for (unsigned number = 0; number < sequencesOfATest && !HasFailure(); ++number)
        runSequence(GetParam() * sequencesOfATest + number);
    for (const Operation& operation : operations)
        EXPECT_GE(numberOfRuns_[operation.name], 1) << operation.name << " has not been tried";
}

INSTANTIATE_TEST_SUITE_P(FiveHundredSequences, RVGitWorkingTreeSequenceSlowTest,
                         testing::Range(0U, 10U));

}  // namespace
