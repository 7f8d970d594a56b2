#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <set>

#include "RVGit/base/RVString.h"
#include "RVGit/command/RVGitError.h"
#include "RVGit/merge/RVGitSequenceInstruction.h"
#include "tests/merge/RVGitRewritingTestCase.h"
#include "tests/support/RVGitRequirement.h"
#include "tests/support/RVTestRounds.h"

// Random gestures on random histories, held against a small model that knows what each gesture
// means, and nothing of how git is brought to do it.

namespace {

using Commits = std::vector<RVTestCommit>;
using Indexes = std::vector<std::size_t>;

bool isSpace(char c) {
    return c == ' ' || (c >= '\t' && c <= '\r');
}

/// As git cleans up a message: no blanks at the ends of lines, no blank lines at its ends nor two
/// together; without comments where they do not count.
std::string cleanedMessage(const std::string& message, bool stripsComments) {
    std::string cleaned;
    bool hasGap = false;
    for (std::string line : componentsSeparatedByString(message, "\n")) {
        while (!line.empty() && isSpace(line.back()))
            line.pop_back();
        if (stripsComments && line.starts_with("#"))
            continue;
        if (line.empty()) {
            hasGap = !cleaned.empty();
            continue;
        }
        cleaned += (hasGap ? "\n" : "") + line + "\n";
        hasGap = false;
    }
    return cleaned;
}

/// As git takes over the message of a commit that it makes again: without the blank lines at its
/// start. While it rewords, it cleans up the messages of the commits that follow as well.
std::string pickedMessage(const std::string& message, bool rewords) {
    if (rewords)
        return cleanedMessage(message, false);
    const auto text = std::ranges::find_if_not(message, isSpace);
    if (text == message.end())
        return "";
    const auto lineEnd = std::find(std::make_reverse_iterator(text), message.rend(), '\n');
    return {lineEnd.base(), message.end()};
}

enum class Kind {
    Delete,
    MoveAbove,
    MoveBelow,
    Squash,
    SquashInto,
    Fixup,
    FixupInto,
    Reword,
    EditAmending,
    EditApart,
    Count
};

/// Indexes count from the oldest commit on.
struct Gesture {
    Kind kind = Kind::Delete;
    /// Ascending.
    Indexes chosen;
    std::size_t target = 0;
    std::string message;

    [[nodiscard]] bool hasTarget() const {
        return kind == Kind::MoveAbove || kind == Kind::MoveBelow || kind == Kind::SquashInto ||
               kind == Kind::FixupInto;
    }
    [[nodiscard]] bool chooses(std::size_t index) const {
        return std::ranges::find(chosen, index) != chosen.end();
    }
    [[nodiscard]] std::string description() const {
        std::string text = "gesture " + std::to_string(static_cast<int>(kind)) + " of";
        for (const std::size_t index : chosen)
            text += " " + std::to_string(index);
        return text + (hasTarget() ? " with target " + std::to_string(target) : "");
    }
};

/// One commit of many: the first one's message, or all of them.
RVTestCommit combined(const Commits& commits, bool keepsMessages) {
    RVTestCommit result = commits.front();
    std::string messages;
    for (const RVTestCommit& commit : commits) {
        result.files.insert(commit.files.begin(), commit.files.end());
        messages += commit.message + "\n\n";
    }
    if (keepsMessages)
        result.message = cleanedMessage(messages, true);
    return result;
}

/// The rounds are spread over as many tests, which run side by side.
constexpr unsigned numberOfParts = 6;

class RVGitMergeManagerRewritingModelTest : public RVGitRewritingTestCase,
                                            public testing::WithParamInterface<unsigned> {
protected:
    [[nodiscard]] std::size_t below(std::size_t limit) { return random_() % limit; }
    [[nodiscard]] bool oneIn(std::size_t count) { return below(count) == 0; }

    [[nodiscard]] std::string randomMessage() {
        static const std::string pieces[] = {"Subject",      "it's \"quoted\"",
                                             "# no comment", "#",
                                             "$HOME `x` \\", "äöü 日本",
                                             "\r\n",         "\n",
                                             "\n",           "\n\n",
                                             "  ",           "\t",
                                             "x!",           "; x",
                                             "\n# y\n",      "Signed-off-by: A <a@b>",
                                             "-----",        ">8 cut",
                                             "..."};
        if (oneIn(25))
            return "";
        std::string message = oneIn(10) ? "" : "Message " + std::to_string(below(1000));
        for (auto count = below(8); count > 0; --count)
            message += pieces[below(std::size(pieces))];
        if (oneIn(40))
            for (int line = 0; line < 1000; ++line)
                message += "\n" + std::string(100, static_cast<char>('a' + line % 26));
        return message + (oneIn(4) ? "" : "\n");
    }
    /// Commits with a file each: nothing conflicts, in whatever order.
    [[nodiscard]] Commits randomCommits() {
        Commits commits(2 + below(oneIn(5) ? 29 : 8));
        for (std::size_t index = 0; index < commits.size(); ++index) {
            const std::string name = std::to_string(index);
            commits[index] = {randomMessage(), {{"file " + name, "contents " + name + "\n"}}};
        }
        return commits;
    }
    [[nodiscard]] Gesture randomGesture(std::size_t count) {
        Gesture gesture;
        gesture.kind = static_cast<Kind>(below(static_cast<std::size_t>(Kind::Count)));
        gesture.message = randomMessage();
        gesture.target = below(count);
        const bool choosesOne = gesture.kind == Kind::Reword ||
                                gesture.kind == Kind::EditAmending ||
                                gesture.kind == Kind::EditApart;
        const auto wanted = choosesOne ? 1 : 1 + below(std::min<std::size_t>(count, 4));
        while (gesture.chosen.size() < wanted) {
            const std::size_t index = below(count);
            if (!gesture.chooses(index))
                gesture.chosen.push_back(index);
        }
        std::ranges::sort(gesture.chosen);
        return gesture;
    }

    /// The history behind the gesture; absent where git must stop, since a message is empty.
    [[nodiscard]] static std::optional<Commits> model(const Commits& commits,
                                                      const Gesture& gesture) {
        auto result = listAfter(commits, gesture);
        if (!result)
            return std::nullopt;
        // What stands as it stood, on what it stood on, is not made again.
        std::size_t index = 0;
        while (index < result->size() && index < commits.size() &&
               (*result)[index] == commits[index])
            ++index;
        if (gesture.kind == Kind::Reword)
            index = gesture.chosen.front();
        for (; index < result->size(); ++index)
            (*result)[index].message =
                pickedMessage((*result)[index].message, gesture.kind == Kind::Reword);
        return result;
    }

    /// The same, messages being taken over as they are.
    [[nodiscard]] static std::optional<Commits> listAfter(const Commits& commits,
                                                          const Gesture& gesture) {
        Commits chosen;
        Commits others;
        std::optional<std::size_t> targetPosition;
        for (std::size_t index = 0; index < commits.size(); ++index) {
            if (!gesture.chooses(index) && index == gesture.target)
                targetPosition = others.size();
            (gesture.chooses(index) ? chosen : others).push_back(commits[index]);
        }
        // The first commit that becomes a step.
        const std::size_t start = gesture.hasTarget()
                                      ? std::min(gesture.target, gesture.chosen.front())
                                      : gesture.chosen.front();
        const auto insertAt = [&](std::size_t position, const Commits& inserted) {
            others.insert(
                others.begin() + static_cast<std::ptrdiff_t>(std::min(position, others.size())),
                inserted.begin(), inserted.end());
            return others;
        };
        switch (gesture.kind) {
            case Kind::Delete:
                return others;
            case Kind::MoveAbove:
                return insertAt(targetPosition.value_or(start) + 1, chosen);
            case Kind::MoveBelow:
                return insertAt(targetPosition.value_or(start), chosen);
            case Kind::Squash:
            case Kind::Fixup: {
                const RVTestCommit one = combined(chosen, gesture.kind == Kind::Squash);
                if (gesture.kind == Kind::Squash && one.message.empty())
                    return std::nullopt;
                return insertAt(start, {one});
            }
            case Kind::SquashInto:
            case Kind::FixupInto: {
                chosen.insert(chosen.begin(), commits[gesture.target]);
                const RVTestCommit one = combined(chosen, gesture.kind == Kind::SquashInto);
                if (gesture.kind == Kind::SquashInto && one.message.empty())
                    return std::nullopt;
                others[*targetPosition] = one;
                return others;
            }
            case Kind::Reword: {
                Commits result = commits;
                result[start].message = cleanedMessage(gesture.message, false);
                if (result[start].message.empty())
                    return std::nullopt;
                return result;
            }
            case Kind::EditAmending:
            case Kind::EditApart: {
                Commits result = commits;
                result[start].message = "Edited\n";
                result[start].files["more"] = "more\n";
                return result;
            }
            case Kind::Count:
                break;
        }
        return std::nullopt;
    }

    [[nodiscard]] bool perform(const Gesture& gesture, const std::vector<std::string>& hashes,
                               RVErrorPlace error) {
        std::vector<std::string> chosen;
        for (auto index = gesture.chosen.rbegin(); index != gesture.chosen.rend(); ++index)
            chosen.push_back(hashes[*index]);
        const std::string& target = hashes[gesture.target];
        switch (gesture.kind) {
            case Kind::Delete:
                return manager().deleteRevisions(chosen, error);
            case Kind::MoveAbove:
                return manager().moveRevisionsAboveRevision(chosen, target, error);
            case Kind::MoveBelow:
                return manager().moveRevisionsBelowRevision(chosen, target, error);
            case Kind::Squash:
                return manager().squashRevisions(chosen, error);
            case Kind::SquashInto:
                return manager().squashRevisions(chosen, target, error);
            case Kind::Fixup:
                return manager().fixupRevisions(chosen, error);
            case Kind::FixupInto:
                return manager().fixupRevisions(chosen, target, error);
            case Kind::Reword:
                return manager().setCommitMessage(gesture.message, chosen.front(), error);
            case Kind::EditAmending:
            case Kind::EditApart: {
                const bool amends = gesture.kind == Kind::EditAmending;
                if (!manager().editRevision(chosen.front(), amends, error))
                    return false;
                writeFile("repository/more", "more\n");
                gitInRepository({"add", "-A"});
                const bool isRoot = gesture.chosen.front() == 0;
                gitInRepository(
                    amends || isRoot
                        ? std::vector<std::string>{"commit", "-q", "--amend", "-m", "Edited"}
                        : std::vector<std::string>{"commit", "-q", "-m", "Edited"});
                return manager().continueRebase(error);
            }
            case Kind::Count:
                break;
        }
        return false;
    }
    /// Whether the gesture is one that does nothing, by what is said of it.
    [[nodiscard]] static bool failsSilently(const Gesture& gesture) {
        if (gesture.kind == Kind::Squash || gesture.kind == Kind::Fixup)
            return gesture.chosen.size() < 2;
        if (gesture.kind == Kind::SquashInto || gesture.kind == Kind::FixupInto)
            return gesture.chooses(gesture.target);
        return false;
    }

    std::mt19937 random_{GetParam() + 20200102};
};

TEST_P(RVGitMergeManagerRewritingModelTest, GitDoesWhatTheGestureMeans) {
    RVGIT_TEST_NEEDS_GIT("2.31", "it cleans up the messages of steps that need no editor");
    const int rounds = (numberOfTestRounds(60) + static_cast<int>(numberOfParts) - 1) /
                       static_cast<int>(numberOfParts);
    for (int round = 0; round < rounds; ++round) {
        const Commits commits = randomCommits();
        const Gesture gesture = randomGesture(commits.size());
        SCOPED_TRACE("round " + std::to_string(round) + ": " + std::to_string(commits.size()) +
                     " commits, " + gesture.description() + ", message " +
                     testing::PrintToString(gesture.message.substr(0, 200)));
        const auto hashes = makeHistory(commits);
        const RVRepositorySnapshot before(repositoryPath());
        std::optional<RVError> error;
        const bool done = perform(gesture, hashes, &error);

        if (failsSilently(gesture)) {
            ASSERT_FALSE(done);
            ASSERT_EQ(error, std::nullopt);
            ASSERT_EQ(RVRepositorySnapshot(repositoryPath()).differencesFrom(before), "");
            continue;
        }
        auto expected = model(commits, gesture);
        if (!expected) {
            ASSERT_FALSE(done);
            ASSERT_TRUE(manager().abortRebase());
            ASSERT_EQ(RVRepositorySnapshot(repositoryPath()).differencesFrom(before), "");
            continue;
        }
        // Git leaves no branch without any commit.
        if (expected->empty())
            expected->emplace_back();
        ASSERT_TRUE(done)
            << (error ? error->userInfoString(RVGitCommandErrorOutputErrorKey).value_or("no output")
                      : "no error");
        ASSERT_EQ(manager().currentMergeMode(), RVGitMergeModeNone);
        ASSERT_EQ(gitInRepository({"status", "--porcelain"}), "");
        const auto result = history();
        makeHistory(*expected);
        const auto wanted = history();
        ASSERT_EQ(result.size(), wanted.size());
        for (std::size_t index = 0; index < wanted.size(); ++index) {
            ASSERT_TRUE(result[index].message == wanted[index].message)
                << index << ": " << testing::PrintToString(result[index].message.substr(0, 500))
                << "\ninstead of " << testing::PrintToString(wanted[index].message.substr(0, 500));
            ASSERT_EQ(result[index].tree, wanted[index].tree) << index;
        }
    }
}

/// Most commits write a file that the others write as well, so that most gestures conflict.
TEST_P(RVGitMergeManagerRewritingModelTest, AConflictIsResolvedOrAborted) {
    const int rounds = (numberOfTestRounds(30) + static_cast<int>(numberOfParts) - 1) /
                       static_cast<int>(numberOfParts);
    std::size_t numberOfStops = 0;
    for (int round = 0; round < rounds; ++round) {
        Commits commits(2 + below(7));
        for (std::size_t index = 0; index < commits.size(); ++index) {
            const std::string name = std::to_string(index);
            commits[index] = {"Message " + name + "\n", {{"file " + name, name + "\n"}}};
            if (!oneIn(4))
                commits[index].files["shared"] = "written by " + name + "\n";
        }
        Gesture gesture = randomGesture(commits.size());
        gesture.message = "Reworded\n";
        // An edit conflicts with nothing here.
        if (gesture.kind == Kind::EditAmending || gesture.kind == Kind::EditApart)
            gesture.kind = Kind::Delete;
        SCOPED_TRACE("round " + std::to_string(round) + ": " + std::to_string(commits.size()) +
                     " commits, " + gesture.description());
        const auto hashes = makeHistory(commits);
        const RVRepositorySnapshot before(repositoryPath());
        std::optional<RVError> error;
        if (perform(gesture, hashes, &error)) {
            ASSERT_EQ(manager().currentMergeMode(), RVGitMergeModeNone);
            continue;
        }
        if (!error || gesture.chosen.size() == commits.size()) {
            if (manager().currentMergeMode() != RVGitMergeModeNone) {
                ASSERT_TRUE(manager().abortRebase());
            }
            ASSERT_EQ(RVRepositorySnapshot(repositoryPath()).differencesFrom(before), "");
            continue;
        }
        ++numberOfStops;
        ASSERT_EQ(error->code(), RVGitRebaseConflictsError);
        ASSERT_TRUE(manager().currentMergeMode() == RVGitMergeModeRebase ||
                    manager().currentMergeMode() == RVGitMergeModeEditing);
        ASSERT_GT(manager().nextSequenceStep(), 0U);
        ASSERT_LE(manager().nextSequenceStep(), manager().lastSequenceStep());
        // While commits are combined, it is the one that is made of them.
        if (manager().currentMergeMode() == RVGitMergeModeRebase) {
            ASSERT_THAT(hashes, testing::Contains(manager().nextSequenceRevision().value_or("")));
        }
        ASSERT_EQ(manager().originalRefName(), "refs/heads/main");
        if (oneIn(2)) {
            ASSERT_TRUE(manager().abortRebase());
            ASSERT_EQ(RVRepositorySnapshot(repositoryPath()).differencesFrom(before), "");
            continue;
        }
        for (std::size_t step = 0; manager().currentMergeMode() != RVGitMergeModeNone; ++step) {
            ASSERT_LT(step, commits.size());
            writeFile("repository/shared", "resolved " + std::to_string(step) + "\n");
            ASSERT_TRUE(manager().resolveUnmergedFileByAdding("shared"));
            error.reset();
            if (!manager().continueRebase(&error)) {
                ASSERT_TRUE(error);
                ASSERT_EQ(error->code(), RVGitRebaseConflictsError);
            }
        }
        // The files of the commits that stay are there, and no others.
        const auto expected = model(commits, gesture);
        ASSERT_TRUE(expected);
        // Where the very first step conflicts, the empty commit on which git begins a history
        // stays.
        const std::string root = gitInRepository({"rev-list", "--max-parents=0", "HEAD"});
        const bool hasEmptyRoot = gitInRepository({"ls-tree", root}).empty();
        ASSERT_EQ(gitInRepository({"rev-list", "--count", "HEAD"}),
                  std::to_string(expected->size() + (hasEmptyRoot ? 1 : 0)));
        std::set<std::string> files;
        for (const RVTestCommit& commit : *expected)
            for (const auto& [path, contents] : commit.files)
                files.insert(path);
        const auto listed = componentsSeparatedByString(gitInRepository({"ls-files"}), "\n");
        ASSERT_EQ(std::set<std::string>(listed.begin(), listed.end()), files);
        ASSERT_EQ(gitInRepository({"symbolic-ref", "HEAD"}), "refs/heads/main");
        ASSERT_EQ(gitInRepository({"status", "--porcelain"}), "");
    }
    EXPECT_GT(numberOfStops, 0U);
}

INSTANTIATE_TEST_SUITE_P(Parts, RVGitMergeManagerRewritingModelTest,
                         testing::Range(0U, numberOfParts));

}  // namespace
