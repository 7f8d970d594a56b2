// Whole operations are given names that nobody chose well, over a git that writes down how it was
// called: nothing that came from the input may stand where git looks for options and begin with
// "-".

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "RVGit/base/RVFileManager.h"
#include "RVGit/base/RVNeverDestroyed.h"
#include "RVGit/command/RVGitBinary.h"
#include "RVGit/diff/RVGitChangeset.h"
#include "RVGit/diff/RVGitDiff.h"
#include "RVGit/history/RVGitBlame.h"
#include "RVGit/history/RVGitCommit.h"
#include "RVGit/history/RVGitContributionInfo.h"
#include "RVGit/history/RVGitLogCommandOptions.h"
#include "RVGit/objects/RVGitBlob.h"
#include "RVGit/objects/RVGitTag.h"
#include "RVGit/objects/RVGitTree.h"
#include "RVGit/repository/RVGitConfig.h"
#include "RVGit/repository/RVGitRef.h"
#include "RVGit/repository/RVGitRefLogEntryManager.h"
#include "RVGit/repository/RVGitRepository.h"
#include "RVGit/worktree/RVGitAttributes.h"
#include "RVGit/worktree/RVGitStash.h"
#include "RVGit/worktree/RVGitWorkingTreeManager.h"

namespace {

using Repository = std::shared_ptr<RVGitRepository>;
using Text = std::string;
using Arguments = std::vector<std::string>;

// At the end of each text, so that what came from the input is known again.
constexpr std::string_view mark = "Zq7";

class Setting {
public:
    Setting() {
        const auto directory = RVFileManager::createTemporaryDirectory();
        if (!directory)
            std::abort();
        directory_ = *directory;
        std::filesystem::create_directories(directory_ + "/tree/.git");
        const std::string git = directory_ + "/git";
        std::ofstream(git) << "#!/bin/sh\n"
                              "[ \"$2\" != --version ] || exec echo git version 2.39.5\n"
                              "printf '%s\\0' \"$@\" '' >>'"
                           << calls() << "'\n";
        std::filesystem::permissions(git, std::filesystem::perms::owner_all);
        RVGitBinary::setDefaultGitBinary(RVGitBinary::gitBinaryWithPath(git));
        repository_ = RVGitRepository::repositoryWithWorkingTreeDirectoryPath(
            directory_ + "/tree", directory_ + "/tree/.git");
    }
    ~Setting() { (void)RVFileManager::removeItemAtPath(directory_); }
    Setting(const Setting&) = delete;
    Setting& operator=(const Setting&) = delete;

    [[nodiscard]] const Repository& repository() const { return repository_; }
    void forgetCalls() const { std::filesystem::remove(calls()); }
    // All arguments of all calls, each call ended by an empty one.
    [[nodiscard]] Arguments recordedArguments() const {
        Arguments arguments;
        std::string bytes = RVFileManager::contentsOfFileAtPath(calls()).value_or("");
        for (std::size_t begin = 0, end; (end = bytes.find('\0', begin)) != std::string::npos;
             begin = end + 1)
            arguments.push_back(bytes.substr(begin, end - begin));
        return arguments;
    }

private:
    [[nodiscard]] std::string calls() const { return directory_ + "/calls"; }
    std::string directory_;
    Repository repository_;
};

using Operation = std::function<void(const Repository&, const Text& a, const Text& b)>;

template <typename Result>
void use(const Result&) {}

const std::vector<Operation>& operations() {
    static const RVNeverDestroyed<std::vector<Operation>> list = {
        [](auto& r, auto& a, auto&) { use(RVGitTag::createTagWithRefName(a, "HEAD", r)); },
        [](auto& r, auto& a, auto&) { use(RVGitTag::createTagWithRefName("v1", a, r)); },
        [](auto& r, auto& a, auto& b) { use(RVGitTag::createTagWithRefName(a, b, a, r)); },
        [](auto& r, auto& a, auto&) { use(RVGitTag::deleteTagWithRefName(a, r)); },
        [](auto& r, auto& a, auto&) { use(RVGitTag::verifyTagWithRefName(a, r)); },
        [](auto& r, auto& a, auto& b) { use(RVGitTag::verifyTagWithRefName(a, b, r)); },
        [](auto& r, auto& a, auto&) { use(RVGitBlob::blobForHash(a, r)); },
        [](auto& r, auto& a, auto& b) { use(RVGitBlob::blobForRevision(a, b, r)); },
        [](auto& r, auto& a, auto&) { use(RVGitTree::treeForTreeHash(a, r)); },
        [](auto& r, auto& a, auto& b) { use(RVGitTree::treeForRevision(a, b, r)); },
        [](auto& r, auto& a, auto& b) { use(RVGitTree::allTreeEntriesForRevision(a, b, r)); },
        [](auto& r, auto& a, auto&) { use(RVGitTree::rootTreeForRevision(a, r)); },
        [](auto& r, auto& a, auto&) { use(RVGitCommit::commitForCommitHash(a, r)); },
        [](auto& r, auto& a, auto&) { use(RVGitCommit::commitForCommitHash(a, r, true)); },
        [](auto& r, auto& a, auto& b) { use(RVGitCommit::allCommitsFromRevision(a, b, r)); },
        [](auto& r, auto& a, auto& b) { use(RVGitCommit::allCommitsByComparingRevision(a, b, r)); },
        [](auto& r, auto& a, auto& b) {
            use(RVGitCommit::allCommitsForRevisions(
                {"HEAD", a}, {b}, r, RVOptions{{RVGitLogOptionSearchPatterns, Arguments{a}}}));
        },
        [](auto& r, auto& a, auto& b) {
            use(RVGitCommit::allCommitHashesForRevisions(
                {a}, {b}, r, RVOptions{{RVGitLogOptionSearchContentPatterns, Arguments{b}}}));
        },
        [](auto& r, auto& a, auto& b) {
            use(RVGitCommit::countAllCommitsForRevisions({a}, {b}, r));
        },
        [](auto& r, auto& a, auto&) { use(RVGitStash::stashForRefName(a, r)); },
        [](auto& r, auto& a, auto&) {
            use(RVGitStash::saveStashFromWorkingTreeInRepository(r, a, 0));
        },
        [](auto& r, auto& a, auto&) { use(RVGitStash::deleteStashWithRefName(a, r)); },
        [](auto& r, auto& a, auto&) { use(RVGitStash::applyStashWithRefName(a, r, false)); },
        [](auto& r, auto& a, auto&) { use(RVGitStash::applyStashWithRefName(a, r, true)); },
        [](auto& r, auto& a, auto& b) {
            use(RVGitDiff::generatePatchByComparingRevision(a, b, {{b}}, r, RVOptions()));
        },
        [](auto& r, auto& a, auto& b) {
            use(RVGitDiff::generatePatchByComparingRevisionWithAncestorForRevision(a, {{b}}, r,
                                                                                   RVOptions()));
        },
        [](auto& r, auto& a, auto& b) {
            use(RVGitDiff::diffByComparingBlob(a, b, r, RVOptions()));
        },
        [](auto& r, auto& a, auto& b) {
            use(RVGitDiff::diffByComparingBlobWithEmptyBlob(a, b, r));
        },
        [](auto& r, auto& a, auto& b) {
            use(RVGitChangeset::changesetByComparingRevisions({a, b}, {{b}}, r, RVOptions()));
        },
        [](auto& r, auto& a, auto& b) {
            use(RVGitChangeset::changesetForRevisionRange(a, {{b}}, r, RVOptions()));
        },
        [](auto& r, auto& a, auto& b) {
            use(RVGitChangeset::changesetByComparingIndexWithRevision(a, {{b}}, r, RVOptions()));
        },
        [](auto& r, auto& a, auto& b) { use(RVGitBlame::blameForFilePath(a, b, r)); },
        [](auto& r, auto& a, auto&) { use(RVGitRef::refForFullRefName(a, r, RVOptions())); },
        [](auto& r, auto& a, auto&) { use(r->config()->valueForConfigKey(a)); },
        [](auto& r, auto& a, auto& b) { use(r->config()->setValue(a, b)); },
        [](auto& r, auto& a, auto&) { use(r->config()->setValue(a, "user.name")); },
        [](auto& r, auto& a, auto& b) { use(r->config()->renameSection(a, b)); },
        [](auto& r, auto& a, auto&) { use(r->config()->removeSection(a)); },
        [](auto& r, auto& a, auto&) {
            use(RVGitRefLogEntryManager(r).loadRefLogEntriesForRefWithName(a, RVOptions()));
        },
        [](auto& r, auto& a, auto& b) {
            use(RVGitContributionInfo::allContributionInfosForRepository(r, a, {{b}}, 5, 0));
        },
        [](auto& r, auto& a, auto& b) {
            use(RVGitAttributes::allEffectiveGitAttributesForFilePaths({a, b}, r));
        },
        [](auto& r, auto& a, auto&) { use(RVGitWorkingTreeManager(r).checkoutRevision(a)); },
        [](auto& r, auto& a, auto&) {
            use(RVGitWorkingTreeManager(r).resetToRevision(a, RVGitResetModeHard, {}));
        },
        [](auto& r, auto& a, auto& b) {
            use(RVGitWorkingTreeManager(r).stageFiles({a, b}));
        },
        [](auto& r, auto& a, auto& b) {
            use(RVGitWorkingTreeManager(r).unstageFiles({a, b}));
        },
        [](auto& r, auto& a, auto& b) {
            use(RVGitWorkingTreeManager(r).untrackFiles({a, b}));
        },
        [](auto& r, auto& a, auto& b) {
            use(RVGitWorkingTreeManager(r).removeFiles({a, b}));
        },
        [](auto& r, auto& a, auto& b) { use(RVGitWorkingTreeManager(r).moveFileAtPath(a, b, 0)); },
        [](auto& r, auto& a, auto& b) {
            use(RVGitWorkingTreeManager(r).setAssumeUnchangedFlagForFilePaths({a, b}));
        },
    };
    return *list;
}

void check(const Arguments& arguments, const std::array<Text, 2>& texts) {
    const auto fail = [&](const char* why, const std::string& argument) {
        std::fprintf(stderr, "%s: %s\n", why, argument.c_str());
        std::abort();
    };
    bool onlyPaths = false;
    std::string command;
    for (std::size_t index = 0; index < arguments.size(); ++index) {
        const std::string& argument = arguments[index];
        if (argument == "--")
            onlyPaths = true;
        if (argument.empty()) {
            onlyPaths = false;
            command.clear();
            continue;
        }
        if (command.empty() && (argument == "config" || argument == "stash" || argument == "tag"))
            command = argument;
        if (onlyPaths || argument.find(mark) == std::string::npos)
            continue;
        for (const Text& text : texts) {
            if (!text.starts_with('-'))
                continue;
            // The message of a stash; the value behind a key, where git looks for no options.
            const std::string& before = arguments[index - 1];
            const bool isValue = (command == "stash" && before == "-m") ||
                                 (command == "config" && !before.starts_with('-'));
            if (argument.starts_with(text) && !isValue)
                fail("Data is an option", argument);
            if (argument.ends_with(".." + text) || argument.starts_with("^" + text))
                fail("The end of a range is an option", argument);
        }
    }
}

}  // namespace

// The first byte chooses the operation; the others are one text, or two with a newline in between.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const Setting setting;
    if (size == 0)
        return 0;
    const std::string input(reinterpret_cast<const char*>(data + 1), size - 1);
    const std::size_t newline = input.find('\n');
    std::array<Text, 2> texts = {
        input.substr(0, newline) + std::string(mark),
        (newline == std::string::npos ? input : input.substr(newline + 1)) + std::string(mark)};
    setting.forgetCalls();
    operations()[data[0] % operations().size()](setting.repository(), texts[0], texts[1]);
    check(setting.recordedArguments(), texts);
    return 0;
}
