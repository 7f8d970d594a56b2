#include "RVGit/worktree/RVGitCommitMessageEditor.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sys/stat.h>

#include <cerrno>
#include <filesystem>

#include "RVGit/base/RVFileManager.h"
#include "RVGit/base/RVURL.h"
#include "tests/support/RVGitTestCase.h"
#include "tests/support/RVTestFiles.h"

namespace {

using testing::ElementsAre;

using Editor = RVGitCommitMessageEditor;

const std::string delimiter = "7b26278ebfd54ee8ec001b7c668de1137802ad9f63e4ebce3016f69c4f84884b";

class RVGitCommitMessageEditorTest : public RVGitTestCase {
protected:
    [[nodiscard]] static bool create(const std::string& path, const std::string& message,
                                     RVErrorPlace error = nullptr) {
        return Editor::createGitCommitMessageEditorScriptAtURL(RVURL::fileURLWithPath(path),
                                                               message, error);
    }
    /// What a file holds after the script has been run on it.
    [[nodiscard]] std::string edited(const std::string& message, int exitCode = 0) const {
        const std::string script = scratchPath("editor");
        EXPECT_TRUE(create(script, message));
        const std::string file = writeFile("a file", "old contents\n");
        EXPECT_EQ(runProgram({script, file}).exitCode, exitCode);
        return readFile(file);
    }
    [[nodiscard]] static mode_t permissionsOf(const std::string& path) {
        struct stat status = {};
        EXPECT_EQ(lstat(path.c_str(), &status), 0);
        return status.st_mode & 07777U;
    }
};

TEST_F(RVGitCommitMessageEditorTest, TheScriptIsExactlyThis) {
    const std::string path = scratchPath("editor");
    ASSERT_TRUE(create(path, "Subject\n\nBody\n"));
    EXPECT_EQ(readFile(path), "#!/bin/sh\n/bin/cat << '" + delimiter +
                                  "' > \"$1\"\nSubject\n\nBody\n\n" + delimiter);
}

TEST_F(RVGitCommitMessageEditorTest, AMadeEditorKeepsItsMessage) {
    const auto editor = Editor::commitMessageEditorWithCommitMessage("Message");
    EXPECT_EQ(editor->commitMessage(), "Message");
    const std::string path = scratchPath("editor");
    ASSERT_TRUE(editor->createGitCommitMessageEditorScriptAtURL(RVURL::fileURLWithPath(path)));
    ASSERT_TRUE(create(scratchPath("other"), "Message"));
    EXPECT_EQ(readFile(path), readFile("other"));
}

TEST_F(RVGitCommitMessageEditorTest, AMessageArrivesByteForByte) {
    const std::string messages[] = {
        "It's \"quoted\", $HOME, $(touch x), `touch x`, \\, \\\n, $1, EOF, <<, %s",
        "# comment\n\n\n  trailing blanks  \t",
        "",
        "\n",
        "cafe\u0301 \u4e2d \xf0\x9f\x98\x80",
        "no UTF-8 \xff\xfe",
        "carriage return\r\n",
        " " + delimiter + "\n" + delimiter + " ",
    };
    for (const std::string& message : messages)
        EXPECT_EQ(edited(message), message + "\n");
    EXPECT_FALSE(fileExists("x"));
}

TEST_F(RVGitCommitMessageEditorTest, ALongMessageArrives) {
    std::string message;
    while (message.size() < 1'000'000)
        message += "$line " + std::to_string(message.size()) + " \\\n";
    EXPECT_EQ(edited(message), message + "\n");
}

TEST_F(RVGitCommitMessageEditorTest, AMessageWithALineThatIsTheDelimiterIsRefused) {
    const std::string messages[] = {
        delimiter,
        "before\n" + delimiter + "\ntouch ran",
        "before\n" + delimiter,
        // A shell drops NUL bytes.
        "before\n" + delimiter.substr(0, 3) + std::string(1, '\0') + delimiter.substr(3) + "\nls",
    };
    for (const std::string& message : messages) {
        std::optional<RVError> error;
        EXPECT_FALSE(create(scratchPath("editor"), message, &error));
        EXPECT_TRUE(error);
        EXPECT_FALSE(fileExists("editor"));
    }
}

TEST_F(RVGitCommitMessageEditorTest, ThePermissionsAreExact) {
    for (const mode_t mask : {0U, 022U, 077U, 0777U}) {
        const mode_t before = umask(mask);
        const std::string path = scratchPath("editor" + std::to_string(mask));
        EXPECT_TRUE(create(path, "Message"));
        umask(before);
        EXPECT_EQ(permissionsOf(path), 0755U);
    }
    const std::string existing = writeFile("existing", "old\n", 0600);
    EXPECT_TRUE(create(existing, "Message"));
    EXPECT_EQ(permissionsOf(existing), 0755U);
}

TEST_F(RVGitCommitMessageEditorTest, TheFileIsReplacedInOneStep) {
    const std::string target = writeFile("target", "old\n");
    std::filesystem::create_symlink(target, scratchPath("link"));
    std::filesystem::create_hard_link(target, scratchPath("other name"));
    EXPECT_TRUE(create(scratchPath("link"), "Message"));
    EXPECT_TRUE(create(target, "Message"));
    // Who has the old file open, or knows it by another name, still has all of it.
    EXPECT_EQ(readFile("other name"), "old\n");
    EXPECT_FALSE(std::filesystem::is_symlink(scratchPath("link")));
    EXPECT_THAT(RVFileManager::namesInDirectoryAtPath(scratchDirectory()),
                ElementsAre("link", "other name", "target"));
}

TEST_F(RVGitCommitMessageEditorTest, AFailureIsReportedAndLeavesNothing) {
    std::optional<RVError> error;
    EXPECT_FALSE(create(scratchPath("missing/editor"), "Message", &error));
    ASSERT_TRUE(error);
    EXPECT_EQ(error->domain(), RVPOSIXErrorDomain);
    EXPECT_EQ(error->code(), ENOENT);

    makeDirectory("directory/with a file");
    error.reset();
    EXPECT_FALSE(create(scratchPath("directory"), "Message", &error));
    ASSERT_TRUE(error);
    EXPECT_EQ(error->code(), EISDIR);
    EXPECT_THAT(RVFileManager::namesInDirectoryAtPath(scratchDirectory()),
                ElementsAre("directory"));
}

TEST_F(RVGitCommitMessageEditorTest, NeedsAFileURL) {
    EXPECT_THROW((void)Editor::createGitCommitMessageEditorScriptAtURL(
                     RVURL("https://example.org/editor"), "Message"),
                 RVInvalidParameterException);
}

TEST_F(RVGitCommitMessageEditorTest, GitRunsItFromAPathThatIsQuotedForTheShell) {
    const std::string path = initRepository();
    const std::string script = makeDirectory("it's a \"$HOME\" of `blanks`") + "/the editor";
    ASSERT_TRUE(create(script, "It's from the 'script': $HOME, cafe\u0301\n# comment"));
    commitFile(path, "file", "one\n", "Original");
    const auto amend = [&](const std::string& editor) {
        setEnvironmentVariable("GIT_EDITOR", editor);
        const int exitCode = runGit({"commit", "--amend", "--cleanup=whitespace"}, path).exitCode;
        setEnvironmentVariable("GIT_EDITOR", std::nullopt);
        return exitCode;
    };
    EXPECT_NE(amend(script), 0);
    EXPECT_EQ(gitLine({"log", "-1", "--pretty=%B"}, path), "Original");
    EXPECT_EQ(amend(quotedForShell(script)), 0);
    EXPECT_EQ(gitLine({"log", "-1", "--pretty=%B"}, path),
              "It's from the 'script': $HOME, cafe\u0301\n# comment");
}

}  // namespace
