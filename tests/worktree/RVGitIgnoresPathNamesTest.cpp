#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <set>

#include "RVGit/repository/RVGitRepository.h"
#include "RVGit/worktree/RVGitIgnores.h"
#include "tests/support/RVGitRepositoryTestCase.h"

namespace {

using namespace std::string_literals;
using testing::ElementsAre;
using testing::Optional;

/// Names of any shape through the two files, as git reads them.
class RVGitIgnoresPathNamesTest : public RVGitRepositoryTestCase {
protected:
    void makeFile(const std::string& name) const { writeFile(repositoryPath() + "/" + name, ""); }
    std::string contents() const { return readFile("repository/.gitignore"); }
    /// The files in the working tree with that mark, "??" or "!!", but for the ignore file.
    std::set<std::string> filesMarked(std::string_view mark) const {
        std::set<std::string> names;
        const std::string output =
            git({"status", "--porcelain", "-z", "--untracked-files=all", "--ignored"},
                repositoryPath());
        for (std::size_t start = 0; start < output.size();) {
            const auto end = output.find('\0', start);
            const std::string name = output.substr(start + 3, end - start - 3);
            if (output.compare(start, mark.size(), mark) == 0 && name != ".gitignore")
                names.insert(name);
            start = end + 1;
        }
        return names;
    }
};

TEST_F(RVGitIgnoresPathNamesTest, GitIgnoresExactlyTheNamesThatAreAdded) {
    const std::string longName(255, 'n');
    const struct {
        std::string name;
        std::string pattern;
        /// Another file, which the pattern must not touch.
        std::string other;
    } cases[] = {
        {"-f", "-f", "f"},
        {"--", "--", "-"},
        {":colon", ":colon", "colon"},
        {":(top)", ":(top)", "top"},
        {"!bang", R"(\!bang)", "bang"},
        {"#hash", R"(\#hash)", "hash"},
        {"a[b]", R"(a\[b\])", "ab"},
        {"st*r", R"(st\*r)", "star"},
        {"wh?t", R"(wh\?t)", "what"},
        {R"(back\slash)", R"(back\\slash)", "backslash"},
        {"trailing ", R"(trailing\ )", "trailing"},
        {"  ", R"(\ \ )", " "},
        {" leading", " leading", "leading"},
        {"in the middle", "in the middle", "inthemiddle"},
        {"tab\tin", "tab\tin", "tab in"},
        {"\ttab", "\ttab", "tab"},
        {R"("quote"')", R"("quote"')", "quote"},
        {"old -> new", "old -> new", "old"},
        {"carriage\rreturn", "carriage\rreturn", "carriage"},
        {"composed \u00e9", "composed \u00e9", "composed e\u0301"},
        {"decomposed e\u0301", "decomposed e\u0301", "decomposed \u00e9"},
        {longName, longName, longName.substr(1)},
    };
    std::vector<std::string> patterns;
    std::set<std::string> names, others;
    for (const auto& [name, pattern, other] : cases) {
        patterns.push_back(pattern);
        names.insert(name);
        others.insert(other);
        makeFile(name);
        makeFile(other);
    }
    ASSERT_EQ(names.size() + others.size(), 2 * std::size(cases));
    std::set<std::string> all = names;
    all.insert(others.begin(), others.end());

    for (const auto& ignores : {repository()->ignores(), repository()->excludes()}) {
        ASSERT_TRUE(ignores->setIgnorePatterns({}));
        EXPECT_EQ(filesMarked("??"), all);
        for (const std::string& pattern : patterns)
            ASSERT_TRUE(ignores->addIgnorePattern(pattern)) << pattern;
        EXPECT_EQ(filesMarked("!!"), names) << ignores->filePath();
        EXPECT_EQ(filesMarked("??"), others) << ignores->filePath();
        std::vector<std::string> lines = {""};
        lines.insert(lines.end(), patterns.begin(), patterns.end());
        EXPECT_EQ(ignores->readIgnorePatterns(), lines);
        ASSERT_TRUE(ignores->addIgnorePatterns(patterns));
        EXPECT_EQ(ignores->readIgnorePatterns(), lines);
        for (const std::string& pattern : patterns)
            ASSERT_TRUE(ignores->removeIgnorePattern(pattern)) << pattern;
        EXPECT_EQ(filesMarked("??"), all) << ignores->filePath();
    }
}

TEST_F(RVGitIgnoresPathNamesTest, APatternIsWrittenAsItStandsWithoutEscapes) {
    for (const char* name : {"a[b]", "ab", "trailing ", "trailing", "#hash", "c"})
        makeFile(name);
    ASSERT_TRUE(repository()->ignores()->addIgnorePatterns({"a[b]", "trailing ", "#hash"}));
    EXPECT_EQ(contents(), "a[b]\ntrailing \n#hash\n");
    EXPECT_THAT(filesMarked("!!"), ElementsAre("ab", "trailing"));
}

TEST_F(RVGitIgnoresPathNamesTest, APatternWithANewlineBecomesTwoLinesAtEachAdd) {
    for (const char* name : {"a\nb", "a", "b", "axb"})
        makeFile(name);
    const auto ignores = repository()->ignores();
    ASSERT_TRUE(ignores->addIgnorePattern("a\nb"));
    EXPECT_THAT(ignores->readIgnorePatterns(), Optional(ElementsAre("a", "b")));
    EXPECT_THAT(filesMarked("!!"), ElementsAre("a", "b"));
    ASSERT_TRUE(ignores->addIgnorePattern("a\nb"));
    EXPECT_EQ(contents(), "a\nb\na\nb\n");
    ASSERT_TRUE(ignores->removeIgnorePattern("a\nb"));
    EXPECT_EQ(contents(), "a\nb\na\nb\n");
}

TEST_F(RVGitIgnoresPathNamesTest, AQuestionMarkMatchesTheNewlineOfAName) {
    for (const char* name : {"a\nb", "a", "b"})
        makeFile(name);
    ASSERT_TRUE(repository()->ignores()->addIgnorePattern("a?b"));
    EXPECT_THAT(filesMarked("!!"), ElementsAre("a\nb"));
}

TEST_F(RVGitIgnoresPathNamesTest, AByteOrderMarkIsKept) {
    const std::string mark = "\xEF\xBB\xBF";
    writeFile("repository/.gitignore", mark + "*.o\n*.a\n");
    for (const char* name : {"x.o", "x.a", "x.c"})
        makeFile(name);
    const auto ignores = repository()->ignores();
    EXPECT_THAT(ignores->readIgnorePatterns(), Optional(ElementsAre(mark + "*.o", "*.a")));
    ASSERT_TRUE(ignores->removeIgnorePattern("*.a"));
    ASSERT_TRUE(ignores->addIgnorePattern("*.c"));
    EXPECT_EQ(contents(), mark + "*.o\n*.c\n");
    EXPECT_THAT(filesMarked("!!"), ElementsAre("x.c", "x.o"));
}

}  // namespace
