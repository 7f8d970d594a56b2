#include "RVGit/history/RVGitBlame.h"

#include <random>
#include <set>

#include "RVGit/base/RVString.h"
#include "RVGit/command/RVGitActor.h"
#include "RVGit/command/RVGitErrorKeys.h"
#include "RVGit/command/RVGitValues.h"
#include "RVGit/history/RVGitCommit.h"
#include "tests/support/RVGitRepositoryTestCase.h"

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

namespace {

/// Writes a history for `git fast-import`: on "main", unless another branch is named.
class History {
public:
    struct Change {
        std::string path;
        std::optional<std::string> contents;
    };

    int commit(const std::vector<int>& parents, const std::vector<Change>& changes) {
        ++count_;
        const std::string number = std::to_string(count_);
        const std::string name = "Author " + std::to_string(count_ % 7);
        const std::string summary = "Change " + number + " \xC3\xA9";
        if (parents.empty())
            stream_ += "reset refs/heads/main\n\n";
        stream_ += "commit refs/heads/main\nmark :" + number + "\n";
        stream_ += "author " + name + " <" + number + "@example.org> " +
                   std::to_string(1500000000 + count_) + " +0130\n";
        stream_ += "committer Committer <c@example.org> " + std::to_string(1600000000 + count_) +
                   " -0800\n";
        stream_ += "data " + std::to_string(summary.size()) + "\n" + summary + "\n";
        for (std::size_t index = 0; index < parents.size(); ++index)
            stream_ += (index ? "merge :" : "from :") + std::to_string(parents[index]) + "\n";
        for (const Change& change : changes) {
            if (!change.contents) {
                stream_ += "D " + change.path + "\n";
                continue;
            }
            stream_ += "M 100644 inline " + change.path + "\ndata " +
                       std::to_string(change.contents->size()) + "\n" + *change.contents + "\n";
        }
        return count_;
    }
    [[nodiscard]] const std::string& stream() const { return stream_; }

private:
    std::string stream_;
    int count_ = 0;
};

class RVGitBlameTest : public RVGitRepositoryTestCase {
protected:
    std::string commit(std::string_view file, std::string_view contents,
                       std::string_view message = "Message") const {
        return commitFile(repositoryPath(), file, contents, message);
    }
    void import(const History& history) const {
        git({"fast-import", "--quiet"}, repositoryPath(), history.stream());
    }
    std::shared_ptr<RVGitBlame> blame(const std::string& filePath,
                                      const std::string& revision = "HEAD") const {
        std::optional<RVError> error;
        auto result = RVGitBlame::blameForFilePath(filePath, revision, repository(), &error);
        EXPECT_FALSE(error);
        return result;
    }
    std::vector<std::string> contentsOf(const RVGitBlame& blame) const {
        std::vector<std::string> contents;
        for (const auto& line : blame.annotatedLines())
            contents.push_back(line->lineContents().value_or("(absent)"));
        return contents;
    }
    void expectAgreementWithGit(const std::string& filePath) const;
};

std::string secondsOf(const std::optional<RVDate>& date) {
    return date ? std::to_string(date->time_since_epoch().count()) : "(absent)";
}

/// Holds a blame against `git blame --line-porcelain`, which repeats all of a commit on each line.
void RVGitBlameTest::expectAgreementWithGit(const std::string& filePath) const {
    auto annotated = blame(filePath);
    ASSERT_TRUE(annotated);
    const std::string output =
        git({"blame", "--line-porcelain", "HEAD", "--", filePath}, repositoryPath());
    std::map<std::string, std::shared_ptr<RVGitCommit>> commits;
    std::size_t index = 0;
    std::shared_ptr<RVGitAnnotatedLine> line;
    for (const std::string& text : componentsSeparatedByString(output, "\n")) {
        if (!line) {
            if (text.empty())
                continue;
            ASSERT_LT(index, annotated->annotatedLines().size());
            line = annotated->annotatedLines()[index++];
            const auto hash = line->commit()->commitHash();
            ASSERT_TRUE(hash);
            std::string header = *hash + " " + std::to_string(line->originalLineNumber()) + " " +
                                 std::to_string(line->finalLineNumber());
            if (line->lineGroup())
                header += " " + std::to_string(line->lineGroup());
            ASSERT_EQ(text, header);
            EXPECT_EQ(commits.try_emplace(*hash, line->commit()).first->second, line->commit());
            EXPECT_EQ(line->filePath(), filePath);
            continue;
        }
        const RVGitCommit& commit = *line->commit();
        const std::size_t blank = text.find(' ');
        const std::string name = text.substr(0, blank);
        const std::string value = blank == std::string::npos ? "" : text.substr(blank + 1);
        if (text.starts_with('\t')) {
            EXPECT_EQ(line->lineContents(), text.substr(1));
            line = nullptr;
        } else if (name == "author") {
            EXPECT_EQ(commit.author()->name(), value);
        } else if (name == "author-mail") {
            EXPECT_EQ("<" + commit.author()->email().value_or("") + ">", value);
        } else if (name == "author-time") {
            EXPECT_EQ(secondsOf(commit.authorDate()), value);
        } else if (name == "committer") {
            EXPECT_EQ(commit.committer()->name(), value);
        } else if (name == "committer-time") {
            EXPECT_EQ(secondsOf(commit.committerDate()), value);
        } else if (name == "summary") {
            EXPECT_EQ(commit.message(), value);
        }
    }
    EXPECT_EQ(index, annotated->annotatedLines().size());
}

TEST_F(RVGitBlameTest, LinesOfOneCommitShareOneObject) {
    const std::string first = commit("file", "a\nb\nc\n", "First\n\nBody\n");
    const std::string second = commit("file", "a\nB\nc\n", "Second");
    auto annotated = blame("file");
    ASSERT_TRUE(annotated);
    EXPECT_EQ(annotated->repository(), repository());
    EXPECT_EQ(annotated->filePath(), "file");
    EXPECT_EQ(annotated->revision(), "HEAD");
    const auto& lines = annotated->annotatedLines();
    ASSERT_THAT(lines, SizeIs(3));
    EXPECT_EQ(lines[0]->commit()->commitHash(), first);
    EXPECT_EQ(lines[1]->commit()->commitHash(), second);
    EXPECT_EQ(lines[0]->commit(), lines[2]->commit());
    EXPECT_NE(lines[0]->commit(), lines[1]->commit());
    EXPECT_EQ(lines[0]->commit()->repository(), repository());
}

TEST_F(RVGitBlameTest, CommitHoldsWhatGitPrintsOfIt) {
    const std::string first = commit("file", "a\n");
    setDates("1500000000 +0200", "1600000000 -0300");
    const std::string second = commit("file", "a\nb\n", "Subject\n\nBody\n");
    auto annotated = blame("file");
    ASSERT_TRUE(annotated);
    ASSERT_THAT(annotated->annotatedLines(), SizeIs(2));
    const RVGitCommit& partial = *annotated->annotatedLines()[1]->commit();
    EXPECT_EQ(partial.commitHash(), second);
    EXPECT_EQ(partial.treeHash(), second);
    EXPECT_THAT(partial.parentCommitHashes(), ElementsAre("previous", first));
    EXPECT_EQ(partial.author()->name(), userName);
    EXPECT_EQ(partial.author()->email(), userEmail);
    EXPECT_EQ(partial.committer()->name(), userName);
    EXPECT_EQ(partial.authorDate(), RVDate(std::chrono::seconds(1500000000)));
    EXPECT_EQ(partial.committerDate(), RVDate(std::chrono::seconds(1600000000)));
    EXPECT_EQ(partial.message(), "Subject");
    EXPECT_EQ(partial.subject(), "Subject");
    EXPECT_EQ(partial.body(), std::nullopt);
    EXPECT_EQ(partial.signature(), nullptr);
    EXPECT_THAT(annotated->annotatedLines()[0]->commit()->parentCommitHashes(), IsEmpty());
}

TEST_F(RVGitBlameTest, NumbersTellWhereALineStoodAndStands) {
    commit("file", "a\nb\n");
    commit("file", "new\na\nb\n");
    auto annotated = blame("file");
    ASSERT_TRUE(annotated);
    const auto& lines = annotated->annotatedLines();
    ASSERT_THAT(lines, SizeIs(3));
    EXPECT_EQ(lines[1]->originalLineNumber(), 1u);
    EXPECT_EQ(lines[1]->finalLineNumber(), 2u);
    EXPECT_EQ(lines[0]->lineGroup(), 1u);
    EXPECT_EQ(lines[1]->lineGroup(), 2u);
    EXPECT_EQ(lines[2]->lineGroup(), 0u);
}

TEST_F(RVGitBlameTest, EmptyFileHasNoLines) {
    commit("file", "");
    auto annotated = blame("file");
    ASSERT_TRUE(annotated);
    EXPECT_THAT(annotated->annotatedLines(), IsEmpty());
}

TEST_F(RVGitBlameTest, LastLineWithoutANewlineIsALine) {
    commit("file", "a\nb");
    EXPECT_THAT(contentsOf(*blame("file")), ElementsAre("a", "b"));
}

TEST_F(RVGitBlameTest, CarriageReturnsStayInTheirLines) {
    commit("file", "a\r\n\r\nb\rc\r\n");
    EXPECT_THAT(contentsOf(*blame("file")), ElementsAre("a\r", "\r", "b\rc\r"));
}

TEST_F(RVGitBlameTest, BinaryBytesAreKeptAsText) {
    commit("file", std::string("\x00\x01\x7F\n\xFF\xFE\n", 7));
    EXPECT_THAT(contentsOf(*blame("file")),
                ElementsAre(std::string("\x00\x01\x7F", 3), "\xC3\xBF\xC3\xBE"));
}

TEST_F(RVGitBlameTest, RenamedFileShowsThePathThatWasAskedFor) {
    const std::string first = commit("old name", "one\ntwo\nthree\nfour\n");
    gitInRepository({"mv", "old name", "new"});
    const std::string second = commit("new", "one\ntwo\nthree\nfour\nfive\n");
    auto annotated = blame("new");
    ASSERT_TRUE(annotated);
    const auto& lines = annotated->annotatedLines();
    ASSERT_THAT(lines, SizeIs(5));
    EXPECT_EQ(lines[0]->commit()->commitHash(), first);
    EXPECT_EQ(lines[4]->commit()->commitHash(), second);
    for (const auto& line : lines)
        EXPECT_EQ(line->filePath(), "new");
    EXPECT_THAT(lines[4]->commit()->parentCommitHashes(), ElementsAre("previous", first, "old"));
}

TEST_F(RVGitBlameTest, PathsThatGitQuotesAreAnnotated) {
    for (const std::string path : {"tab\there", "quote\"d", "back\\slash", "caf\xC3\xA9",
                                   "new\nline", "-dash", " blank ", "directory/[a]*"}) {
        const std::string hash = commit(path, "x\n", path);
        auto annotated = blame(path);
        ASSERT_TRUE(annotated) << path;
        ASSERT_THAT(annotated->annotatedLines(), SizeIs(1)) << path;
        EXPECT_EQ(annotated->annotatedLines()[0]->filePath(), path);
        EXPECT_EQ(annotated->annotatedLines()[0]->commit()->commitHash(), hash);
    }
}

TEST_F(RVGitBlameTest, AnyRevisionIsAnnotated) {
    const std::string first = commit("file", "a\n");
    commit("file", "b\n");
    auto annotated = blame("file", "HEAD^");
    ASSERT_TRUE(annotated);
    EXPECT_EQ(annotated->revision(), "HEAD^");
    EXPECT_THAT(contentsOf(*annotated), ElementsAre("a"));
    EXPECT_EQ(annotated->annotatedLines()[0]->commit()->commitHash(), first);
}

TEST_F(RVGitBlameTest, FailureGivesNothingAndAnError) {
    makeCommit();
    std::optional<RVError> error;
    EXPECT_FALSE(RVGitBlame::blameForFilePath("missing", "HEAD", repository(), &error));
    ASSERT_TRUE(error);
    EXPECT_EQ(error->userInfoString(RVGitFilePathErrorKey), "missing");
    EXPECT_FALSE(RVGitBlame::blameForFilePath("missing", "HEAD", repository()));
}

TEST_F(RVGitBlameTest, RequiredArgumentsAreNamed) {
    auto conditionOf = [](const std::function<void()>& operation) -> std::string {
        try {
            operation();
        } catch (const RVInvalidParameterException& exception) {
            return exception.what();
        }
        return "nothing was thrown";
    };
    EXPECT_EQ(conditionOf([] { (void)RVGitBlame::blameForFilePath("a", "HEAD", nullptr); }),
              "Invalid parameter not satisfying: repository");
    EXPECT_EQ(conditionOf([] { (void)RVGitBlame::blameWithRepository(nullptr, "a", "HEAD", {}); }),
              "Invalid parameter not satisfying: repository");
    EXPECT_EQ(conditionOf([] {
                  (void)RVGitAnnotatedLine::annotatedLineWithFilePath("a", "x", 1, 1, 1, nullptr);
              }),
              "Invalid parameter not satisfying: commit");
}

TEST_F(RVGitBlameTest, ValuesHoldWhatTheyAreMadeOf) {
    auto partial = std::make_shared<RVGitCommit>();
    auto line = RVGitAnnotatedLine::annotatedLineWithFilePath("a", "x", 3, 4, 5, partial);
    EXPECT_EQ(line->filePath(), "a");
    EXPECT_EQ(line->lineContents(), "x");
    EXPECT_EQ(line->originalLineNumber(), 3u);
    EXPECT_EQ(line->finalLineNumber(), 4u);
    EXPECT_EQ(line->lineGroup(), 5u);
    EXPECT_EQ(line->commit(), partial);
    auto annotated = RVGitBlame::blameWithRepository(repository(), "a", "v1", {line});
    EXPECT_EQ(annotated->revision(), "v1");
    EXPECT_THAT(annotated->annotatedLines(), ElementsAre(line));
}

TEST_F(RVGitBlameTest, UncommittedLinesCannotBeNamedSoARevisionIsAlwaysAnnotated) {
    commit("file", "a\n");
    writeFile("repository/file", "changed\n");
    EXPECT_THAT(contentsOf(*blame("file")), ElementsAre("a"));
}

TEST_F(RVGitBlameTest, AgreesWithGitOnFiftyFilesOfAMergedHistory) {
    constexpr int fileCount = 50;
    std::mt19937 random(99);
    auto pathOf = [](int file) {
        return "directory " + std::to_string(file % 3) + "/file" + std::to_string(file) +
               (file % 10 ? "" : "\xC3\xA9");
    };
    using Lines = std::vector<std::string>;
    auto joined = [](const Lines& lines) {
        std::string text;
        for (const std::string& line : lines)
            text += line;
        return text;
    };
    std::vector<Lines> files(fileCount);
    History history;
    int newest = 0;
    for (int number = 1; number <= 60; ++number) {
        std::vector<History::Change> changes;
        for (int file = 0; file < fileCount; ++file) {
            if (number > 1 && random() % 4)
                continue;
            Lines& lines = files[static_cast<std::size_t>(file)];
            for (auto count = 1 + random() % 5; count > 0; --count) {
                auto place = static_cast<std::ptrdiff_t>(random() % (lines.size() + 1));
                std::string line = std::to_string(random() % 1000) + (random() % 9 ? "\n" : "\r\n");
                if (random() % 3 == 0 && place < std::ssize(lines))
                    lines.erase(lines.begin() + place);
                else
                    lines.insert(lines.begin() + place, std::move(line));
            }
            changes.push_back({pathOf(file), joined(lines)});
        }
        std::vector<int> parents;
        if (newest)
            parents.push_back(newest);
        if (number % 9 == 0) {
            // A side branch that changes one file, which the merge then takes over.
            Lines& lines = files[random() % fileCount];
            const int file = static_cast<int>(&lines - files.data());
            lines.push_back("side " + std::to_string(number) + "\n");
            parents.push_back(history.commit({newest}, {{pathOf(file), joined(lines)}}));
            changes.push_back({pathOf(file), joined(lines)});
        }
        newest = history.commit(parents, changes);
    }
    import(history);
    for (int file = 0; file < fileCount; ++file) {
        SCOPED_TRACE(pathOf(file));
        expectAgreementWithGit(pathOf(file));
    }
}

TEST_F(RVGitBlameTest, FiftyThousandLinesOfTwoThousandCommitsShareTwoThousandObjects) {
    // Twenty histories of a hundred commits, each with a part of the file, and one merge of all:
    // git then compares small files only.
    History history;
    std::string file;
    std::vector<int> tips;
    for (int part = 0; part < 20; ++part) {
        std::string contents;
        std::vector<int> parents;
        for (int number = 0; number < 100; ++number) {
            for (int line = 0; line < 25; ++line)
                contents += std::to_string(part) + "." + std::to_string(number) + "." +
                            std::to_string(line) + "\n";
            parents = {history.commit(parents, {{"file", contents}})};
        }
        tips.push_back(parents[0]);
        file += contents;
    }
    history.commit(tips, {{"file", file}});
    import(history);

    auto annotated = blame("file");
    ASSERT_TRUE(annotated);
    const auto& lines = annotated->annotatedLines();
    ASSERT_THAT(lines, SizeIs(50000));
    std::map<std::string, std::set<const RVGitCommit*>> objects;
    std::string contents;
    for (const auto& line : lines) {
        objects[line->commit()->commitHash().value_or("")].insert(line->commit().get());
        contents += line->lineContents().value_or("") + "\n";
    }
    EXPECT_EQ(contents, file);
    EXPECT_THAT(objects, SizeIs(2000));
    for (const auto& [hash, shared] : objects)
        EXPECT_THAT(shared, SizeIs(1)) << hash;
    EXPECT_EQ(lines[49999]->finalLineNumber(), 50000u);
    EXPECT_EQ(lines[49999]->originalLineNumber(), 2500u);
}

}  // namespace
