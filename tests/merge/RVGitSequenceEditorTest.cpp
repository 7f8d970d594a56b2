#include "RVGit/merge/RVGitSequenceEditor.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sys/stat.h>

#include <cerrno>
#include <filesystem>

#include "RVGit/base/RVFileManager.h"
#include "RVGit/base/RVURL.h"
#include "RVGit/command/RVGitError.h"
#include "RVGit/merge/RVGitEditorScript.h"
#include "tests/support/RVErrorMatchers.h"
#include "tests/support/RVGitTestCase.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

const std::string hash = "0123456789abcdef0123456789abcdef01234567";
const std::string otherHash = "89abcdef0123456789abcdef0123456789abcdef";

RVGitSequenceInstruction::List instructions(
    const std::vector<std::pair<std::string, std::string>>& list) {
    RVGitSequenceInstruction::List result;
    for (const auto& [command, commitHash] : list)
        result.push_back(
            RVGitSequenceInstruction::sequenceInstructionWithCommand(command, commitHash));
    return result;
}

class RVGitSequenceEditorTest : public RVGitTestCase {
protected:
    [[nodiscard]] static bool create(const std::string& path,
                                     RVGitSequenceInstruction::List sequenceInstructions,
                                     RVErrorPlace error = nullptr) {
        return RVGitSequenceEditor::createGitSequenceEditorScriptAtURL(
            RVURL::fileURLWithPath(path), std::move(sequenceInstructions), error);
    }
};

TEST_F(RVGitSequenceEditorTest, TheScriptIsExactlyThis) {
    const std::string path = scratchPath("editor");
    ASSERT_TRUE(create(path, instructions({{"pick", hash}, {"drop", otherHash}})));
    EXPECT_EQ(readFile(path), "#!/bin/sh\n/bin/cat /dev/null > \"$1\"\n/bin/echo pick " + hash +
                                  " >> \"$1\"\n/bin/echo drop " + otherHash + " >> \"$1\"");
    ASSERT_TRUE(create(path, {}));
    EXPECT_EQ(readFile(path), "#!/bin/sh\n/bin/cat /dev/null > \"$1\"");
}

TEST_F(RVGitSequenceEditorTest, TheScriptReplacesWhatStandsInAFile) {
    const std::string path = scratchPath("editor");
    const auto editor = RVGitSequenceEditor::sequenceEditorWithSequenceInstructions(
        instructions({{"squash", hash}, {"fixup", otherHash}}));
    EXPECT_EQ(editor->sequenceInstructions().size(), 2u);
    ASSERT_TRUE(editor->createGitSequenceEditorScriptAtURL(RVURL::fileURLWithPath(path)));
    const std::string list = writeFile("it's a \"$HOME\" of `lists`/todo", "pick 1 old\n# old\n");
    EXPECT_EQ(runProgram({path, list}).exitCode, 0);
    EXPECT_EQ(readFile(list), "squash " + hash + "\nfixup " + otherHash + "\n");
}

TEST_F(RVGitSequenceEditorTest, ThePermissionsAreExact) {
    for (const mode_t mask : {0U, 022U, 077U, 0777U}) {
        const mode_t before = umask(mask);
        const std::string path = scratchPath("editor" + std::to_string(mask));
        EXPECT_TRUE(create(path, {}));
        umask(before);
        struct stat status = {};
        ASSERT_EQ(lstat(path.c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & 07777U, 0755U);
    }
}

TEST_F(RVGitSequenceEditorTest, AFailureIsReportedAndLeavesNothing) {
    std::optional<RVError> error;
    EXPECT_FALSE(create(scratchPath("missing/editor"), {}, &error));
    ASSERT_TRUE(error);
    EXPECT_EQ(error->domain(), RVPOSIXErrorDomain);
    EXPECT_EQ(error->code(), ENOENT);
    EXPECT_THAT(RVFileManager::namesInDirectoryAtPath(scratchDirectory()), IsEmpty());
}

TEST_F(RVGitSequenceEditorTest, WhatAShellWouldReadIsRefused) {
    const std::string path = scratchPath("editor");
    const std::string words[] = {"",     "a b",
                                 "a\tb", "a\nb",
                                 "a;b",  "a&b",
                                 "a|b",  "a>b",
                                 "a<b",  "$(ls)",
                                 "`ls`", "a\"b",
                                 "a'b",  "a\\b",
                                 "*",    "a?",
                                 "[a]",  "{a}",
                                 "#a",   "~",
                                 "a=b",  "(a)",
                                 "a!",   "a\rb",
                                 "\x7F", std::string(1, '\0')};
    for (const std::string& word : words) {
        std::optional<RVError> error;
        EXPECT_FALSE(create(path, instructions({{"pick", hash}, {"pick", word}}), &error)) << word;
        ASSERT_TRUE(error) << word;
        EXPECT_EQ(error->domain(), RVGitErrorDomain);
        EXPECT_EQ(error->code(), RVGitRVGitGenericError);
        EXPECT_EQ(error->userInfoString(RVGitRevisionErrorKey), word);
        EXPECT_FALSE(create(path, instructions({{word, hash}})));
        EXPECT_FALSE(fileExists("editor")) << word;
    }
    EXPECT_TRUE(create(path, instructions({{"pick", "refs/heads/ünder-way_1.0@^:+,"}})));
}

TEST_F(RVGitSequenceEditorTest, NeedsAFileURL) {
    EXPECT_THROW((void)RVGitSequenceEditor::createGitSequenceEditorScriptAtURL(
                     RVURL("https://example.org/editor"), instructions({})),
                 RVInvalidParameterException);
}

using RVGitEditorScriptTest = RVGitSequenceEditorTest;

TEST_F(RVGitEditorScriptTest, APlainPathStandsAsItIs) {
    for (const char* path : {"/tmp/rvgit-0a1b", "/var/folders/x_y/T/a+b,c.d-e@f^g:h/é"})
        EXPECT_EQ(editorCommandForScriptPath(path), path);
}

TEST_F(RVGitEditorScriptTest, APathThatAShellWouldReadIsQuoted) {
    EXPECT_EQ(editorCommandForScriptPath("/tmp/a b"), "'/tmp/a b'");
    EXPECT_EQ(editorCommandForScriptPath("/tmp/it's"), "'/tmp/it'\\''s'");
    for (const char character : std::string_view("|&;<>()$`\\\" \t\n*?[]{}!#~=%\r\x01\x7F")) {
        const std::string path = std::string("/tmp/") + character + "x";
        EXPECT_EQ(editorCommandForScriptPath(path), "'" + path + "'");
    }
}

TEST_F(RVGitEditorScriptTest, GitRunsAScriptOfAnyPath) {
    const std::string path = initRepository();
    commitFile(path, "file", "one\n", "Original");
    for (const char* name : {"plain",     "a blank", "it's",    "$HOME", "a\"b", "`x`", "a\\b",
                             "new\nline", "*",       "a;b&c|d", "(a)",   "#a",   "~",   "a=b",
                             "100%",      "{a,b}",   "é\u00a0", "!x",    "[a]",  "-x"}) {
        setEnvironmentVariable("TMPDIR", makeDirectory(std::string("tmp/") + name));
        std::optional<RVError> error;
        const std::string message = std::string("Message from ") + name;
        const auto script = temporaryCommitMessageEditorScript(message, &error);
        ASSERT_TRUE(script) << name;
        setEnvironmentVariable("GIT_EDITOR", editorCommandForScriptPath(*script));
        git({"commit", "--amend", "--cleanup=verbatim"}, path);
        EXPECT_EQ(git({"log", "-1", "--pretty=tformat:%B"}, path), message + "\n\n") << name;
    }
}

TEST_F(RVGitEditorScriptTest, EachScriptHasAFileOfItsOwn) {
    setEnvironmentVariable("TMPDIR", makeDirectory("tmp"));
    const auto first = temporarySequenceEditorScript(instructions({{"pick", hash}}));
    const auto second = temporarySequenceEditorScript({});
    const auto third = temporaryCommitMessageEditorScript("");
    ASSERT_TRUE(first && second && third);
    EXPECT_EQ(RVFileManager::namesInDirectoryAtPath(scratchPath("tmp")).size(), 3u);
    EXPECT_TRUE(RVFileManager::isExecutableFileAtPath(*first));
}

TEST_F(RVGitEditorScriptTest, AMessageThatWouldEndTheScriptEarlyIsRefused) {
    setEnvironmentVariable("TMPDIR", makeDirectory("tmp"));
    const std::string delimiter =
        "7b26278ebfd54ee8ec001b7c668de1137802ad9f63e4ebce3016f69c4f84884b";
    for (const std::string& message :
         {delimiter, delimiter + "\ntouch x", "Subject\n\n" + delimiter, "a\n" + delimiter + "\n",
          std::string("a\0b", 3)}) {
        EXPECT_THAT(
            [&](RVErrorPlace error) { return temporaryCommitMessageEditorScript(message, error); },
            failsWith(RVGitRVGitGenericError))
            << message;
    }
    EXPECT_THAT(RVFileManager::namesInDirectoryAtPath(scratchPath("tmp")), IsEmpty());
    for (const std::string& message :
         {" " + delimiter, delimiter + " ", "a" + delimiter, delimiter + "\r\n", std::string()})
        EXPECT_TRUE(temporaryCommitMessageEditorScript(message)) << message;
}

TEST_F(RVGitEditorScriptTest, WithoutRoomForAFileThereIsNoScript) {
    setEnvironmentVariable("TMPDIR", scratchPath("missing"));
    EXPECT_THAT([&](RVErrorPlace error) { return temporarySequenceEditorScript({}, error); },
                failsWith(ENOENT));
    EXPECT_THAT(
        [&](RVErrorPlace error) { return temporaryCommitMessageEditorScript("Message", error); },
        failsWith(ENOENT));
}

}  // namespace
