#include "RVGit/command/RVGitCommandEnvironmentSanitizer.h"

#include <sstream>

#include "RVGit/base/RVError.h"
#include "RVGit/command/RVGitBinary.h"
#include "RVGit/command/RVGitCommand.h"
#include "tests/support/RVGitTestCase.h"

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::IsSupersetOf;
using testing::Not;
using testing::Optional;
using testing::Pair;

namespace {

class RVGitCommandEnvironmentSanitizerTest : public RVGitTestCase {
protected:
    static const std::vector<std::string>& sharedNames() {
        return *RVGitCommandEnvironmentSanitizerConfig::sharedConfig()
                    .blacklistedEnvironmentVariables();
    }
};

std::string propertyList(const std::string& content) {
    return R"(<?xml version="1.0" encoding="UTF-8"?><plist version="1.0">)" + content + "</plist>";
}

TEST_F(RVGitCommandEnvironmentSanitizerTest, TheListHoldsWhatTheInstalledGitCallsLocal) {
    std::istringstream lines(git({"rev-parse", "--local-env-vars"}));
    std::vector<std::string> names;
    for (std::string line; std::getline(lines, line);)
        names.push_back(line);
    EXPECT_THAT(names, Not(IsEmpty()));
    EXPECT_THAT(sharedNames(), IsSupersetOf(names));
}

TEST_F(RVGitCommandEnvironmentSanitizerTest, TheListHoldsEditorsTracesAndLanguages) {
    EXPECT_THAT(sharedNames(),
                IsSupersetOf({"GIT_EDITOR", "GIT_SEQUENCE_EDITOR", "GIT_EXTERNAL_DIFF", "GIT_TRACE",
                              "GIT_TRACE2", "GIT_TRACE2_EVENT", "GIT_TRACE2_PERF", "GIT_TRACE_CURL",
                              "GIT_TRACE_PACKET", "GIT_TRACE_SETUP", "LANGUAGE", "LD_PRELOAD"}));
}

TEST_F(RVGitCommandEnvironmentSanitizerTest, TheListHoldsWhatChangesPathsProgramsAndConfiguration) {
    EXPECT_THAT(
        sharedNames(),
        IsSupersetOf({"GIT_LITERAL_PATHSPECS", "GIT_GLOB_PATHSPECS", "GIT_NOGLOB_PATHSPECS",
                      "GIT_ICASE_PATHSPECS", "GIT_NAMESPACE", "GIT_EXEC_PATH", "GIT_TEMPLATE_DIR",
                      "GIT_SSH", "GIT_SSH_COMMAND", "GIT_PROXY_COMMAND", "GIT_ATTR_SOURCE",
                      "GIT_DIFF_OPTS", "GIT_CONFIG_GLOBAL", "GIT_CONFIG_SYSTEM",
                      "GIT_CONFIG_NOSYSTEM", "LD_LIBRARY_PATH", "LD_AUDIT"}));
}

TEST_F(RVGitCommandEnvironmentSanitizerTest, TheListIsAnArrayOfNames) {
    RVGitCommandEnvironmentSanitizerConfig config(
        propertyList("<array><string>A</string><string>B</string></array>"));
    EXPECT_THAT(config.blacklistedEnvironmentVariables(), Optional(ElementsAre("A", "B")));
    RVGitCommandEnvironmentSanitizerConfig empty(propertyList("<array/>"));
    EXPECT_THAT(empty.blacklistedEnvironmentVariables(), Optional(IsEmpty()));
}

TEST_F(RVGitCommandEnvironmentSanitizerTest, AMissingListIsAnInternalInconsistency) {
    try {
        RVGitCommandEnvironmentSanitizerConfig config(std::nullopt);
        FAIL() << "nothing was thrown";
    } catch (const RVInternalInconsistencyException& exception) {
        EXPECT_STREQ(exception.what(), "Expected sanitizer config");
    }
}

TEST_F(RVGitCommandEnvironmentSanitizerTest, AListThatCannotBeReadIsAbsent) {
    for (const std::string& text :
         {std::string(), std::string("no property list"), std::string("<plist"),
          propertyList("<dict><key>A</key><string>B</string></dict>"),
          propertyList("<array><integer>1</integer></array>"), propertyList("<string>A</string>")})
        EXPECT_EQ(RVGitCommandEnvironmentSanitizerConfig(text).blacklistedEnvironmentVariables(),
                  std::nullopt)
            << text;
}

TEST_F(RVGitCommandEnvironmentSanitizerTest, RemovesExactlyTheNamesGiven) {
    RVEnvironment environment = {{"A", "1"}, {"AB", "2"}, {"a", "3"}};
    EXPECT_THAT(RVGitCommandEnvironmentSanitizer::sanitizedEnvironmentForEnvironment(
                    environment, std::vector<std::string>{"A"}),
                ElementsAre(Pair("AB", "2"), Pair("a", "3")));
}

TEST_F(RVGitCommandEnvironmentSanitizerTest, NamesThatAreNotInTheEnvironmentChangeNothing) {
    RVEnvironment environment = {{"A", "1"}};
    RVGitCommandEnvironmentSanitizer sanitizer(environment, std::vector<std::string>{"B"});
    EXPECT_EQ(sanitizer.sanitizedEnvironment(), environment);
    EXPECT_EQ(sanitizer.environment(), environment);
}

TEST_F(RVGitCommandEnvironmentSanitizerTest, AnEmptyListOfNamesIsNotAnAbsentOne) {
    RVEnvironment environment = {{"GIT_DIR", "/x"}, {"HOME", "/h"}};
    EXPECT_EQ(RVGitCommandEnvironmentSanitizer::sanitizedEnvironmentForEnvironment(
                  environment, std::vector<std::string>()),
              environment);
    RVGitCommandEnvironmentSanitizer sanitizer(environment);
    EXPECT_THAT(sanitizer.variablesToRemove(), Optional(Contains("GIT_DIR")));
    EXPECT_THAT(sanitizer.sanitizedEnvironment(), ElementsAre(Pair("HOME", "/h")));
}

TEST_F(RVGitCommandEnvironmentSanitizerTest, OnlyCommandsThatAskForItAreSanitized) {
    const RVRecordingGit recorder = recordingGit();
    auto gitBinary = RVGitBinary::gitBinaryWithPath(recorder.path());
    setEnvironmentVariable("GIT_TRACE2_EVENT", "0");
    setEnvironmentVariable("GIT_PREFIX", "x");
    for (bool sanitizes : {false, true}) {
        auto command = RVGitCommand::gitCommandWithGitBinary(gitBinary);
        command->setGitCommand("version");
        command->setSanitizesEnvironment(sanitizes);
        ASSERT_TRUE(command->run());
        EXPECT_EQ(recorder.lastInvocation().environment.contains("GIT_PREFIX"), !sanitizes);
        EXPECT_EQ(recorder.lastInvocation().environment.contains("GIT_TRACE2_EVENT"), !sanitizes);
    }
}

}  // namespace
