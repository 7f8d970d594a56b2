#include "RVGit/command/RVGitCommand.h"

#include <cerrno>
#include <functional>

#include "RVGit/base/RVErrorManager.h"
#include "RVGit/base/RVString.h"
#include "RVGit/command/RVGitBinary.h"
#include "RVGit/command/RVGitCommandEnvironment.h"
#include "RVGit/command/RVGitCommandProgress.h"
#include "RVGit/command/RVGitConfiguration.h"
#include "RVGit/command/RVGitError.h"
#include "RVGit/repository/RVGitRepository.h"
#include "tests/command/RVGitCommandTestCase.h"

namespace {

using testing::ElementsAre;

class RVGitCommandTest : public RVGitCommandTestCase {};

TEST_F(RVGitCommandTest, ABinaryOrARepositoryIsRequired) {
    EXPECT_THAT([] { RVGitCommand(std::shared_ptr<RVGitBinary>()); },
                testing::ThrowsMessage<RVInvalidParameterException>(
                    "Invalid parameter not satisfying: gitBinary"));
    EXPECT_THAT([] { RVGitCommand(std::shared_ptr<RVGitRepository>()); },
                testing::ThrowsMessage<RVInvalidParameterException>(
                    "Invalid parameter not satisfying: repository"));
}

TEST_F(RVGitCommandTest, AFreshCommandAsksForNothing) {
    RVGitCommand command(realGit());
    EXPECT_FALSE(command.sanitizesEnvironment());
    EXPECT_FALSE(command.isSupportingProgressOutput());
    EXPECT_FALSE(command.isAuthenticationPassed());
    command.setAuthenticationPassed(true);
    EXPECT_TRUE(command.isAuthenticationPassed());
    EXPECT_FALSE(command.gitCommand());
    EXPECT_FALSE(command.gitSubCommand());
    EXPECT_TRUE(command.gitOptions().empty());
    EXPECT_TRUE(command.gitCommandOptions().empty());
    EXPECT_TRUE(command.gitCommandArguments().empty());
    EXPECT_FALSE(command.commandProgress());
    EXPECT_FALSE(command.error());
}

TEST_F(RVGitCommandTest, FactoriesFillThePathsThatTheyAreGiven) {
    const auto binary = realGit();
    auto command = RVGitCommand::gitCommandWithGitBinary(binary, "/a", "/b");
    EXPECT_FALSE(command->repositoryPath());
    EXPECT_EQ(command->gitDirectoryPath(), "/a");
    EXPECT_EQ(command->workingTreeDirectoryPath(), "/b");
    command = RVGitCommand::gitCommandWithGitBinary(binary, "/a");
    EXPECT_EQ(command->repositoryPath(), "/a");
    EXPECT_EQ(command->workingDirectory(), "/a");
    EXPECT_FALSE(command->gitDirectoryPath());
    command = RVGitCommand::gitCommandWithRepositoryPath("/a");
    EXPECT_EQ(command->gitBinary(), RVGitBinary::defaultGitBinary());
    EXPECT_EQ(command->repositoryPath(), "/a");
    const auto repository =
        RVGitRepository::repositoryWithWorkingTreeDirectoryPath("/tree", "/tree/.git");
    command = RVGitCommand::gitCommandWithRepository(repository);
    EXPECT_EQ(command->repositoryPath(), "/tree");
    EXPECT_EQ(command->gitDirectoryPath(), "/tree/.git");
    EXPECT_EQ(command->workingTreeDirectoryPath(), "/tree");
}

TEST_F(RVGitCommandTest, TheCommandLineIsBuiltInItsFixedOrder) {
    const RVRecordingGit recorder = recordingGit();
    const auto binary = RVGitBinary::gitBinaryWithPath(recorder.path());
    binary->setDefaultOptions({"-c", "a.b=default"});
    const std::string repository = initRepository();
    auto command =
        std::make_shared<HookedCommand>(binary, repository, repository + "/.git", repository);
    command->addGitOption("-c");
    command->addGitOptions({"a.b=caller"});
    command->willInitialize = [](HookedCommand& self) {
        self.setGitCommand("stash");
        self.setGitSubCommand("list");
        self.addGitOptions({"-c", "a.b=hook"});
        self.addGitCommandArguments({"--", "path"});
        self.addGitCommandOption("-n1");
        self.addGitCommandOptions({"--oneline"});
        self.addGitCommandArgument("last");
    };
    command->run();
    EXPECT_THAT(recorder.lastInvocation().arguments,
                ElementsAre("--git-dir=" + repository + "/.git", "--work-tree=" + repository,
                            "--no-pager", "-c", "a.b=caller", "-c", "a.b=hook", "-c", "a.b=default",
                            "stash", "list", "-n1", "--oneline", "--", "path", "last"));
    EXPECT_EQ(recorder.lastInvocation().workingDirectory, repository);
}

TEST_F(RVGitCommandTest, ACommandWithoutACommandWordHasItsOptionsAlone) {
    auto command = std::make_shared<HookedCommand>(realGit());
    command->addGitOption("--version");
    EXPECT_TRUE(command->run());
    EXPECT_THAT(command->arguments(), ElementsAre("--no-pager", "--version"));
    EXPECT_THAT(command->standardOutputString(), testing::StartsWith("git version"));
}

TEST_F(RVGitCommandTest, ALibexecPathAddsItsOptionAndVariables) {
    const auto binary = RVGitBinary::gitBinaryWithPath(gitPath(), "/opt/git/libexec/git-core");
    auto command = std::make_shared<HookedCommand>(binary);
    command->addGitOption("--version");
    command->run();
    EXPECT_THAT(command->arguments(),
                ElementsAre("--exec-path=/opt/git/libexec/git-core", "--no-pager", "--version"));
    EXPECT_EQ(command->environment().at("PERL5LIB"), "/opt/git/lib/perl5/site_perl:$PERL5LIB");
    EXPECT_EQ(command->environment().at("GIT_TEMPLATE_DIR"), "/opt/git/share/git-core/templates");
}

TEST_F(RVGitCommandTest, WithoutALibexecPathNeitherVariableIsSet) {
    auto command = scripted("exit 0");
    command->run();
    EXPECT_EQ(command->environment().count("PERL5LIB"), 0u);
    EXPECT_EQ(command->environment().count("GIT_TEMPLATE_DIR"), 0u);
}

TEST_F(RVGitCommandTest, TheFrameOverwritesWhatAHookSaysOfPagerPathAndLocale) {
    auto command = scripted("exit 0");
    command->willInitialize = [](HookedCommand& self) {
        self.addEnvironmentVariables({{"GIT_PAGER", "less"},
                                      {"LANG", "de_DE.UTF-8"},
                                      {"LC_ALL", "de_DE.UTF-8"},
                                      {"GIT_EDITOR", "editor"},
                                      {"SHARED", "hook"}});
    };
    RVGitCommandEnvironment::sharedEnvironment().setValuesFromDictionary(
        {{"SHARED", "shared"}, {"ONLY_SHARED", "shared"}});
    command->run();
    const RVEnvironment environment = command->environment();
    EXPECT_EQ(environment.at("GIT_PAGER"), "");
    EXPECT_EQ(environment.at("LANG"), "en_US.UTF-8");
    EXPECT_EQ(environment.at("LC_ALL"), "en_US.UTF-8");
    EXPECT_EQ(environment.at("GIT_EDITOR"), "editor");
    EXPECT_EQ(environment.at("SHARED"), "hook");
    EXPECT_EQ(environment.at("ONLY_SHARED"), "shared");
}

TEST_F(RVGitCommandTest, TheBinarysDirectoryGoesToTheFrontOfThePathUnlessItIsThere) {
    const auto pathFor = [&](const std::string& path, std::vector<std::string> additional) {
        auto command = scripted("exit 0");
        command->gitBinary()->setAdditionalPaths(std::move(additional));
        command->willInitialize = [&](HookedCommand& self) {
            self.setValueForEnvironmentVariable(path, "PATH");
        };
        command->run();
        return command->environment().at("PATH");
    };
    const std::string directory = scratchPath("scripted");
    EXPECT_EQ(pathFor("/bin:/usr/bin", {}), directory + ":/bin:/usr/bin");
    EXPECT_EQ(pathFor("/bin:" + directory, {}), "/bin:" + directory);
    EXPECT_EQ(pathFor("/bin:" + directory, {"/x", "/bin"}), "/x:/bin:/bin:" + directory);
}

TEST_F(RVGitCommandTest, WithoutAPathTheBinarysDirectoryIsThePath) {
    auto command = scripted("exit 0");
    command->willInitialize = [](HookedCommand& self) {
        self.setValueForEnvironmentVariable(std::nullopt, "PATH");
    };
    command->run();
    EXPECT_EQ(command->environment().at("PATH"), scratchPath("scripted"));
}

TEST_F(RVGitCommandTest, SanitizingComesBeforeTheSharedVariables) {
    setEnvironmentVariable("GIT_DIR", "/elsewhere");
    setEnvironmentVariable("GIT_INDEX_FILE", "/elsewhere/index");
    RVGitCommandEnvironment::sharedEnvironment().setValueForEnvironmentVariable("/shared",
                                                                                "GIT_DIR");
    auto command = scripted("exit 0");
    command->setSanitizesEnvironment(true);
    command->run();
    EXPECT_EQ(command->environment().at("GIT_DIR"), "/shared");
    EXPECT_EQ(command->environment().count("GIT_INDEX_FILE"), 0u);
    auto unsanitized = scripted("exit 0");
    unsanitized->run();
    EXPECT_EQ(unsanitized->environment().count("GIT_INDEX_FILE"), 1u);
}

TEST_F(RVGitCommandTest, TheWholeProcessMaySanitizeWhatItsCommandsInherit) {
    const std::string other = initRepository("other");
    commitFile(other, "file", "text", "Other");
    makeCommit();
    for (const char* name : {"GIT_DIR", "GIT_INDEX_FILE", "GIT_OBJECT_DIRECTORY"})
        setEnvironmentVariable(name,
                               other + "/.git" + (std::string(name) == "GIT_DIR" ? "" : "/x"));
    setEnvironmentVariable("GIT_EDITOR", "inherited");
    const auto environmentOf = [&] {
        auto command = scripted("exit 0");
        // What a command is given by its caller is not inherited.
        command->setValueForEnvironmentVariable("own", "GIT_SEQUENCE_EDITOR");
        command->willInitialize = [](HookedCommand& self) {
            self.setValueForEnvironmentVariable("hook", "GIT_SSH_COMMAND");
        };
        command->run();
        return command->environment();
    };
    EXPECT_EQ(environmentOf().count("GIT_INDEX_FILE"), 1u) << "off unless set";
    RVGitConfiguration::sharedConfiguration().setSanitizesInheritedEnvironment(true);
    RVGitCommandEnvironment::sharedEnvironment().setValueForEnvironmentVariable(
        "shared", "GIT_EXTERNAL_DIFF");
    const RVEnvironment environment = environmentOf();
    // A command that the library makes for itself, by way of an explicit path.
    const auto opened = RVGitRepository::repositoryWithPath(repositoryPath());
    const auto head = opened->isValid() ? std::optional(opened->gitDirectoryPath()) : std::nullopt;
    RVGitConfiguration::sharedConfiguration().setSanitizesInheritedEnvironment(false);
    for (const char* name : {"GIT_DIR", "GIT_INDEX_FILE", "GIT_OBJECT_DIRECTORY", "GIT_EDITOR"})
        EXPECT_EQ(environment.count(name), 0u) << name;
    EXPECT_EQ(environment.at("GIT_SEQUENCE_EDITOR"), "own");
    EXPECT_EQ(environment.at("GIT_SSH_COMMAND"), "hook");
    EXPECT_EQ(environment.at("GIT_EXTERNAL_DIFF"), "shared");
    EXPECT_EQ(head, repositoryPath() + "/.git");
}

TEST_F(RVGitCommandTest, TheDirectoryOptionsCanBeRemovedFromTheFinalArguments) {
    auto command = std::make_shared<HookedCommand>(scriptedGit("exit 0"), std::nullopt, "/g", "/w");
    command->setGitCommand("status");
    command->didInitialize = [](HookedCommand& self) {
        self.removeGitDirOption();
        self.removeWorkTreeOption();
    };
    command->run();
    EXPECT_THAT(command->arguments(), ElementsAre("--no-pager", "status"));
}

TEST_F(RVGitCommandTest, Exactly4096ArgumentsLaunchAndOneMoreRaises) {
    auto command = scripted("exit 0");
    command->setGitCommandArguments(std::vector<std::string>(4095, "x"));
    EXPECT_TRUE(command->run());
    EXPECT_EQ(command->arguments().size(), 4096u);

    command = scripted("exit 0");
    command->setGitCommandArguments(std::vector<std::string>(4096, "x"));
    try {
        command->run();
        ADD_FAILURE() << "nothing was raised";
    } catch (const RVGitCommandArgumentsOverflowException& exception) {
        EXPECT_STREQ(exception.name(), "RVGitCommandArgumentsOverflowException");
        EXPECT_EQ(exception.reason(), "Too many arguments for a Git command (4097).");
        EXPECT_TRUE(exception.userInfo().contains(RVGitCommandCallErrorKey));
    }
    EXPECT_THAT(command->calls, ElementsAre("willInitialize", "didInitialize"));
}

TEST_F(RVGitCommandTest, TheOverflowsTextCanBeReplaced) {
    setLocalizedString("GIT_COMMAND_ARGUMENTS_OVERFLOW", "%d Argumente sind zu viele.");
    auto command = scripted("exit 0");
    EXPECT_EQ(
        RVGitCommand::gitCommandArgumentsOverflowExceptionWithGitCommand(*command, {}).reason(),
        "0 Argumente sind zu viele.");
    setLocalizedString("GIT_COMMAND_ARGUMENTS_OVERFLOW",
                       "Too many arguments for a Git command (%d).");
}

TEST_F(RVGitCommandTest, AFailureIsMappedAndNotParsed) {
    auto command = scripted("printf out; echo nonsense >&2; exit 3");
    int completions = 0;
    command->setCompletionHandler([&](RVGitCommand&) { ++completions; });
    std::optional<RVError> error;
    EXPECT_FALSE(command->run(&error));
    EXPECT_THAT(command->calls, ElementsAre("willInitialize", "didInitialize", "didTerminate",
                                            "willUseUserInfo", "shouldHandle"));
    ASSERT_TRUE(error);
    EXPECT_EQ(error->domain(), RVGitErrorDomain);
    EXPECT_EQ(error->code(), RVGitRVGitGenericError);
    EXPECT_EQ(error, command->error());
    EXPECT_EQ(completions, 1);
}

TEST_F(RVGitCommandTest, ADeclinedFailureIsASuccessAndParsed) {
    auto command = scripted("exit 1");
    command->shouldHandle = [](const RVError& error) {
        EXPECT_EQ(error.code(), RVGitRVGitGenericError);
        return false;
    };
    std::optional<RVError> error;
    EXPECT_TRUE(command->run(&error));
    EXPECT_FALSE(error);
    EXPECT_EQ(command->calls.back(), "willParse");
}

TEST_F(RVGitCommandTest, StandardErrorTextWithExitCodeZeroIsASuccess) {
    auto command = scripted("echo 'fatal: Not a git repository' >&2");
    EXPECT_TRUE(command->run());
}

TEST_F(RVGitCommandTest, AParserFailsTheCommandOnlyWithARecord) {
    auto failing = scripted("exit 0");
    failing->willParse = [](RVErrorPlace error) {
        fillErrorPlace(error, gitErrorWithCode(RVGitOutputParserError));
        return false;
    };
    EXPECT_THAT(failing, failsWith(RVGitOutputParserError));

    auto silent = scripted("exit 0");
    silent->willParse = [](RVErrorPlace) { return false; };
    EXPECT_TRUE(silent->run());

    auto contradictory = scripted("exit 0");
    contradictory->willParse = [](RVErrorPlace place) {
        fillErrorPlace(place, gitErrorWithCode(RVGitOutputParserError));
        return true;
    };
    EXPECT_TRUE(contradictory->run());
}

TEST_F(RVGitCommandTest, AHookMayStoreAnErrorAlthoughTheExitCodeIsZero) {
    auto command = scripted("exit 0");
    command->didTerminate = [](HookedCommand& self) { self.setError(gitErrorWithCode(1200)); };
    EXPECT_THAT(command, failsWith(1200));
}

TEST_F(RVGitCommandTest, AnErrorSaysAllThatIsKnown) {
    const std::string directory = makeDirectory("somewhere");
    auto command = std::make_shared<HookedCommand>(
        scriptedGit("printf out; echo 'fatal: Not a git repository' >&2; exit 128"), directory);
    command->setGitCommand("log");
    command->willUseUserInfo = [](RVUserInfo userInfo) {
        EXPECT_FALSE(userInfo.contains(RVLocalizedDescriptionErrorKey));
        EXPECT_FALSE(userInfo.contains(RVLocalizedFailureReasonErrorKey));
        userInfo.emplace(RVGitRefNameErrorKey, "main");
        return userInfo;
    };
    std::optional<RVError> error;
    EXPECT_FALSE(command->run(&error));
    ASSERT_TRUE(error);
    EXPECT_EQ(error->code(), RVGitNoGitRepoError);
    EXPECT_EQ(error->userInfoString(RVGitBinaryVersionErrorKey), "2.39.5");
    EXPECT_EQ(error->userInfoString(RVGitCommandCallErrorKey), command->commandCall());
    EXPECT_EQ(error->userInfo().at(RVGitCommandExitCodeErrorKey).integerValue(), 128);
    EXPECT_EQ(error->userInfoString(RVGitRepositoryPathErrorKey), directory);
    EXPECT_EQ(error->userInfoString(RVGitCommandErrorOutputErrorKey),
              "fatal: Not a git repository\n");
    EXPECT_EQ(error->userInfoString(RVGitCommandStandardOutputErrorKey), "out");
    EXPECT_EQ(error->userInfo().at(RVGitCommandEnvironmentErrorKey).stringMap()->at("LANG"),
              "en_US.UTF-8");
    EXPECT_EQ(error->userInfoString(RVGitRefNameErrorKey), "main");
    EXPECT_EQ(error->localizedDescription(), "No Git Repository Found");
    EXPECT_EQ(error->localizedFailureReason(),
              "The path “" + directory + "” does not contain a valid Git repository.");
}

TEST_F(RVGitCommandTest, WhatCannotBeLaunchedHasCode100AndNoUserInfo) {
    const std::string notExecutable = writeFile("plain", "#!/bin/sh\n", 0644);
    const std::vector<std::shared_ptr<HookedCommand>> commands = {
        std::make_shared<HookedCommand>(RVGitBinary::gitBinaryWithPath(scratchPath("missing"))),
        std::make_shared<HookedCommand>(RVGitBinary::gitBinaryWithPath(notExecutable)),
        std::make_shared<HookedCommand>(realGit(), scratchPath("missing-directory"))};
    for (const auto& command : commands) {
        bool completed = false;
        command->setCompletionHandler([&](RVGitCommand&) { completed = true; });
        command->setGitCommand("status");
        command->setSupportsProgressOutput(true);
        command->setProgressHandler([](RVGitCommandProgress&) { ADD_FAILURE() << "progress"; });
        std::optional<RVError> error;
        EXPECT_FALSE(command->run(&error));
        ASSERT_TRUE(error);
        EXPECT_EQ(error, gitErrorWithCode(RVGitNoGitRepoError));
        EXPECT_FALSE(completed);
        EXPECT_EQ(command->launchErrorNumber(), command == commands[1] ? EACCES : ENOENT);
        EXPECT_THAT(command->calls, ElementsAre("willInitialize", "didInitialize"));
    }
}

TEST_F(RVGitCommandTest, WhatHoldsANULIsNotLaunched) {
    using namespace std::string_literals;
    const std::vector<std::function<void(HookedCommand&)>> changes = {
        [](HookedCommand& command) { command.addGitCommandArgument("notes\0yz"s); },
        [](HookedCommand& command) { command.addGitOption("-c\0"s); },
        [](HookedCommand& command) { command.setGitDirectoryPath(".git\0x"s); },
        [](HookedCommand& command) {
            command.setValueForEnvironmentVariable("a\0b"s, "GIT_EDITOR");
        },
    };
    for (const auto& change : changes) {
        auto command = scripted(": > \"$MARKER\"");
        command->setValueForEnvironmentVariable(scratchPath("launched"), "MARKER");
        change(*command);
        std::optional<RVError> error;
        EXPECT_FALSE(command->run(&error));
        EXPECT_EQ(error, gitErrorWithCode(RVGitNoGitRepoError));
        EXPECT_EQ(command->launchErrorNumber(), EINVAL);
        EXPECT_FALSE(fileExists("launched"));
    }
}

TEST_F(RVGitCommandTest, GitsMessagesAreEnglishWhateverTheCallersLocale) {
    const auto codeOfFailure = [&] {
        auto command = std::make_shared<HookedCommand>(realGit(), scratchDirectory());
        command->setGitCommand("status");
        std::optional<RVError> error;
        EXPECT_FALSE(command->run(&error));
        return error ? error->code() : 0;
    };
    for (const char* name : {"LANGUAGE", "LANG", "LC_ALL", "LC_MESSAGES"})
        setEnvironmentVariable(name, name == std::string("LANGUAGE") ? "de" : "de_DE.UTF-8");
    EXPECT_EQ(codeOfFailure(), RVGitNoGitRepoError);
    // No locale at all is to be found below an empty directory.
    setEnvironmentVariable("LOCPATH", makeDirectory("no-locales"));
    EXPECT_EQ(codeOfFailure(), RVGitNoGitRepoError);
}

}  // namespace
