#include "tests/merge/RVGitMergeTestCase.h"

#include <sstream>
#include <utility>

#include "RVGit/repository/RVGitRepository.h"
#include "tests/support/RVGitRequirement.h"

namespace {

struct Change {
    std::string file;
    /// Empty: deleted.
    std::string contents;
};

struct Commit {
    std::string branch;
    std::string subject;
    std::vector<Change> changes;
};

const std::vector<Commit>& history() {
    static const auto& commits = *new std::vector<Commit>{
        {"main", "Base", {{"file", "base\n"}, {"other", "other\n"}}},
        {"topic", "One", {{"one", "one\n"}}},
        {"topic", "Two", {{"file", "two\n"}}},
        {"topic", "Three", {{"three", "three\n"}}},
        {"topic", "Four", {{"file", "four\n"}}},
        {"clean", "Clean", {{"clean", "clean\n"}}},
        {"same", "Same", {{"file", "ours\n"}}},
        {"same", "After", {{"after", "after\n"}}},
        {"third", "Third", {{"file", "third\n"}}},
        {"later", "Early", {{"file", "early\n"}}},
        {"later", "Middle", {{"file", "middle\n"}}},
        {"later", "Late", {{"late", "late\n"}}},
        {"gone", "Gone", {{"file", ""}}},
        {"main", "Ours", {{"file", "ours\n"}}},
    };
    return commits;
}

/// For `git fast-import`; the number of a commit is its mark.
std::string importStream() {
    std::ostringstream stream;
    std::string lastBranch;
    int mark = 0;
    for (const Commit& commit : history()) {
        ++mark;
        stream << "commit refs/heads/" << commit.branch << "\nmark :" << mark
               << "\nauthor An Author <author@example.org> " << 1577934245 + mark
               << " +0000\ncommitter Marie Curie <marie@example.org> " << 1577934245 + mark
               << " +0000\ndata " << commit.subject.size() + 1 << "\n"
               << commit.subject << "\n\n";
        if (mark > 1)
            stream << "from :" << (commit.branch == lastBranch ? mark - 1 : 1) << "\n";
        for (const Change& change : commit.changes) {
            if (change.contents.empty())
                stream << "D " << change.file << "\n";
            else
                stream << "M 100644 inline " << change.file << "\ndata " << change.contents.size()
                       << "\n"
                       << change.contents << "\n";
        }
        stream << "reset refs/tags/" << commit.subject << "\nfrom :" << mark << "\n\n";
        lastBranch = commit.branch;
    }
    return stream.str();
}

}  // namespace

RVGitMergeTestCase::RVGitMergeTestCase() {
    const std::string editor =
        writeFile("no-editor", "#!/bin/sh\necho 'an editor was opened' >&2\nexit 1\n", 0755);
    git({"config", "--global", "core.editor", editor});
    git({"config", "--global", "sequence.editor", editor});
    makePlace(RVGitMergePlace::Repository);
}

void RVGitMergeTestCase::importHistory(const std::string& repositoryPath) const {
    git({"fast-import", "--quiet"}, repositoryPath, importStream());
}

void RVGitMergeTestCase::makePlace(RVGitMergePlace place) {
    place_ = place;
    const std::string name = "place " + std::to_string(++numberOfPlaces_);
    path_ = scratchPath(name);
    switch (place) {
        case RVGitMergePlace::Repository:
        case RVGitMergePlace::DetachedHead:
            importHistory(initRepository(name));
            gitHere({"reset", "-q", "--hard", "main"});
            if (place == RVGitMergePlace::DetachedHead)
                gitHere({"checkout", "-q", "--detach", "main"});
            break;
        case RVGitMergePlace::LinkedWorktree:
        case RVGitMergePlace::WorktreeOfBareRepository: {
            const std::string mainPath = place == RVGitMergePlace::LinkedWorktree
                                             ? initRepository(name + " main")
                                             : initBareRepository(name + " main");
            git({"symbolic-ref", "HEAD", "refs/heads/unborn"}, mainPath);
            git({"config", "core.logAllRefUpdates", "true"}, mainPath);
            importHistory(mainPath);
            git({"worktree", "add", path_, "main"}, mainPath);
            break;
        }
        case RVGitMergePlace::Submodule: {
            const std::string origin = initBareRepository(name + " origin");
            importHistory(origin);
            const std::string super = initRepository(name + " super");
            git({"-c", "protocol.file.allow=always", "submodule", "add", "-q", origin, "sub"},
                super);
            path_ = super + "/sub";
            for (const char* branch : {"topic", "clean", "same", "third", "later", "gone"})
                gitHere({"branch", "-q", branch, std::string("origin/") + branch});
            break;
        }
    }
    manager_ =
        RVGitMergeManager::mergeManagerWithRepository(RVGitRepository::repositoryWithPath(path_));
}

std::string RVGitMergeTestCase::gitHere(const std::vector<std::string>& arguments) const {
    return gitLine(arguments, path_);
}

void RVGitMergeTestCase::stopGit(const std::vector<std::string>& arguments) const {
    const auto result = runGit(arguments, path_);
    EXPECT_EQ(result.standardError.find("an editor was opened"), std::string::npos);
    // An "edit" and a "break" stop without a failure.
    EXPECT_LT(result.exitCode, 129) << result.standardError;
}

void RVGitMergeTestCase::stopRebaseByApplying() const {
    if (rebasesByMerging())
        stopGit({"rebase", "--apply", "main"});
    else
        stopGit({"rebase", "main"});
}

bool RVGitMergeTestCase::rebasesByMerging() {
    return isTestedGitAtLeast("2.26");
}

testing::Matcher<const std::string&> RVGitMergeTestCase::isTitleOfMerge(const std::string& branch) {
    const std::string title = "Merge branch '" + branch + "'";
    return testing::Eq(isTestedGitAtLeast("2.34") ? title : title + " into main");
}

std::string RVGitMergeTestCase::hash(const std::string& revision) const {
    return gitHere({"rev-parse", "--verify", revision});
}

void RVGitMergeTestCase::checkOut(const std::string& branch) const {
    if (place_ == RVGitMergePlace::DetachedHead)
        gitHere({"checkout", "-q", "--detach", branch});
    else
        gitHere({"checkout", "-q", branch});
}

void RVGitMergeTestCase::write(const std::string& name, std::string_view contents) const {
    writeFile(path_ + "/" + name, contents);
}

std::string RVGitMergeTestCase::read(const std::string& name) const {
    return readFile(path_ + "/" + name);
}

std::vector<std::string> RVGitMergeTestCase::subjects(std::size_t count) const {
    std::istringstream lines(
        gitHere({"log", "--format=%s", "-" + std::to_string(count), "--topo-order"}));
    std::vector<std::string> subjects;
    for (std::string line; std::getline(lines, line);)
        subjects.push_back(line);
    return subjects;
}

std::string RVGitMergeTestCase::message() const {
    return gitHere({"log", "-1", "--format=%B"});
}

std::optional<std::string> RVGitMergeTestCase::refName(const std::string& branch) const {
    if (place_ == RVGitMergePlace::DetachedHead)
        return std::nullopt;
    return "refs/heads/" + branch;
}

void RVGitMergeTestCase::setSequence(const std::string& list) {
    std::string script = "#!/bin/sh\ncat > \"$1\" << 'END'\n";
    for (std::size_t position = 0; position < list.size();) {
        if (list[position] != '%') {
            script += list[position++];
            continue;
        }
        const auto end = list.find_first_of(" \n", position);
        script += hash(list.substr(position + 1, end - position - 1));
        position = end == list.npos ? list.size() : end;
    }
    setEnvironmentVariable("GIT_SEQUENCE_EDITOR",
                           "'" + writeFile("sequence", script + "\nEND\n", 0755) + "'");
}
