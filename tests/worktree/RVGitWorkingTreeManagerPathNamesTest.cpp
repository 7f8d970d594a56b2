#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "RVGit/command/RVGitCommandEnvironment.h"
#include "RVGit/command/RVGitErrorCodes.h"
#include "tests/support/RVGitRequirement.h"
#include "tests/worktree/RVGitWorkingTreeManagerTestCase.h"

namespace {

using testing::AnyOf;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;
using testing::Matcher;
using Paths = std::vector<std::string>;

/// Names that git takes for themselves.
const Paths harmlessNames = {
    "-dash",
    "--",
    "--all",
    "-",
    " leading blank",
    "trailing blank ",
    " ",
    "\ttab\t",
    "new\nline",
    "\n",
    "\r",
    "\"quoted\"",
    "it's",
    "a -> b",
    "caf\u00e9",
    "cafe\u0301",
    "no UTF-8 \xff\xfe\x80",
    "#comment",
    "~",
    "$(touch x)`touch x`$HOME",
    "colon:inside",
    "HEAD",
    "@{u}",
    "dir with blank/-dash",
    std::string(255, 'n'),
    std::string(255, 'd') + "/" + std::string(255, 'f'),
};

/// Names in which git sees a pattern.
const Paths magicNames = {
    "*",       "?",   "[ab]",        "back\\slash", "back\\", "**",        ":", ":colon",
    ":(top)x", ":!a", ":(literal)x", "dir/[ab]*?",  "\\*",    ":(icase)A", "[", "dir/:(top)x",
};

enum class Form { Raw, LiteralMagic, LiteralEnvironment };

class RVGitWorkingTreeManagerPathNamesTest : public RVGitWorkingTreeManagerTestCase,
                                             public testing::WithParamInterface<Form> {
protected:
    ~RVGitWorkingTreeManagerPathNamesTest() override {
        RVGitCommandEnvironment::sharedEnvironment().unsetValueForEnvironmentVariable(variable);
    }

    static constexpr char variable[] = "GIT_LITERAL_PATHSPECS";

    /// Files that patterns would match, too; nothing may happen to them.
    void commitBystanders() const {
        for (const char* path : bystanders)
            write(path, "bystander\n");
        commitAll();
        for (const char* path : bystanders)
            write(path, "changed bystander\n");
    }
    void expectBystandersUntouched() const {
        for (const char* path : bystanders) {
            EXPECT_EQ(read(path), "changed bystander\n") << path;
            EXPECT_EQ(staged(path), "bystander\n") << path;
        }
    }
    /// The path as it is passed in the form under test.
    [[nodiscard]] static Paths argument(const std::string& name) {
        return {(GetParam() == Form::LiteralMagic ? ":(literal)" : "") + name};
    }

    static constexpr const char* bystanders[] = {"a",         "b",     "x",     "colon",
                                                 "backslash", "dir/a", "dir/x", "z"};
};

TEST_P(RVGitWorkingTreeManagerPathNamesTest, AreStagedUnstagedRevertedAndRemovedAlone) {
    Paths names = harmlessNames;
    if (GetParam() != Form::Raw)
        names.insert(names.end(), magicNames.begin(), magicNames.end());
    if (GetParam() == Form::LiteralEnvironment)
        RVGitCommandEnvironment::sharedEnvironment().setValueForEnvironmentVariable("1", variable);
    commitBystanders();
    for (const std::string& name : names) {
        SCOPED_TRACE(testing::PrintToString(name));
        const std::string bytes = "contents\r\n\xff" + name;
        const Paths before = status();
        const auto expectOnlyChange = [&](const Paths& added) {
            Paths expected = before;
            expected.insert(expected.end(), added.begin(), added.end());
            EXPECT_THAT(status(), testing::UnorderedElementsAreArray(expected));
        };
        write(name, bytes);

        EXPECT_TRUE(manager().stageFiles(argument(name)));
        expectOnlyChange({"A  " + name});
        EXPECT_EQ(staged("./" + name), bytes);
        EXPECT_TRUE(manager().unstageFiles(argument(name)));
        expectOnlyChange({"?? " + name});
        EXPECT_EQ(read(name), bytes);
        EXPECT_TRUE(manager().stageFiles(argument(name), RVGitStageOptionIntentToAdd));
        expectOnlyChange({" A " + name});
        EXPECT_TRUE(manager().stageFiles(argument(name)));
        EXPECT_TRUE(manager().untrackFiles(argument(name)));
        expectOnlyChange({"?? " + name});

        EXPECT_TRUE(manager().stageFiles(argument(name)));
        git({"commit", "-q", "-m", "Message"}, repositoryPath());
        write(name, "changed");
        const auto patch = manager().patchByComparingWorkingTreeWithIndexForFilePaths(
            argument(name), std::nullopt);
        ASSERT_TRUE(patch);
        EXPECT_THAT(*patch, testing::HasSubstr("+changed\n"));
        EXPECT_THAT(*patch, testing::Not(testing::HasSubstr("bystander")));
        EXPECT_TRUE(manager().revertFiles(argument(name)));
        expectOnlyChange({});
        EXPECT_EQ(read(name), bytes);

        EXPECT_TRUE(manager().removeFiles(argument(name)));
        expectOnlyChange({"D  " + name});
        EXPECT_FALSE(exists(name));
        git({"commit", "-q", "-m", "Message"}, repositoryPath());
    }
    expectBystandersUntouched();
}

std::string nameOfForm(const testing::TestParamInfo<Form>& info) {
    static constexpr const char* names[] = {"Raw", "LiteralMagic", "LiteralEnvironment"};
    return names[static_cast<std::size_t>(info.param)];
}

INSTANTIATE_TEST_SUITE_P(Forms, RVGitWorkingTreeManagerPathNamesTest,
                         testing::Values(Form::Raw, Form::LiteralMagic, Form::LiteralEnvironment),
                         nameOfForm);

class RVGitWorkingTreeManagerPatternsTest : public RVGitWorkingTreeManagerTestCase {
protected:
    /// The status after the file and others have been changed and the operation has run.
    template <typename Operation>
    [[nodiscard]] Paths statusAfter(const Paths& files, const Operation& operation) {
        for (const std::string& path : files)
            write(path, "one\n");
        commitAll();
        for (const std::string& path : files)
            write(path, "two\n");
        EXPECT_TRUE(operation());
        return status();
    }
};

// What happens to names with a meaning that are passed as they are: the pattern counts, so that
// other files are hit as well. Some gits from 2.40 on (2.45 does) stage the file of that name
// alone.

TEST_F(RVGitWorkingTreeManagerPatternsTest, AWildcardMatchesItsOwnNameAndOthers) {
    using Lines = std::vector<std::string>;
    const auto isOneOf = [](const Lines& withOthers, const Lines& alone) {
        return isTestedGitAtLeast("2.40") ? Matcher<Lines>(AnyOf(withOthers, alone))
                                          : Matcher<Lines>(withOthers);
    };
    EXPECT_THAT(statusAfter({"*", "other"}, [&] { return manager().stageFiles({"*"}); }),
                isOneOf({"M  *", "M  other"}, {"M  *", " M other"}));
    EXPECT_THAT(
        statusAfter({"[ab]", "a", "b", "c"}, [&] { return manager().stageFiles({"[ab]"}); }),
        isOneOf({"M  [ab]", "M  a", "M  b", " M c"}, {"M  [ab]", " M a", " M b", " M c"}));
    EXPECT_THAT(statusAfter({"back\\slash", "backslash"},
                            [&] { return manager().stageFiles({"back\\slash"}); }),
                isOneOf({"M  back\\slash", "M  backslash"}, {"M  back\\slash", " M backslash"}));
}

// Having found the name itself, git (2.45 does) looks no further for what the pattern matches, but
// the files that sort before it are gone by then. Newer ones (2.55 does) take all that match.

TEST_F(RVGitWorkingTreeManagerPatternsTest, RemovingAFileNamedAsAWildcardRemovesThoseBeforeIt) {
    EXPECT_THAT(statusAfter({"#first", "*", "other"}, [&] { return manager().removeFiles({"*"}); }),
                AnyOf(ElementsAre("D  #first", "D  *", " M other"),
                      ElementsAre("D  #first", "D  *", "D  other")));
}

TEST_F(RVGitWorkingTreeManagerPatternsTest, RevertingAFileNamedAsAWildcardRevertsThoseBeforeIt) {
    EXPECT_THAT(statusAfter({"0", "?", "x"}, [&] { return manager().revertFiles({"?"}); }),
                AnyOf(ElementsAre(" M x"), IsEmpty()));
}

TEST_F(RVGitWorkingTreeManagerPatternsTest, UnstagingAFileNamedAsAWildcardUnstagesOthers) {
    EXPECT_THAT(
        statusAfter({"*", "other"},
                    [&] { return manager().stageAllFiles() && manager().unstageFiles({"*"}); }),
        ElementsAre(" M *", " M other"));
}

TEST_F(RVGitWorkingTreeManagerPatternsTest, UntrackingAFileNamedAsAWildcardUntracksThoseBeforeIt) {
    EXPECT_THAT(statusAfter({"0", "?", "x"}, [&] { return manager().untrackFiles({"?"}); }),
                AnyOf(ElementsAre("D  0", "D  ?", " M x", "?? 0", "?? ?"),
                      ElementsAre("D  0", "D  ?", "D  x", "?? 0", "?? ?", "?? x")));
}

TEST_F(RVGitWorkingTreeManagerPatternsTest, UntrackingASetThatIsNoFileUntracksItsMembers) {
    EXPECT_THAT(statusAfter({"a", "b", "c"}, [&] { return manager().untrackFiles({"[ab]"}); }),
                ElementsAre("D  a", "D  b", " M c", "?? a", "?? b"));
}

TEST_F(RVGitWorkingTreeManagerPatternsTest, RemovingAWildcardThatIsNoFileRemovesAll) {
    EXPECT_THAT(statusAfter({"a", "b"}, [&] { return manager().removeFiles({"*"}); }),
                ElementsAre("D  a", "D  b"));
}

TEST_F(RVGitWorkingTreeManagerPatternsTest, ALeadingColonStandsForAnotherFile) {
    EXPECT_THAT(statusAfter({":colon", "colon"}, [&] { return manager().stageFiles({":colon"}); }),
                ElementsAre(" M :colon", "M  colon"));
    EXPECT_THAT(statusAfter({":(top)x", "x"}, [&] { return manager().revertFiles({":(top)x"}); }),
                ElementsAre(" M :(top)x"));
}

TEST_F(RVGitWorkingTreeManagerPatternsTest, ALeadingColonWithoutAnotherFileChangesNothing) {
    for (const std::string name : {":colon", ":(top)x", ":(unknown)x"})
        write(name, "one\n");
    commitAll();
    for (const std::string name : {":colon", ":(top)x", ":(unknown)x"}) {
        SCOPED_TRACE(name);
        write(name, "two\n");
        EXPECT_FALSE(manager().stageFiles({name}));
        EXPECT_FALSE(manager().revertFiles({name}));
        // What matches no file is no failure for these two, but magic that git does not know is.
        const bool isKnownMagic = name != ":(unknown)x";
        EXPECT_EQ(manager().removeFiles({name}), isKnownMagic);
        EXPECT_EQ(manager().unstageFiles({name}), isKnownMagic);
        EXPECT_EQ(read(name), "two\n");
        EXPECT_EQ(staged(name), "one\n");
    }
}

TEST_F(RVGitWorkingTreeManagerPatternsTest, AColonAloneStandsForAllFiles) {
    EXPECT_THAT(statusAfter({":", "other"}, [&] { return manager().revertFiles({":"}); }),
                testing::IsEmpty());
}

TEST_F(RVGitWorkingTreeManagerPatternsTest, AnEmptyPathIsRefused) {
    write("file", "one\n");
    commitAll();
    write("file", "two\n");
    EXPECT_FALSE(manager().stageFiles({""}));
    EXPECT_FALSE(manager().unstageFiles({""}));
    EXPECT_FALSE(manager().revertFiles({""}));
    EXPECT_FALSE(manager().removeFiles({""}));
    EXPECT_THAT(status(), ElementsAre(" M file"));
}

class RVGitWorkingTreeManagerMovedNamesTest : public RVGitWorkingTreeManagerTestCase {};

TEST_F(RVGitWorkingTreeManagerMovedNamesTest, AnyNameIsMovedToAndFro) {
    Paths names = harmlessNames;
    names.insert(names.end(), magicNames.begin(), magicNames.end());
    write("plain", "contents\n");
    write("a", "bystander\n");
    commitAll();
    for (const std::string& name : names) {
        SCOPED_TRACE(testing::PrintToString(name));
        if (const std::size_t slash = name.find('/'); slash != std::string::npos)
            makeDirectory("repository/" + name.substr(0, slash));
        // A leading dash is an option, as no "--" stands before the paths.
        const std::string path = name.starts_with("-") ? "./" + name : name;
        EXPECT_TRUE(manager().moveFileAtPath("plain", path, 0));
        EXPECT_THAT(records({"ls-files", "-z"}), testing::UnorderedElementsAre("a", name));
        EXPECT_EQ(read(name), "contents\n");
        EXPECT_FALSE(exists("plain"));
        EXPECT_TRUE(manager().moveFileAtPath(path, "plain", 0));
        EXPECT_THAT(records({"ls-files", "-z"}), ElementsAre("a", "plain"));
        EXPECT_EQ(read("plain"), "contents\n");
    }
    EXPECT_EQ(read("a"), "bystander\n");
}

TEST_F(RVGitWorkingTreeManagerMovedNamesTest, ARawLeadingDashIsAnOption) {
    write("-n", "contents\n");
    write("file", "contents\n");
    commitAll();
    // "-n" has git only tell what it would do, and of two paths one is missing.
    EXPECT_FALSE(manager().moveFileAtPath("-n", "file", 0));
    EXPECT_FALSE(manager().moveFileAtPath("-x", "file", 0));
    EXPECT_FALSE(manager().setAssumeUnchangedFlagForFilePaths({"-x"}));
    EXPECT_THAT(status(), testing::IsEmpty());
}

TEST_F(RVGitWorkingTreeManagerMovedNamesTest, AnyNameIsMarked) {
    Paths names = harmlessNames;
    names.insert(names.end(), magicNames.begin(), magicNames.end());
    for (std::string& name : names) {
        write(name, "contents\n");
        if (name.starts_with("-"))
            name.insert(0, "./");
    }
    commitAll();
    const Paths before = records({"ls-files", "-v", "-z"});
    EXPECT_TRUE(manager().setAssumeUnchangedFlagForFilePaths(names));
    Paths expected = before;
    for (std::string& record : expected)
        record[0] = 'h';
    EXPECT_THAT(records({"ls-files", "-v", "-z"}), ElementsAreArray(expected));
    EXPECT_TRUE(manager().unsetAssumeUnchangedFlagForFilePaths(names));
    EXPECT_THAT(records({"ls-files", "-v", "-z"}), ElementsAreArray(before));
}

}  // namespace
