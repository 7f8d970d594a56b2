#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "RVGit/command/RVGitBinary.h"
#include "RVGit/command/RVGitCommand.h"
#include "RVGit/worktree/RVGitWorkingTreeManager.h"
#include "tests/support/RVGitRepositoryTestCase.h"

/// Base of the tests of RVGitWorkingTreeManager. How many paths one command line takes is put back
/// when a test ends.
class RVGitWorkingTreeManagerTestCase : public RVGitRepositoryTestCase {
protected:
    using Paths = std::vector<std::string>;

    ~RVGitWorkingTreeManagerTestCase() override {
        RVGitCommand::setMaximumNumberOfAllowedFilePathArguments(maximumNumberOfPaths_);
    }

    [[nodiscard]] RVGitWorkingTreeManager& manager() { return manager_; }

    /// Writes a file of the working tree.
    void write(const std::string& path, std::string_view contents) const {
        writeFile("repository/" + path, contents);
    }
    /// Reads a file of the working tree.
    [[nodiscard]] std::string read(const std::string& path) const {
        return readFile("repository/" + path);
    }
    [[nodiscard]] bool exists(const std::string& path) const {
        return fileExists("repository/" + path);
    }
    /// The bytes of a file in the index.
    [[nodiscard]] std::string staged(const std::string& path) const {
        return git({"show", ":" + path}, repositoryPath());
    }
    void commitAll() const {
        git({"add", "--all", "."}, repositoryPath());
        git({"commit", "-q", "-m", "Message"}, repositoryPath());
    }
    /// Commits the files "a" to "d", and changes "a" and "b" behind that, of which "b" is staged.
    void makeChanges() const {
        for (const char* path : {"a", "b", "c", "d"})
            write(path, "one\n");
        commitAll();
        write("a", "two\n");
        write("b", "two\n");
        git({"add", "b"}, repositoryPath());
    }
    /// "XY path" of each file that git lists as changed, sorted; untracked files are "?? path".
    [[nodiscard]] Paths status() const {
        Paths list = records(
            {"-c", "diff.renames=false", "status", "--porcelain", "-z", "--untracked-files=all"});
        // Older gits look for renames all the same, and name the old path behind the new one.
        for (std::size_t index = 0; index < list.size(); ++index)
            if (list[index].starts_with("R")) {
                list[index][0] = 'A';
                list[++index].insert(0, "D  ");
            }
        std::ranges::stable_sort(list, {}, [](const std::string& record) {
            return std::pair(record.starts_with("??"), record.substr(3));
        });
        return list;
    }
    /// The NUL-terminated records that git prints.
    [[nodiscard]] Paths records(const std::vector<std::string>& arguments) const {
        const std::string output = git(arguments, repositoryPath());
        Paths list;
        for (std::size_t start = 0; start < output.size();) {
            const std::size_t end = output.find('\0', start);
            list.push_back(output.substr(start, end - start));
            start = end + 1;
        }
        return list;
    }
    /// Records every call and answers it with success.
    [[nodiscard]] RVRecordingGit useDeafRecordingGit() const {
        RVRecordingGit recorder(scratchPath("deaf-git"), "/bin/true");
        RVGitBinary::setDefaultGitBinary(RVGitBinary::gitBinaryWithPath(recorder.path()));
        recorder.clear();
        return recorder;
    }
    /// The recorded arguments from the command word on.
    [[nodiscard]] static std::vector<Paths> commandLines(const RVRecordingGit& recorder) {
        std::vector<Paths> lines = recorder.argumentLists();
        for (Paths& line : lines)
            line.erase(line.begin(), std::find(line.begin(), line.end(), "--no-pager") + 1);
        return lines;
    }

private:
    const std::size_t maximumNumberOfPaths_ =
        RVGitCommand::maximumNumberOfAllowedFilePathArguments();
    RVGitWorkingTreeManager manager_{repository()};
};
