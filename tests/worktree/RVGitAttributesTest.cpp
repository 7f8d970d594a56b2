#include "RVGit/worktree/RVGitAttributes.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "RVGit/command/RVGitError.h"
#include "RVGit/repository/RVGitRepository.h"
#include "tests/support/RVGitRepositoryTestCase.h"

namespace {

using testing::IsEmpty;
using testing::Optional;
using testing::SizeIs;

class RVGitAttributesTest : public RVGitRepositoryTestCase {
protected:
    std::vector<std::shared_ptr<RVGitAttributes>> effective(
        const std::vector<std::string>& filePaths) {
        std::optional<RVError> error;
        auto list =
            RVGitAttributes::allEffectiveGitAttributesForFilePaths(filePaths, repository(), &error);
        EXPECT_TRUE(list.has_value());
        EXPECT_FALSE(error.has_value());
        return list.value_or(std::vector<std::shared_ptr<RVGitAttributes>>());
    }
};

TEST_F(RVGitAttributesTest, KnowsItsFields) {
    const auto attributes =
        RVGitAttributes::gitAttributesWithRepository(repository(), "a b", {{"text", "set"}});
    EXPECT_EQ(attributes->repository(), repository());
    EXPECT_EQ(attributes->filePath(), "a b");
    EXPECT_EQ(attributes->attributes(), (RVValue::StringMap{{"text", "set"}}));
    EXPECT_THROW((void)RVGitAttributes::gitAttributesWithRepository(nullptr, "a", {}),
                 RVInvalidParameterException);
}

TEST_F(RVGitAttributesTest, AnAttributeIsSetUnlessItIsUnspecified) {
    const auto attributes =
        RVGitAttributes::gitAttributesWithRepository(repository(), "a",
                                                     {{"text", "set"},
                                                      {"diff", "unset"},
                                                      {"eol", "lf"},
                                                      {"filter", ""},
                                                      {"merge", "unspecified"}});
    for (const char* name : {"text", "diff", "eol", "filter"})
        EXPECT_TRUE(attributes->isGitAttributeSetWithName(name)) << name;
    EXPECT_FALSE(attributes->isGitAttributeSetWithName("merge"));
    EXPECT_FALSE(attributes->isGitAttributeSetWithName("missing"));
    EXPECT_EQ(attributes->valueForGitAttributeWithName("text"), "set");
    EXPECT_EQ(attributes->valueForGitAttributeWithName("diff"), "unset");
    EXPECT_EQ(attributes->valueForGitAttributeWithName("eol"), "lf");
    EXPECT_EQ(attributes->valueForGitAttributeWithName("filter"), "");
    EXPECT_EQ(attributes->valueForGitAttributeWithName("merge"), "unspecified");
    EXPECT_EQ(attributes->valueForGitAttributeWithName("missing"), std::nullopt);
}

TEST_F(RVGitAttributesTest, TheFormsThatReadLinesFailWith11OnRealGit) {
    EXPECT_THAT(
        [&](RVErrorPlace error) {
            return RVGitAttributes::allGitAttributesForFilePaths({"a", "b"}, repository(), error);
        },
        failsWith(RVGitOutputParserError));
    EXPECT_THAT(
        [&](RVErrorPlace error) {
            return RVGitAttributes::gitAttributesForFilePath("a", repository(), error);
        },
        failsWith(RVGitOutputParserError));
}

TEST_F(RVGitAttributesTest, ReadsOneObjectForEachPathThatGitReports) {
    useFakeGit().setAnswer(
        {.standardOutput = "a: text: set\na: diff: unset\nb: text: auto\na: eol: lf\n"});
    const auto list = RVGitAttributes::allGitAttributesForFilePaths({"a", "b"}, repository());
    ASSERT_THAT(list, Optional(SizeIs(3)));
    EXPECT_EQ((*list)[0]->filePath(), "a");
    EXPECT_EQ((*list)[0]->repository(), repository());
    EXPECT_EQ((*list)[0]->attributes(), (RVValue::StringMap{{"text", "set"}, {"diff", "unset"}}));
    EXPECT_EQ((*list)[1]->filePath(), "b");
    const auto last = RVGitAttributes::gitAttributesForFilePath("a", repository());
    ASSERT_NE(last, nullptr);
    EXPECT_EQ(last->attributes(), (RVValue::StringMap{{"eol", "lf"}}));
}

TEST_F(RVGitAttributesTest, APathThatGitDoesNotReportHasNoAttributes) {
    useFakeGit().setAnswer({});
    EXPECT_THAT(RVGitAttributes::allGitAttributesForFilePaths({"a"}, repository()),
                Optional(IsEmpty()));
    const auto attributes = RVGitAttributes::gitAttributesForFilePath("a", repository());
    ASSERT_NE(attributes, nullptr);
    EXPECT_EQ(attributes->filePath(), "a");
    EXPECT_THAT(attributes->attributes(), IsEmpty());
}

TEST_F(RVGitAttributesTest, TellsTheEffectiveAttributes) {
    writeFile("repository/.gitattributes",
              "*.c text diff=cpp -merge filter= custom\n*.bin binary\n");
    writeFile("repository/dir/.gitattributes", "*.c !text eol=crlf whitespace=trailing,-space\n");
    const auto list = effective({"a.c", "dir/b.c", "c", "x.bin"});
    ASSERT_THAT(list, SizeIs(4));
    EXPECT_EQ(list[0]->filePath(), "a.c");
    EXPECT_THAT(list[0]->attributes(), SizeIs(11));
    EXPECT_EQ(list[0]->valueForGitAttributeWithName("text"), "set");
    EXPECT_EQ(list[0]->valueForGitAttributeWithName("diff"), "cpp");
    EXPECT_EQ(list[0]->valueForGitAttributeWithName("merge"), "unset");
    EXPECT_EQ(list[0]->valueForGitAttributeWithName("filter"), "");
    EXPECT_FALSE(list[0]->isGitAttributeSetWithName("eol"));
    EXPECT_EQ(list[1]->valueForGitAttributeWithName("text"), "unspecified");
    EXPECT_EQ(list[1]->valueForGitAttributeWithName("eol"), "crlf");
    EXPECT_EQ(list[1]->valueForGitAttributeWithName("whitespace"), "trailing,-space");
    EXPECT_FALSE(list[2]->isGitAttributeSetWithName("text"));
    EXPECT_EQ(list[3]->valueForGitAttributeWithName("text"), "unset");
}

TEST_F(RVGitAttributesTest, NamesOutsideTheElevenAreNeverThere) {
    writeFile("repository/.gitattributes", "* custom binary linguist-vendored\n");
    const auto list = effective({"a"});
    ASSERT_THAT(list, SizeIs(1));
    for (const char* name : {"custom", "binary", "linguist-vendored", "working-tree-encoding"})
        EXPECT_EQ(list[0]->valueForGitAttributeWithName(name), std::nullopt) << name;
}

TEST_F(RVGitAttributesTest, NoPathsHaveNoAttributes) {
    EXPECT_THAT(effective({}), IsEmpty());
}

TEST_F(RVGitAttributesTest, AnEmptyPathAtTheEndHasNoObject) {
    EXPECT_THAT(effective({""}), IsEmpty());
    const auto list = effective({"", "a", "", "b", ""});
    std::vector<std::string> paths;
    for (const auto& attributes : list)
        paths.push_back(attributes->filePath());
    EXPECT_THAT(paths, testing::ElementsAre("", "a", "", "b"));
}

TEST_F(RVGitAttributesTest, PathsOfAnyShapeKeepTheirPlaces) {
    writeFile("repository/.gitattributes", "*.c text\n");
    const std::vector<std::string> paths = {"-f.c",
                                            ":colon: blank.c",
                                            "a*b?[c].c",
                                            " blanks .c",
                                            "tab\tnewline\nend.c",
                                            "quote\"back\\slash.c",
                                            "arrow -> arrow.c",
                                            "\u00e9.c",
                                            "e\u0301.c",
                                            "same.c",
                                            "same.c",
                                            std::string(253, 'n') + ".c"};
    const auto list = effective(paths);
    ASSERT_THAT(list, SizeIs(paths.size()));
    for (std::size_t index = 0; index < paths.size(); ++index) {
        EXPECT_EQ(list[index]->filePath(), paths[index]);
        EXPECT_EQ(list[index]->valueForGitAttributeWithName("text"), "set") << paths[index];
        EXPECT_THAT(list[index]->attributes(), SizeIs(11));
    }
}

TEST_F(RVGitAttributesTest, APathThatIsNoUTF8ReachesGitAndComesBackAsText) {
    writeFile("repository/.gitattributes", "caf\xE9 text\ncafé -text\n");
    const auto list = effective({"caf\xE9", "café"});
    ASSERT_THAT(list, SizeIs(2));
    EXPECT_EQ(list[0]->filePath(), "café");
    EXPECT_EQ(list[0]->valueForGitAttributeWithName("text"), "set");
    EXPECT_EQ(list[1]->filePath(), "café");
    EXPECT_EQ(list[1]->valueForGitAttributeWithName("text"), "unset");
}

TEST_F(RVGitAttributesTest, AHundredThousandPathsPassThroughStandardInput) {
    writeFile("repository/.gitattributes", "*7 text\n");
    std::vector<std::string> paths(100'000);
    for (std::size_t index = 0; index < paths.size(); ++index)
        paths[index] = "directory/file " + std::to_string(index);
    const auto recorder = useRecordingGit();
    const auto list = effective(paths);
    ASSERT_THAT(list, SizeIs(paths.size()));
    for (std::size_t index = 0; index < paths.size(); ++index) {
        ASSERT_EQ(list[index]->filePath(), paths[index]);
        ASSERT_EQ(list[index]->isGitAttributeSetWithName("text"), index % 10 == 7);
    }
    EXPECT_THAT(recorder.invocations(), SizeIs(1));
}

TEST_F(RVGitAttributesTest, APathOutsideTheRepositoryFailsAll) {
    std::optional<RVError> error;
    EXPECT_EQ(
        RVGitAttributes::allEffectiveGitAttributesForFilePaths({"a", "../b"}, repository(), &error),
        std::nullopt);
    ASSERT_TRUE(error.has_value());
    EXPECT_EQ(error->userInfo().at(RVGitCommandExitCodeErrorKey), RVValue(128));
}

TEST_F(RVGitAttributesTest, ABareRepositoryHasTheAttributesOfItsInfoFile) {
    const std::string path = initBareRepository();
    writeFile("bare.git/info/attributes", "*.c text\n");
    const auto bare = RVGitRepository::bareRepositoryWithGitDirectoryPath(path);
    const auto list = RVGitAttributes::allEffectiveGitAttributesForFilePaths({"a.c"}, bare);
    ASSERT_THAT(list, Optional(SizeIs(1)));
    EXPECT_EQ(list->front()->valueForGitAttributeWithName("text"), "set");
}

TEST_F(RVGitAttributesTest, OutputThatIsNoTriplesFailsWith11) {
    useFakeGit().setAnswer({.standardOutput = "a: text: set\n"});
    EXPECT_THAT(
        [&](RVErrorPlace error) {
            return RVGitAttributes::allEffectiveGitAttributesForFilePaths({"a"}, repository(),
                                                                          error);
        },
        failsWith(RVGitOutputParserError));
}

TEST_F(RVGitAttributesTest, ChangingIsNotImplemented) {
    const auto expectNotImplemented = [](const auto& operation) {
        try {
            operation();
            ADD_FAILURE() << "nothing was thrown";
        } catch (const RVInternalInconsistencyException& exception) {
            EXPECT_STREQ(exception.what(), "Not implemented yet.");
        }
    };
    expectNotImplemented(
        [&] { RVGitAttributes::setGitAttributeWithName("text", "*.c", repository()); });
    expectNotImplemented([&] { RVGitAttributes::setValue("lf", "eol", "*.c", repository()); });
    expectNotImplemented(
        [&] { RVGitAttributes::unsetGitAttributeWithName("text", "*.c", repository()); });
    expectNotImplemented(
        [&] { RVGitAttributes::removeGitAttributeWithName("text", "*.c", repository()); });
    EXPECT_FALSE(fileExists("repository/.gitattributes"));
}

}  // namespace
