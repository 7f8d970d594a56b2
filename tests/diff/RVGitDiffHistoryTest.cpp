#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <map>
#include <random>

#include "RVGit/base/RVString.h"
#include "RVGit/diff/RVGitChangeset.h"
#include "RVGit/diff/RVGitDiff.h"
#include "RVGit/repository/RVGitRepository.h"
#include "tests/support/RVGitRepositoryTestCase.h"

namespace {

struct Counts {
    std::uint64_t added = 0;
    std::uint64_t deleted = 0;

    friend bool operator==(const Counts&, const Counts&) = default;
    friend void PrintTo(const Counts& counts, std::ostream* stream) {
        *stream << "+" << counts.added << " -" << counts.deleted;
    }
};

/// What git itself says that a commit changed: a status and maybe counts for each path, in order.
struct Change {
    std::string path;
    char status = ' ';
    /// Absent for a binary file.
    std::optional<Counts> counts;
};

// The counts of changesets and diffs against `git show --numstat`, commit by commit.
class RVGitDiffHistoryTest : public RVGitRepositoryTestCase {
protected:
    static std::vector<Change> changesOf(const std::string& output) {
        std::vector<Change> changes;
        std::size_t index = 0;
        const auto pieces = componentsSeparatedByNULByte(output);
        for (std::size_t piece = 0; piece + 1 < pieces.size(); ++piece) {
            std::string_view text = trimmedNewlines(pieces[piece]);
            if (text.starts_with(':')) {
                const char status = text[text.rfind(' ') + 1];
                piece += status == 'R' || status == 'C' ? 2 : 1;
                changes.push_back({std::string(pieces[piece]), status, std::nullopt});
                continue;
            }
            // Counts of a rename have their two paths behind them.
            if (text.ends_with('\t'))
                piece += 2;
            if (!text.starts_with('-')) {
                const std::string_view deleted = text.substr(text.find('\t') + 1);
                changes.at(index).counts =
                    Counts{static_cast<std::uint64_t>(integerValue(text)),
                           static_cast<std::uint64_t>(integerValue(deleted))};
            }
            ++index;
        }
        EXPECT_EQ(index, changes.size());
        return changes;
    }
    [[nodiscard]] std::vector<Change> changesOfCommit(const std::string& path,
                                                      const std::string& commit) const {
        return changesOf(git({"--no-pager", "-C", path, "show", "--format=", "-z", "--no-abbrev",
                              "-M", "--raw", "--numstat", commit}));
    }

    static void expectCountsOfChangeset(const std::shared_ptr<RVGitRepository>& repository,
                                        const std::string& commit,
                                        const std::vector<Change>& changes) {
        const auto changeset = RVGitChangeset::changesetByComparingRevisionWithAncestorForRevision(
            commit, {}, repository, RVOptions());
        ASSERT_TRUE(changeset);
        // By position: rows of binary files do not count, and changed types are no entries.
        std::vector<Counts> rows;
        std::vector<std::string> paths;
        for (const Change& change : changes) {
            if (change.counts)
                rows.push_back(*change.counts);
            if (change.status != 'T')
                paths.push_back(change.path);
        }
        rows.resize(std::max(rows.size(), paths.size()));
        ASSERT_EQ(changeset->entries().size(), paths.size());
        for (std::size_t index = 0; index < paths.size(); ++index) {
            const auto& entry = changeset->entries()[index];
            EXPECT_EQ(entry->filePath(), stringUsingBestEncoding(paths[index]));
            EXPECT_EQ((Counts{entry->linesAdded(), entry->linesDeleted()}), rows[index])
                << paths[index];
        }
    }

    static void expectCountsOfDiffs(const std::shared_ptr<RVGitRepository>& repository,
                                    const std::string& commit, const std::vector<Change>& changes) {
        const auto diffs = RVGitDiff::allDiffsByComparingRevisionWithAncestorForRevision(
            commit, {}, repository, RVOptions());
        ASSERT_TRUE(diffs);
        std::map<std::string, Counts> counts;
        std::map<std::string, Counts> expected;
        for (const auto& diff : *diffs) {
            Counts& own = counts[diff->filePath() ? *diff->filePath() : *diff->oldFilePath()];
            own.added += diff->linesAdded();
            own.deleted += diff->linesDeleted();
            EXPECT_EQ(diff->repository(), repository);
        }
        for (const Change& change : changes) {
            const std::string path = stringUsingBestEncoding(change.path);
            if (change.status == 'T')
                // A deletion and an addition, whose lines numstat compares with each other.
                counts.erase(path);
            else
                expected[path] = change.counts.value_or(Counts());
        }
        EXPECT_EQ(counts, expected);
    }

    void expectCountsOfHistory(const std::string& path, std::size_t mostCommits) {
        const auto openRepository = RVGitRepository::repositoryWithPath(path);
        const std::string commits =
            git({"-C", path, "rev-list", "--no-merges", "-n", std::to_string(mostCommits), "HEAD"});
        int numberOfCommits = 0;
        int numberOfChanges = 0;
        for (const std::string& commit : componentsSeparatedByString(commits, "\n")) {
            if (commit.empty())
                continue;
            SCOPED_TRACE(commit);
            const auto changes = changesOfCommit(path, commit);
            expectCountsOfChangeset(openRepository, commit, changes);
            expectCountsOfDiffs(openRepository, commit, changes);
            if (HasFailure())
                return;
            for (const Change& change : changes)
                ++numberOfChangesOfKind_[change.counts ? change.status : 'b'];
            numberOfChanges += static_cast<int>(changes.size());
            ++numberOfCommits;
        }
        EXPECT_GT(numberOfChanges, 0);
        RecordProperty("commits", numberOfCommits);
        RecordProperty("changes", numberOfChanges);
    }

    /// By status; 'b' for binary files of any.
    std::map<char, int> numberOfChangesOfKind_;
};

TEST_F(RVGitDiffHistoryTest, CountsAreThoseOfNumstat) {
    namespace fs = std::filesystem;
    std::mt19937 random(1);
    const fs::path directory = repositoryPath();
    const auto line = [&] { return "line " + std::to_string(random() % 200) + "\n"; };
    std::map<std::string, std::string> files;
    for (int commit = 0; commit < 25; ++commit) {
        for (int change = 0; change < 6; ++change) {
            const std::string name = "dir/\xC3\xA9 " + std::to_string(random() % 25);
            std::string& text = files[name];
            const auto kind = random() % 12;
            if (kind == 0 && fs::exists(directory / name)) {
                files["renamed " + std::to_string(commit)] = text + line();
                fs::rename(directory / name, directory / ("renamed " + std::to_string(commit)));
                files.erase(name);
                continue;
            }
            if (kind == 1) {
                fs::remove(directory / name);
                files.erase(name);
                continue;
            }
            if (kind == 2) {
                fs::remove(directory / name);
                fs::create_directories(directory / "dir");
                fs::create_symlink("elsewhere", directory / name);
                files.erase(name);
                continue;
            }
            if (kind == 3)
                text = std::string("\0binary", 7) + line();
            else if (kind == 4 && text.ends_with('\n'))
                text.pop_back();
            else
                for (auto lines = 1 + random() % 20; lines > 0; --lines)
                    text.insert(text.empty() ? 0 : text.find('\n', random() % text.size()) + 1,
                                line());
            if (fs::is_symlink(directory / name))
                fs::remove(directory / name);
            writeFile(repositoryPath() + "/" + name, text);
        }
        gitInRepository({"add", "-A"});
        gitInRepository({"commit", "--quiet", "--allow-empty", "-m", "Message"});
    }
    expectCountsOfHistory(repositoryPath(), 1000);
    for (const char kind : {'A', 'M', 'D', 'R', 'T', 'b'})
        EXPECT_GT(numberOfChangesOfKind_[kind], 0) << kind;
}

/// RVGIT_TEST_HISTORY names a repository whose last 3,000 commits are compared. Some minutes.
TEST_F(RVGitDiffHistoryTest, CountsOfARealHistoryAreThoseOfNumstat) {
    const char* path = std::getenv("RVGIT_TEST_HISTORY");
    if (!path)
        GTEST_SKIP() << "RVGIT_TEST_HISTORY names no repository";
    expectCountsOfHistory(path, 3000);
}

}  // namespace
