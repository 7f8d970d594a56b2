// Each precondition of the library throws, and says what was asked for. The table has a row for
// each place that asks; the last test reads the sources, so that no place can be forgotten here.

#include <filesystem>
#include <functional>
#include <map>
#include <regex>

#include "RVGit/archive/RVGitArchiver.h"
#include "RVGit/base/RVError.h"
#include "RVGit/base/RVOperationQueue.h"
#include "RVGit/base/RVURL.h"
#include "RVGit/command/RVGitBinary.h"
#include "RVGit/command/RVGitCommand.h"
#include "RVGit/command/RVGitCommandQueue.h"
#include "RVGit/diff/RVGitChangeset.h"
#include "RVGit/diff/RVGitDiff.h"
#include "RVGit/diff/RVGitDiffChunk.h"
#include "RVGit/diff/RVGitDiffChunkLine.h"
#include "RVGit/diff/RVGitDiffLoader.h"
#include "RVGit/diff/RVGitDiffPatchGenerator.h"
#include "RVGit/history/RVGitBlame.h"
#include "RVGit/history/RVGitCommit.h"
#include "RVGit/history/RVGitCommitGraphDrawer.h"
#include "RVGit/history/RVGitCommitGraphDrawerCommitLines.h"
#include "RVGit/history/RVGitContributionInfo.h"
#include "RVGit/lfs/RVGitLFSManager.h"
#include "RVGit/merge/RVGitDiffTool.h"
#include "RVGit/merge/RVGitMergeManager.h"
#include "RVGit/merge/RVGitMergeSequenceContentParser.h"
#include "RVGit/merge/RVGitMergeTool.h"
#include "RVGit/merge/RVGitSequenceEditor.h"
#include "RVGit/objects/RVGitBlob.h"
#include "RVGit/objects/RVGitForEachRefCommand.h"
#include "RVGit/objects/RVGitTag.h"
#include "RVGit/remotes/RVGitBranch.h"
#include "RVGit/remotes/RVGitRemote.h"
#include "RVGit/remotes/RVGitRemoteBranch.h"
#include "RVGit/remotes/RVGitRemoteBranchToRemote.h"
#include "RVGit/remotes/RVGitRemoteConfig.h"
#include "RVGit/repository/RVGitRef.h"
#include "RVGit/repository/RVGitRefLogEntryManager.h"
#include "RVGit/repository/RVGitRepository.h"
#include "RVGit/submodules/RVGitSubmodule.h"
#include "RVGit/submodules/RVGitSubmoduleConfig.h"
#include "RVGit/submodules/RVGitSubmoduleConfigLoader.h"
#include "RVGit/submodules/RVGitSubmoduleConfigManager.h"
#include "RVGit/submodules/RVGitSubmoduleContainment.h"
#include "RVGit/submodules/RVGitSubmoduleLoader.h"
#include "RVGit/submodules/RVGitSubmoduleManager.h"
#include "RVGit/worktree/RVGitAttributes.h"
#include "RVGit/worktree/RVGitCommitMessageEditor.h"
#include "RVGit/worktree/RVGitIgnores.h"
#include "RVGit/worktree/RVGitIndex.h"
#include "RVGit/worktree/RVGitIndexEntry.h"
#include "RVGit/worktree/RVGitStash.h"
#include "RVGit/worktree/RVGitWorkingTreeEntryLoader.h"
#include "RVGit/worktree/RVGitWorkingTreeManager.h"
#include "tests/support/RVGitRepositoryTestCase.h"

namespace {

using Repository = std::shared_ptr<RVGitRepository>;

const Repository noRepository;
const std::string someHash(40, 'a');
const RVURL webAddress("https://example.org/x");

struct Row {
    /// Below RVGit, the source whose precondition is broken.
    std::string file;
    /// What must hold, as the exception says it.
    std::string text;
    /// Breaks that condition and no other.
    std::function<void(const Repository&)> operation;
};

// Makes an object, here and for nothing but its constructor.
template <typename Class, typename... Arguments>
auto making(Arguments... arguments) {
    return [arguments...](const Repository&) { Class made(arguments...); };
}

std::shared_ptr<RVGitRef> refIn(const Repository& repository) {
    return RVGitRef::refWithRepository(repository, "refs/heads/main", someHash);
}

RVGitDiffPatchGenerator generatorOfChunkWithRanges(std::vector<RVGitDiffRange> ranges) {
    const auto diff = std::make_shared<RVGitDiff>();
    diff->setChunks({RVGitDiffChunk::diffChunkWithRawChunk("@@ -1 +1 @@\n", std::move(ranges),
                                                           std::vector<RVGitDiffChunkLine>())});
    return RVGitDiffPatchGenerator(diff);
}

std::vector<Row> rowsOfCommandsAndObjects() {
    return {
        {"archive/RVGitArchiver.cpp", "repository",
         making<RVGitArchiver>(noRepository, "HEAD", std::nullopt, "archive.zip")},
        {"command/RVGitCommand.cpp", "gitBinary",
         making<RVGitCommand>(std::shared_ptr<RVGitBinary>())},
        {"command/RVGitCommand.cpp", "repository", making<RVGitCommand>(noRepository)},
        {"command/RVGitCommandQueue.cpp", "command",
         [](const Repository&) { RVGitCommandQueue::sharedQueue().enqueueCommand(nullptr); }},
        {"command/RVGitCommandQueue.cpp", "command",
         [](const Repository&) {
             const auto queue = RVOperationQueue::serialQueue("PreconditionsQueue");
             (void)RVGitCommandQueue::executeCommandOnQueue(nullptr, *queue);
         }},
        {"objects/RVGitBlob.cpp", "contents",
         [](const Repository& repository) {
             const RVGitBlob blob(repository, someHash, std::nullopt, std::nullopt,
                                  std::shared_ptr<const RVDataBuffer>());
         }},
        {"objects/RVGitBlob.cpp", "repository",
         [](const Repository&) { (void)RVGitBlob::blobForCurrentFileAtPath("file", nullptr); }},
        // Both constructors of an entry: with the hash as text, and as its digits' values.
        {"objects/RVGitFileEntry.cpp", "repository",
         making<RVGitFileEntry>(noRepository, "file", std::optional<std::string>(),
                                RVGitFileModeRegular)},
        {"objects/RVGitFileEntry.cpp", "repository",
         making<RVGitIndexEntry>(noRepository, "file", RVGitCompactHash(), RVGitFileModeRegular,
                                 RVGitIndexStageDefault, 'H')},
        {"objects/RVGitForEachRefCommand.cpp", "outputParserClass",
         [](const Repository& repository) {
             const auto command = std::make_shared<RVGitForEachRefCommand>(repository);
             command->setFormat("%(refname)");
             (void)command->run();
         }},
        {"objects/RVGitObject.cpp", "repository",
         making<RVGitBlob>(noRepository, someHash, std::nullopt, std::nullopt, RVData())},
        {"objects/RVGitTag.cpp", "ref",
         [](const Repository& repository) {
             const RVGitTag tag(repository, nullptr, someHash, "message", std::nullopt);
         }},
        {"repository/RVGitRef.cpp", "repository",
         making<RVGitRef>(noRepository, "refs/heads/main", someHash)},
        {"repository/RVGitRef.cpp", "repository",
         [](const Repository&) { (void)RVGitRef::headRefForRepository(nullptr); }},
        {"repository/RVGitRef.cpp", "repository",
         [](const Repository&) { (void)RVGitRef::initialRefFromHeadFileForRepository(nullptr); }},
        {"repository/RVGitRefLogEntryManager.cpp", "repository",
         making<RVGitRefLogEntryManager>(noRepository)},
    };
}

std::vector<Row> rowsOfHistoryAndDiffs() {
    using Lanes = RVGitCommitGraphDrawerCommitLines;
    using Lane = RVGitCommitGraphDrawerCommitLine;
    return {
        {"diff/RVGitChangeset.cpp", "repository",
         making<RVGitChangeset>(noRepository, RVGitDiffSettings(), RVGitChangeset::Entries())},
        {"diff/RVGitComparisonLoader.cpp", "repository", making<RVGitDiffLoader>(noRepository)},
        {"diff/RVGitDiff.cpp", "leftObjectHash || rightObjectHash",
         [](const Repository& repository) {
             (void)RVGitDiff::diffByComparingBlob(std::nullopt, std::nullopt, repository,
                                                  std::nullopt);
         }},
        {"diff/RVGitDiff.cpp", "leftObjectHash || rightObjectHash",
         [](const Repository& repository) {
             (void)RVGitDiff::diffByComparingBlobWithEmptyBlob(std::nullopt, std::nullopt,
                                                               repository);
         }},
        {"diff/RVGitDiffChunk.cpp", "line.lineNumbers.count == lines.firstObject.lineNumbers.count",
         [](const Repository&) {
             using Line = RVGitDiffChunkLine;
             const RVGitDiffChunk chunk("", {},
                                        {Line({1}, RVGitDiffLineAdded, "+", ""),
                                         Line({1, 2}, RVGitDiffLineAdded, "+", "")});
         }},
        {"diff/RVGitDiffPatchGenerator.cpp", "diff",
         making<RVGitDiffPatchGenerator>(std::shared_ptr<const RVGitDiff>())},
        {"diff/RVGitDiffPatchGenerator.cpp", "chunkIndex < chunks.count",
         [](const Repository&) {
             (void)generatorOfChunkWithRanges({{1, 1}, {1, 1}})
                 .locatedPatchForLinesWithIndexes({{1, {0}}}, 0);
         }},
        {"diff/RVGitDiffPatchGenerator.cpp", "chunk.fileRanges.count == 2",
         [](const Repository&) {
             (void)generatorOfChunkWithRanges({{1, 1}, {1, 1}, {1, 1}})
                 .locatedPatchForLinesWithIndexes({{0, {0}}}, 0);
         }},
        {"diff/RVGitDiffPatchGenerator.cpp", "chunkIndex < chunks.count",
         [](const Repository&) {
             (void)generatorOfChunkWithRanges({{1, 1}, {1, 1}}).patchForChunkAtIndex(1, {}, 0);
         }},
        {"diff/RVGitDiffPatchGenerator.cpp", "chunk.fileRanges.count >= 2",
         [](const Repository&) {
             (void)generatorOfChunkWithRanges({{1, 1}}).patchForChunkAtIndex(0, {}, 0);
         }},
        {"history/RVGitBlame.cpp", "commit",
         making<RVGitAnnotatedLine>("file", "line", 1u, 1u, 1u, std::shared_ptr<RVGitCommit>())},
        {"history/RVGitBlame.cpp", "repository",
         making<RVGitBlame>(noRepository, "file", "HEAD",
                            std::vector<std::shared_ptr<RVGitAnnotatedLine>>())},
        {"history/RVGitBlame.cpp", "repository",
         [](const Repository&) { (void)RVGitBlame::blameForFilePath("file", "HEAD", nullptr); }},
        {"history/RVGitCommitQueries.cpp", "repository",
         [](const Repository&) {
             (void)RVGitCommit::allCommitsForRevisions({"HEAD"}, {}, nullptr, std::nullopt);
         }},
        {"history/RVGitCommitGraphDrawer.cpp", "commit",
         [](const Repository&) { (void)RVGitCommitGraphDrawer().drawGraphForCommit(nullptr); }},
        {"history/RVGitCommitGraphDrawerCommitLines.cpp", "commitLine",
         [](const Repository&) { Lanes().addCommitLine(nullptr); }},
        {"history/RVGitCommitGraphDrawerCommitLines.cpp", "index < commitLines.count",
         [](const Repository&) { Lanes().removeCommitLineAtIndex(0); }},
        {"history/RVGitCommitGraphDrawerCommitLines.cpp", "index < commitLines.count",
         [](const Repository&) {
             Lanes().replaceCommitLineAtIndex(0, std::make_shared<Lane>(1, "a"));
         }},
        {"history/RVGitCommitGraphDrawerCommitLines.cpp", "commitLine",
         [](const Repository&) {
             Lanes lanes;
             lanes.addCommitLine(std::make_shared<Lane>(1, "a"));
             lanes.replaceCommitLineAtIndex(0, nullptr);
         }},
        {"history/RVGitCommitGraphDrawerCommitLines.cpp", "index < commitLines.count",
         [](const Repository&) { (void)Lanes().commitLineAtIndex(0); }},
        {"history/RVGitContributionInfo.cpp", "author",
         making<RVGitContributionInfo>(std::shared_ptr<RVGitActor>(), 1u, "HEAD", std::nullopt)},
    };
}

std::vector<Row> rowsOfWorkingTreesAndMerges() {
    return {
        {"lfs/RVGitLFSManager.cpp", "pointer",
         [](const Repository& repository) {
             (void)RVGitLFSManager(repository).createFileFromPointer(nullptr, "/tmp/file");
         }},
        {"lfs/RVGitLFSManager.cpp", "refSpecs",
         [](const Repository& repository) {
             (void)RVGitLFSManager(repository)
                 .pushRemote(RVGitRemote::localRemoteWithRepository(repository),
                             RVGitLFSManager::RefSpecs());
         }},
        {"merge/RVGitDiffTool.cpp", "repository", making<RVGitDiffTool>(noRepository, "tool")},
        {"merge/RVGitMergeManager.cpp", "repository", making<RVGitMergeManager>(noRepository)},
        {"merge/RVGitMergeManagerRewriting.cpp", "revisions.count > 0",
         [](const Repository& repository) {
             (void)RVGitMergeManager(repository).allCommitsForRevisions({}, "HEAD");
         }},
        {"merge/RVGitMergeManagerRewriting.cpp", "command is fixup or squash",
         [](const Repository& repository) {
             (void)RVGitMergeManager(repository).combineRevisions({"HEAD"}, "HEAD~1", "drop");
         }},
        {"merge/RVGitMergeSequenceContentParser.cpp", "path.isAbsolutePath",
         [](const Repository&) {
             (void)RVGitMergeSequenceContentParser::initWithContentsOfFile("relative/todo");
         }},
        {"merge/RVGitMergeTool.cpp", "repository", making<RVGitMergeTool>(noRepository, "tool")},
        {"merge/RVGitSequenceEditor.cpp", "url.isFileURL",
         [](const Repository&) {
             (void)RVGitSequenceEditor({}).createGitSequenceEditorScriptAtURL(webAddress);
         }},
        {"worktree/RVGitAttributes.cpp", "repository",
         making<RVGitAttributes>(noRepository, "file", RVValue::StringMap())},
        {"worktree/RVGitCommitMessageEditor.cpp", "url.isFileURL",
         [](const Repository&) {
             (void)RVGitCommitMessageEditor("message").createGitCommitMessageEditorScriptAtURL(
                 webAddress);
         }},
        {"worktree/RVGitIgnores.cpp", "repository",
         making<RVGitIgnores>(noRepository, "/tmp/ignores")},
        {"worktree/RVGitIgnores.cpp", "repository",
         [](const Repository&) { (void)RVGitIgnores::defaultIgnoresForRepository(nullptr); }},
        {"worktree/RVGitIgnores.cpp", "repository",
         [](const Repository&) {
             (void)RVGitIgnores::ignoresWithExcludeFileForRepository(nullptr);
         }},
        // A repository that is not valid has no git directory to hold the file.
        {"worktree/RVGitIgnores.cpp", "filePath",
         [](const Repository& repository) {
             (void)RVGitIgnores::ignoresWithExcludeFileForRepository(
                 RVGitRepository::repositoryWithPath(repository->path() + "/../nowhere"));
         }},
        {"worktree/RVGitIndex.cpp", "repository", making<RVGitIndex>(noRepository)},
        {"worktree/RVGitStash.cpp", "repository",
         [](const Repository& repository) { RVGitStash stash(nullptr, refIn(repository)); }},
        {"worktree/RVGitStash.cpp", "ref",
         [](const Repository& repository) { RVGitStash stash(repository, nullptr); }},
        {"worktree/RVGitWorkingTreeEntryLoader.cpp", "repository",
         making<RVGitWorkingTreeEntryLoader>(noRepository)},
        {"worktree/RVGitWorkingTreeManager.cpp", "repository",
         making<RVGitWorkingTreeManager>(noRepository)},
        {"worktree/RVGitWorkingTreeManager.cpp", "url.isFileURL",
         [](const Repository& repository) {
             (void)RVGitWorkingTreeManager(repository)
                 .applyPatchFromFileAtURL(webAddress, std::nullopt);
         }},
    };
}

std::vector<Row> rowsOfRemotesAndSubmodules() {
    return {
        {"remotes/RVGitBranch.cpp", "repository != nil",
         [](const Repository& repository) { RVGitBranch branch(nullptr, refIn(repository)); }},
        {"remotes/RVGitBranch.cpp", "repository",
         [](const Repository&) {
             (void)RVGitBranch::isInitialCommitOnHeadBranchForRepository(nullptr);
         }},
        {"remotes/RVGitRemote.cpp", "repository != nil",
         making<RVGitRemote>(noRepository, "origin", std::nullopt, std::nullopt, std::nullopt,
                             false)},
        {"remotes/RVGitRemoteBranch.cpp", "repository != nil",
         [](const Repository& repository) {
             RVGitRemoteBranch branch(nullptr, refIn(repository), "origin", false);
         }},
        {"remotes/RVGitRemoteBranch.cpp", "ref != nil",
         [](const Repository& repository) {
             RVGitRemoteBranch branch(repository, nullptr, "origin", false);
         }},
        {"remotes/RVGitRemoteBranch.cpp", "ref != nil",
         [](const Repository& repository) {
             RVGitRemoteBranch(repository, refIn(repository), "origin", false).setRef(nullptr);
         }},
        {"remotes/RVGitRemoteBranchToRemote.cpp", "repository != nil",
         making<RVGitRemoteBranchToRemote>(noRepository)},
        {"remotes/RVGitRemoteConfig.cpp", "repository != nil",
         making<RVGitRemoteConfigLoader>(noRepository)},
        {"submodules/RVGitSubmodule.cpp", "repository",
         making<RVGitSubmodule>(noRepository, "name", "path")},
        {"submodules/RVGitSubmoduleConfig.cpp", "repository",
         making<RVGitSubmoduleConfig>(noRepository, RVGitSubmoduleConfigTypeLocal, "name",
                                      RVOptions())},
        {"submodules/RVGitSubmoduleConfigLoader.cpp", "repository",
         making<RVGitSubmoduleConfigLoader>(noRepository)},
        {"submodules/RVGitSubmoduleConfigManager.cpp", "repository",
         making<RVGitSubmoduleConfigManager>(noRepository, RVGitSubmoduleConfigTypeLocal)},
        {"submodules/RVGitSubmoduleConfigManager.cpp", "configType",
         [](const Repository& repository) {
             RVGitSubmoduleConfigManager manager(repository, RVGitSubmoduleConfigType{3});
         }},
        {"submodules/RVGitSubmoduleContainment.cpp", "repository",
         making<RVGitSubmoduleContainment>(noRepository)},
        {"submodules/RVGitSubmoduleLoader.cpp", "repository",
         making<RVGitSubmoduleLoader>(noRepository)},
        {"submodules/RVGitSubmoduleManager.cpp", "repository",
         making<RVGitSubmoduleManager>(noRepository)},
    };
}

std::vector<Row> table() {
    std::vector<Row> rows;
    for (const auto& part : {rowsOfCommandsAndObjects(), rowsOfHistoryAndDiffs(),
                             rowsOfWorkingTreesAndMerges(), rowsOfRemotesAndSubmodules()})
        rows.insert(rows.end(), part.begin(), part.end());
    return rows;
}

class RVGitPreconditionsTest : public RVGitRepositoryTestCase {};

TEST_F(RVGitPreconditionsTest, ABrokenOneThrowsAndSaysWhatWasAskedFor) {
    std::map<std::pair<std::string, std::string>, int> numbers;
    for (const Row& row : table()) {
        SCOPED_TRACE(row.file + ", \"" + row.text + "\", row " +
                     std::to_string(++numbers[{row.file, row.text}]));
        try {
            row.operation(repository());
            ADD_FAILURE() << "nothing was thrown";
        } catch (const RVInvalidParameterException& exception) {
            EXPECT_EQ(exception.what(), "Invalid parameter not satisfying: " + row.text);
        } catch (const std::exception& exception) {
            ADD_FAILURE() << "another exception was thrown: " << exception.what();
        }
    }
}

TEST_F(RVGitPreconditionsTest, EachPlaceThatAsksHasARow) {
    static const std::regex call(R"rx(requireParameter\(([^;]*?)"([^"]*)"\);)rx");
    static const std::regex anyCall(R"(requireParameter\()");
    using Places = std::map<std::pair<std::string, std::string>, std::size_t>;
    Places places;
    const std::filesystem::path root(RVGIT_SOURCES);
    for (const auto& entry : std::filesystem::recursive_directory_iterator(root)) {
        const std::string file = entry.path().lexically_relative(root).string();
        if (!entry.is_regular_file() || file == "base/RVError.h")
            continue;
        const std::string source = readFile(entry.path().string());
        const std::sregex_iterator end;
        std::size_t read = 0;
        for (std::sregex_iterator match(source.begin(), source.end(), call); match != end;
             ++match) {
            ++places[{file, (*match)[2]}];
            ++read;
        }
        EXPECT_EQ(read, static_cast<std::size_t>(std::distance(
                            std::sregex_iterator(source.begin(), source.end(), anyCall), end)))
            << file << " asks in a form that is not read here";
    }
    Places rows;
    for (const Row& row : table())
        ++rows[{row.file, row.text}];
    EXPECT_EQ(rows, places);
    EXPECT_GE(places.size(), 60u) << "the sources are no longer read";
}

}  // namespace
