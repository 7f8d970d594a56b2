#include "RVGit/remotes/RVGitCredentialCommand.h"

#include "RVGit/command/RVGitError.h"
#include "RVGit/remotes/RVGitCredentials.h"
#include "tests/support/RVDamagedOutput.h"
#include "tests/support/RVFailureCode.h"
#include "tests/support/RVGitRepositoryTestCase.h"
#include "tests/support/RVTestFiles.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

using Command = RVGitCredentialCommand;

class RVGitCredentialCommandTest : public RVGitRepositoryTestCase {
protected:
    /// One helper of git's, as the only one.
    void useHelper(const std::string& helper) {
        writeFile("home/.gitconfig", "[credential]\n\thelper = " + helper + "\n");
        setEnvironmentVariable("HOME", scratchPath("home"));
    }
    /// A helper that prints these lines whatever it is asked.
    void useHelperThatPrints(const std::string& lines) {
        writeFile("answer", lines);
        useHelper(writeFile(
            "helper",
            "#!/bin/sh\n[ \"$1\" != get ] || cat " + quotedForShell(scratchPath("answer")) + "\n",
            0755));
    }
    static std::shared_ptr<Command> fill(const std::string& url) {
        return Command::gitFillCredentialCommandWithHTTPURL(RVURL(url));
    }
    static std::shared_ptr<Command> approve(const std::string& url,
                                            const std::string& username = "marie",
                                            const std::string& password = "radium") {
        return Command::gitApproveCredentialCommandWithHTTPURL(RVURL(url), username, password);
    }
    static std::shared_ptr<Command> reject(const std::string& url) {
        return Command::gitRejectCredentialCommandWithHTTPURL(RVURL(url));
    }
};

TEST_F(RVGitCredentialCommandTest, ArgumentsAndRequestOfEachForm) {
    useHelperThatPrints("username=u\npassword=p\n");
    const RVRecordingGit recorder = useRecordingGit();
    const auto expectCall = [&](Command& command, const char* word, const std::string& request) {
        (void)command.run();
        EXPECT_THAT(recorder.lastInvocation().arguments,
                    ElementsAre("--no-pager", "credential", word));
        EXPECT_EQ(recorder.lastInvocation().standardInput, request);
        EXPECT_EQ(command.inputString(), request);
    };
    expectCall(*fill("https://me:x@Host/a?q#f"), "fill", "url=https://host/a\n\n");
    expectCall(*reject("https://host:8443"), "reject", "url=https://host:8443\n\n");
    expectCall(*approve("https://host"), "approve",
               "protocol=https\nhost=host\nusername=marie\npassword=radium\n\n");
    expectCall(*approve("https://host:8443/a/b%20c/"), "approve",
               "protocol=https\nhost=host:8443\npath=a/b c/\nusername=marie\npassword=radium\n\n");
    expectCall(*approve("https://host/"), "approve",
               "protocol=https\nhost=host\npath=/\nusername=marie\npassword=radium\n\n");
    expectCall(*approve("https://[::1]:1/a", "a=b", "c=d%0A\r"), "approve",
               "protocol=https\nhost=[::1]:1\npath=a\nusername=a=b\npassword=c=d%0A\r\n\n");
}

TEST_F(RVGitCredentialCommandTest, OptionsChooseTheForm) {
    const RVRecordingGit recorder = useRecordingGit();
    const auto argumentsWith = [&](const std::optional<RVOptions>& options) {
        const auto command = std::make_shared<Command>(options);
        command->setHttpURL(RVURL("https://host"));
        (void)command->run();
        return recorder.lastInvocation().arguments;
    };
    EXPECT_THAT(argumentsWith(RVOptions{{"RVGitCredentialOptionFill", true},
                                        {"RVGitCredentialOptionApprove", true},
                                        {"RVGitCredentialOptionAccept", true}}),
                ElementsAre("--no-pager", "credential", "fill"));
    EXPECT_THAT(argumentsWith(RVOptions{{"RVGitCredentialOptionApprove", true},
                                        {"RVGitCredentialOptionAccept", true}}),
                ElementsAre("--no-pager", "credential", "approve"));
    EXPECT_THAT(argumentsWith(RVOptions{{"RVGitCredentialOptionAccept", true}}),
                ElementsAre("--no-pager", "credential", "reject"));
    EXPECT_STREQ(RVGitCredentialOptionReject, "RVGitCredentialOptionAccept");
    // The word that it does not have.
    EXPECT_THAT(argumentsWith(RVOptions{{"RVGitCredentialOptionReject", true}}),
                ElementsAre("--no-pager", "credential"));
    EXPECT_THAT(argumentsWith(std::nullopt), ElementsAre("--no-pager", "credential"));
    EXPECT_EQ(recorder.lastInvocation().standardInput, "");
}

TEST_F(RVGitCredentialCommandTest, TheFirstFormThatIsSetMakesTheRequest) {
    const auto command = approve("https://host");
    command->setRejectsCredential(true);
    EXPECT_THAT(command->inputString(), testing::StartsWith("protocol="));
    command->setFillsCredential(true);
    EXPECT_EQ(command->inputString(), "url=https://host\n\n");
    EXPECT_EQ(std::make_shared<Command>(std::nullopt)->inputString(), "");
}

TEST_F(RVGitCredentialCommandTest, HasNoRepository) {
    EXPECT_EQ(fill("https://host")->gitDirectoryPath(), std::nullopt);
    EXPECT_EQ(fill("https://host")->repositoryPath(), std::nullopt);
    EXPECT_FALSE(fill("https://host")->isSupportingProgressOutput());
}

TEST_F(RVGitCredentialCommandTest, WhatWouldBeAnotherLineOfTheRequestIsRefusedWithoutAChild) {
    const RVRecordingGit recorder = useRecordingGit();
    const std::string nul("a\0b", 3);
    for (const std::string& text : {std::string("a\nhost=evil"), nul}) {
        EXPECT_THAT(approve("https://host", text), failsWith(RVGitRVGitGenericError));
        EXPECT_THAT(approve("https://host", "marie", text), failsWith(RVGitRVGitGenericError));
        for (const std::string& url : {"https://host/" + text, "https://" + text + "/"}) {
            EXPECT_THAT(approve(url), failsWith(RVGitRVGitGenericError));
            EXPECT_THAT(fill(url), failsWith(RVGitRVGitGenericError));
            EXPECT_THAT(reject(url), failsWith(RVGitRVGitGenericError));
        }
    }
    // The same behind an escape.
    for (const std::string escape : {"%0A", "%0a", "%00", "%0D", "\r"}) {
        for (const std::string& url :
             {"https://host/a" + escape, "https://ho" + escape + "st/", "https://host" + escape}) {
            EXPECT_THAT(approve(url), failsWith(RVGitRVGitGenericError)) << url;
            EXPECT_THAT(fill(url), failsWith(RVGitRVGitGenericError)) << url;
            EXPECT_THAT(reject(url), failsWith(RVGitRVGitGenericError)) << url;
        }
        const auto command =
            std::make_shared<Command>(RVOptions{{RVGitCredentialOptionFill, true}});
        command->setHttpURL(RVURL("https://us" + escape + "er:x@host/"));
        EXPECT_THAT(command, failsWith(RVGitRVGitGenericError)) << escape;
        const auto other = std::make_shared<Command>(RVOptions{{RVGitCredentialOptionFill, true}});
        other->setHttpURL(RVURL("https://user:x" + escape + "@host/"));
        EXPECT_THAT(other, failsWith(RVGitRVGitGenericError)) << escape;
        // Where no component is decoded, git still decodes the whole address.
        for (const std::string rest : {"?a=", "#a"}) {
            const auto whole =
                std::make_shared<Command>(RVOptions{{RVGitCredentialOptionFill, true}});
            whole->setHttpURL(RVURL("https://host/" + rest + escape + "host=evil"));
            EXPECT_THAT(whole, failsWith(RVGitRVGitGenericError)) << rest << escape;
        }
    }
    EXPECT_THAT(recorder.invocations(), IsEmpty());
}

TEST_F(RVGitCredentialCommandTest, GitsOwnStoreKeepsFindsAndForgets) {
    useHelper("store");
    EXPECT_NE(codeOf(*fill("https://host/a")), 0);
    ASSERT_EQ(codeOf(*approve("https://host/a", "marie", "rad ium:@/%")), 0);
    for (const char* url : {"https://host/a", "https://HOST/b", "https://pierre:x@host/c?d"}) {
        const auto found = fill(url);
        ASSERT_EQ(codeOf(*found), 0) << url;
        ASSERT_TRUE(found->credentials());
        EXPECT_EQ(found->credentials()->scheme(), "https");
        EXPECT_EQ(found->credentials()->host(), "host");
        EXPECT_EQ(found->credentials()->user(), "marie");
        EXPECT_EQ(found->credentials()->password(), "rad ium:@/%");
    }
    for (const char* url : {"https://host:444/a", "http://host/a", "https://other/a"})
        EXPECT_NE(codeOf(*fill(url)), 0) << url;
    ASSERT_EQ(codeOf(*reject("https://host")), 0);
    EXPECT_NE(codeOf(*fill("https://host/a")), 0);
}

TEST_F(RVGitCredentialCommandTest, APortBelongsToTheHost) {
    useHelper("store");
    for (const char* port : {":443", ":8443"}) {
        const std::string url = "https://host" + std::string(port) + "/a";
        ASSERT_EQ(codeOf(*approve(url, "marie", port)), 0);
        const auto found = fill(url);
        ASSERT_EQ(codeOf(*found), 0);
        EXPECT_EQ(found->credentials()->host(), "host" + std::string(port));
        EXPECT_EQ(found->credentials()->password(), port);
    }
}

TEST_F(RVGitCredentialCommandTest, ByPathWhereGitIsToldSo) {
    useHelper("store\n\tuseHttpPath = true");
    ASSERT_EQ(codeOf(*approve("https://host/a/b", "marie", "one")), 0);
    ASSERT_EQ(codeOf(*approve("https://host/c%20d", "marie", "two")), 0);
    const auto found = fill("https://host/a/b");
    ASSERT_EQ(codeOf(*found), 0);
    EXPECT_EQ(found->credentials()->path(), "a/b");
    EXPECT_EQ(found->credentials()->password(), "one");
    const auto other = fill("https://host/c%20d");
    ASSERT_EQ(codeOf(*other), 0);
    EXPECT_EQ(other->credentials()->password(), "two");
    EXPECT_NE(codeOf(*fill("https://host/e")), 0);
}

TEST_F(RVGitCredentialCommandTest, GitsOwnCacheKeepsFindsAndForgets) {
    const std::string socket = scratchPath("cache/socket");
    useHelper("cache --socket " + socket);
    ASSERT_EQ(codeOf(*approve("https://host/a")), 0);
    const auto found = fill("https://host/a");
    EXPECT_EQ(codeOf(*found), 0);
    ASSERT_TRUE(found->credentials());
    EXPECT_EQ(found->credentials()->password(), "radium");
    ASSERT_EQ(codeOf(*reject("https://host/a")), 0);
    EXPECT_NE(codeOf(*fill("https://host/a")), 0);
    git({"credential-cache", "--socket", socket, "exit"});
}

TEST_F(RVGitCredentialCommandTest, AHelperOfTheTestAnswers) {
    useHelperThatPrints("username=marie\npassword=radium\n");
    const auto found = fill("https://host:1/a");
    ASSERT_EQ(codeOf(*found), 0);
    ASSERT_TRUE(found->credentials());
    EXPECT_EQ(found->credentials()->scheme(), "https");
    EXPECT_EQ(found->credentials()->host(), "host:1");
    EXPECT_EQ(found->credentials()->path(), std::nullopt);
}

TEST_F(RVGitCredentialCommandTest, AValueIsCutAtAnEqualsSign) {
    useHelperThatPrints("username=ma=rie\npassword=radi=um=\n");
    const auto found = fill("https://host/a");
    ASSERT_EQ(codeOf(*found), 0);
    EXPECT_EQ(found->credentials()->user(), "ma");
    EXPECT_EQ(found->credentials()->password(), "radi");
}

TEST_F(RVGitCredentialCommandTest, AnotherKeyFailsWith11) {
    RVFakeGit fake = useFakeGit();
    const std::string answer = "protocol=https\nhost=host\nusername=marie\npassword=radium\n";
    for (const char* line :
         {"capability[]=authtype\n", "password_expiry_utc=1577934245\n", "oauth_refresh_token=x\n",
          "quit=1\n", "=x\n", "noequals\n", "Username=x\n"}) {
        fake.setAnswer({.standardOutput = answer + line});
        const auto command = fill("https://host/a");
        std::optional<RVError> error;
        EXPECT_FALSE(command->run(&error));
        ASSERT_TRUE(error);
        EXPECT_EQ(error->code(), RVGitOutputParserError);
        EXPECT_EQ(error->userInfo().at(RVGitOutputParserNameErrorKey),
                  "RVGitCredentialOutputParser");
        EXPECT_EQ(error->userInfo().at(RVGitOutputParserLineErrorKey).displayString() + "\n", line);
    }
}

TEST_F(RVGitCredentialCommandTest, AnAnswerThatLacksSomethingIsASuccessWithoutCredentials) {
    RVFakeGit fake = useFakeGit();
    for (const char* answer :
         {"", "\n", "protocol=https\nhost=host\nusername=marie\n",
          "protocol=https\nhost=host\npassword=x\n", "host=host\nusername=marie\npassword=x\n",
          "protocol=https\nusername=marie\npassword=x\n"}) {
        fake.setAnswer({.standardOutput = answer});
        const auto command = fill("https://host/a");
        EXPECT_EQ(codeOf(*command), 0) << answer;
        EXPECT_FALSE(command->credentials()) << answer;
    }
    fake.setAnswer({.standardOutput = "protocol=\nhost=\nusername=\npassword=\n"});
    const auto command = fill("https://host/a");
    EXPECT_EQ(codeOf(*command), 0);
    ASSERT_TRUE(command->credentials());
    EXPECT_EQ(command->credentials()->password(), "");
}

TEST_F(RVGitCredentialCommandTest, WithoutAnybodyWhoKnowsItFailsAtOnce) {
    EXPECT_THAT(fill("https://host/a"), failsWith(RVGitRVGitGenericError));
}

TEST_F(RVGitCredentialCommandTest, DamagedAnswersAreReadOrRefused) {
    const std::string answer =
        "protocol=https\nhost=host\npath=a/ä\nusername=marie\npassword=ra=dium\n";
    for (const auto& damaged : damagedOutputs(answer)) {
        RVGitCredentialOutputParser parser(damaged);
        std::optional<RVError> error;
        if (!parser.parse(&error)) {
            EXPECT_EQ(error.value().code(), RVGitOutputParserError);
        }
        for (const auto& value :
             {parser.scheme(), parser.host(), parser.path(), parser.user(), parser.password()})
            EXPECT_EQ(value.value_or("").find('='), std::string::npos);
    }
}

TEST_F(RVGitCredentialCommandTest, AFailureDoesNotTellThePassword) {
    const std::string secret = "radium-226";
    RVFakeGit fake = useFakeGit();
    fake.setAnswer({.exitCode = 128});
    std::optional<RVError> error;
    EXPECT_FALSE(approve("https://host/a", "marie", secret)->run(&error));
    ASSERT_TRUE(error);
    for (const auto& [key, value] : error->userInfo())
        EXPECT_THAT(value.displayString(), testing::Not(testing::HasSubstr(secret))) << key;
}

}  // namespace
