#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/client/RvgitTestCase.h"

namespace {

using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

/// The commands of the terminal client for submodules.
class RvgitSubmoduleTest : public RvgitTestCase {
protected:
    RvgitSubmoduleTest() {
        commitFile(repository_, "file", "one\n", "First");
        commitFile(initRepository("library"), "lib.c", "int one;\n", "Library");
    }

    RVTestProcessResult rvgit(std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), "submodule");
        return RvgitTestCase::rvgit(std::move(arguments));
    }
    std::string outputOf(const std::vector<std::string>& arguments) {
        const auto result = rvgit(arguments);
        EXPECT_EQ(result.exitCode, 0) << result.standardError;
        return result.standardOutput;
    }
    void add(const std::string& path) {
        EXPECT_THAT(outputOf({"add", scratchPath("library"), path}), IsEmpty());
        git({"commit", "-q", "-m", "Add " + path}, repository_);
    }
    [[nodiscard]] std::string hash() const {
        return gitLine({"rev-parse", "HEAD"}, "library").substr(0, 8);
    }
};

TEST_F(RvgitSubmoduleTest, ListsWithStatusAndWhatIsDirty) {
    EXPECT_THAT(outputOf({}), IsEmpty());
    add("clean");
    add("dirty");
    add("updated");
    writeFile("repository/dirty/lib.c", "changed\n");
    writeFile("repository/dirty/new", "x");
    git({"commit", "-q", "--allow-empty", "-m", "More"}, repository_ + "/updated");
    git({"config", "-f", ".gitmodules", "submodule.gone.path", "go\x1bne"}, repository_);
    const std::string updated =
        gitLine({"rev-parse", "HEAD"}, repository_ + "/updated").substr(0, 8);
    const std::string expected = hash() + "  clean                  clean\n" + hash() +
                                 "  clean                  dirty  (dirty: 2)\n" + updated +
                                 "  other commit           updated  (+1 -0)\n"
                                 "          not in the index       go?ne  (name gone)\n";
    EXPECT_EQ(outputOf({}), expected);
    EXPECT_EQ(outputOf({"list"}), expected);
}

TEST_F(RvgitSubmoduleTest, InitializesUpdatesAndSynchronizes) {
    add("lib");
    git({"submodule", "--quiet", "deinit", "lib"}, repository_);
    EXPECT_THAT(outputOf({}), HasSubstr("uninitialized          lib"));
    EXPECT_EQ(outputOf({"status"}), outputOf({"list"}));
    EXPECT_THAT(outputOf({"update"}), HasSubstr("lib is not initialized"));
    EXPECT_THAT(outputOf({"update", "lib"}), HasSubstr("lib is not initialized"));
    outputOf({"init", "lib"});
    outputOf({"update", "lib"});
    EXPECT_EQ(readFile("repository/lib/lib.c"), "int one;\n");
    writeFile("repository/lib/lib.c", "changed\n");
    outputOf({"update", "--init", "--recursive", "--force"});
    EXPECT_EQ(readFile("repository/lib/lib.c"), "int one;\n");
    git({"config", "-f", ".gitmodules", "submodule.lib.url", "/elsewhere"}, repository_);
    outputOf({"sync", "lib"});
    EXPECT_EQ(gitLine({"config", "submodule.lib.url"}, repository_), "/elsewhere");
    outputOf({"sync"});
    outputOf({"init"});
}

TEST_F(RvgitSubmoduleTest, RemovesOnlyWhatIsCommitted) {
    add("lib");
    writeFile("repository/lib/new", "x");
    const auto refused = rvgit({"remove", "lib"});
    EXPECT_EQ(refused.exitCode, 1);
    EXPECT_THAT(refused.standardError, HasSubstr("--force"));
    EXPECT_EQ(readFile("repository/lib/new"), "x");
    outputOf({"remove", "--force", "--git-directory", "lib"});
    EXPECT_FALSE(fileExists("repository/lib"));
    EXPECT_FALSE(fileExists("repository/.git/modules/lib"));

    add("other");
    writeFile("repository/other/new", "x");
    outputOf({"remove", "--keep", "other"});
    EXPECT_EQ(readFile("repository/other/new"), "x");
    EXPECT_EQ(gitLine({"ls-files"}, repository_), ".gitmodules\nfile");
}

TEST_F(RvgitSubmoduleTest, MovesToAnyDepthAndRenames) {
    add("lib");
    outputOf({"move", "lib", "deep/er/lib"});
    EXPECT_EQ(gitLine({"rev-parse", "--show-toplevel"}, repository_ + "/deep/er/lib"),
              repository_ + "/deep/er/lib");
    EXPECT_THAT(outputOf({}), HasSubstr("deep/er/lib  (name lib)"));
    outputOf({"rename", "lib", "of/an/other"});
    EXPECT_EQ(outputOf({}), hash() + "  clean                  deep/er/lib  (name of/an/other)\n");
}

TEST_F(RvgitSubmoduleTest, SaysWhatItCannotDo) {
    add("lib");
    const auto complaintOf = [&](const std::vector<std::string>& arguments) {
        const auto result = rvgit(arguments);
        EXPECT_NE(result.exitCode, 0);
        return result.standardError;
    };
    EXPECT_THAT(complaintOf({"remove", "other"}), HasSubstr("there is no submodule other"));
    EXPECT_THAT(complaintOf({"move", "other", "x"}), HasSubstr("there is no submodule other"));
    EXPECT_THAT(complaintOf({"rename", "other", "x"}), HasSubstr("there is no submodule other"));
    EXPECT_THAT(complaintOf({"frobnicate"}),
                HasSubstr("submodule has no frobnicate; see rvgit help submodule"));
    EXPECT_THAT(complaintOf({"update", "--remote"}), HasSubstr("takes no --remote"));
    EXPECT_THAT(complaintOf({"move", "lib"}), HasSubstr("needs a path and a new path"));
    EXPECT_THAT(complaintOf({"add", scratchPath("library"), "../x"}),
                HasSubstr("outside of the repository"));
    EXPECT_THAT(complaintOf({"add", scratchPath("library"), "lib"}), HasSubstr("already exists"));
    EXPECT_THAT(complaintOf({"move", "lib", "../x"}), HasSubstr("outside the repository"));
}

}  // namespace
