#include <cstdio>
#include <fstream>
#include <string>
#include <vector>

#include "RVGit/base/RVURL.h"
#include "RVGit/command/RVGitBinary.h"
#include "RVGit/history/RVGitCommit.h"
#include "RVGit/merge/RVGitMergeManager.h"
#include "RVGit/merge/RVGitSequenceEditor.h"
#include "RVGit/merge/RVGitSequenceInstruction.h"
#include "RVGit/repository/RVGitRepository.h"
#include "RVGit/worktree/RVGitCommitMessageEditor.h"
#include "bench/support/RVBareProcess.h"
#include "bench/support/RVBench.h"
#include "bench/support/RVBenchDirectory.h"

// What it costs to reword a commit far back, and to foretell a large merge, beside the git
// processes that do the work.

namespace {

constexpr int numberOfCommits = 120;
constexpr int rewordedCommit = 100;
constexpr int numberOfFiles = 5000;
constexpr int numberOfLines = 60;

/// In the temporary directory, for the life of the program.
class Repository : public RVBenchDirectory {
public:
    /// `writeStream` writes what git fast-import takes.
    explicit Repository(void (*writeStream)(FILE* stream)) : RVBenchDirectory("rvgit-rewrite") {
        (void)runBare({"git", "init", "--quiet", "--initial-branch=main", path()});
        {
            const RVFastImport import(path());
            writeStream(import.stream());
        }
        for (const char* key : {"user.name", "user.email"})
            (void)runBare({"git", "config", key, "bench"}, path());
        repository_ = RVGitRepository::repositoryWithPath(path());
    }
    [[nodiscard]] const std::shared_ptr<RVGitRepository>& repository() const { return repository_; }

private:
    std::shared_ptr<RVGitRepository> repository_;
};

void writeCommit(FILE* stream, const char* branch, const char* message) {
    std::fprintf(stream, "commit refs/heads/%s\ncommitter A <a@b> 1577934245 +0000\ndata %zu\n%s\n",
                 branch, std::string(message).size(), message);
}

void writeHistory(FILE* stream) {
    for (int number = 0; number < numberOfCommits; ++number) {
        writeCommit(stream, "main", "Message of a commit\n\nWith a body of some length.");
        std::fprintf(stream, "M 100644 inline file-%d\ndata 5\ntext\n\n", number);
    }
}

/// Files that are changed on both sides, at both ends, without a conflict.
void writeSides(FILE* stream) {
    const struct {
        const char* branch;
        int changedLines;
        bool atTheEnd;
    } sides[] = {{"base", 0, false}, {"main", 20, false}, {"other", 20, true}};
    for (const auto& side : sides) {
        writeCommit(stream, side.branch, "Message");
        if (side.changedLines > 0)
            std::fprintf(stream, "from refs/heads/base^0\n");
        for (int file = 0; file < numberOfFiles; ++file) {
            std::string text;
            for (int line = 0; line < numberOfLines; ++line) {
                const int distance = side.atTheEnd ? numberOfLines - 1 - line : line;
                text += "line " + std::to_string(line) + " of file " + std::to_string(file) +
                        (distance < side.changedLines ? ", which has been changed\n" : "\n");
            }
            std::fprintf(stream, "M 100644 inline directory-%d/file-%d\ndata %zu\n%s\n", file % 50,
                         file, text.size(), text.c_str());
        }
        if (side.changedLines == 0)
            std::fprintf(stream, "checkpoint\n\n");
    }
}

void benchReword(RVBench& bench) {
    RVBenchTable table(bench, "reword");
    const Repository rewritten(writeHistory);
    (void)runBare({"git", "reset", "--quiet", "--hard", "main"}, rewritten.path());
    RVGitMergeManager manager(rewritten.repository());
    const auto hashes =
        RVGitCommit::allCommitHashesForRevisions({"HEAD"}, {}, rewritten.repository());
    if (!hashes || hashes->size() != numberOfCommits)
        fail("the history is not whole");
    const std::string hash = (*hashes)[rewordedCommit - 1];
    const std::string parent = (*hashes)[rewordedCommit];

    const auto begin = [&] {
        // No tree changes, so that the index and the files stay as they are.
        std::ofstream(rewritten.path() + "/.git/refs/heads/main") << hashes->front() << "\n";
    };
    const std::string sequenceScript = rewritten.path() + "/.git/sequence-script";
    const std::string messageScript = rewritten.path() + "/.git/message-script";
    RVGitSequenceInstruction::List instructions;
    for (int index = rewordedCommit - 1; index >= 0; --index)
        instructions.push_back(RVGitSequenceInstruction::sequenceInstructionWithCommand(
            (*hashes)[index] == hash ? "reword" : "pick", (*hashes)[index]));

    table.add("git log and git rebase", [&] {
        begin();
        const auto log = runBare(
            {"git", "--no-pager", "log", "--topo-order", "--pretty=fuller", parent + "..HEAD"},
            rewritten.path());
        if (!RVGitSequenceEditor::createGitSequenceEditorScriptAtURL(
                RVURL::fileURLWithPath(sequenceScript), instructions) ||
            !RVGitCommitMessageEditor::createGitCommitMessageEditorScriptAtURL(
                RVURL::fileURLWithPath(messageScript), "New message"))
            fail("the scripts could not be written");
        setenv("GIT_SEQUENCE_EDITOR", sequenceScript.c_str(), 1);
        setenv("GIT_EDITOR", messageScript.c_str(), 1);
        const auto rebase =
            runBare({"git", "-c", "commit.cleanup=whitespace", "rebase", "--interactive", parent},
                    rewritten.path());
        unsetenv("GIT_SEQUENCE_EDITOR");
        unsetenv("GIT_EDITOR");
        if (log.exitCode != 0 || rebase.exitCode != 0)
            fail("git failed");
        return static_cast<std::size_t>(rewordedCommit);
    });
    table.add("reword", [&] {
        begin();
        if (!manager.setCommitMessage("New message", hash))
            fail("the commit could not be reworded");
        return static_cast<std::size_t>(rewordedCommit);
    });
    table.run(15);
    table.bound("reword", "git log and git rebase", 1.05);
}

void benchPreview(RVBench& bench) {
    RVBenchTable table(bench, "preview");
    const Repository sides(writeSides);
    RVGitMergeManager manager(sides.repository());
    std::size_t reportSize = 0;
    table.add("git merge-tree", [&] {
        const auto report =
            runBare({"git", "--no-pager", "merge-tree", "base", "main", "other"}, sides.path());
        if (report.exitCode != 0)
            fail("git merge-tree failed");
        return reportSize = report.outputBytes;
    });
    table.add("preview", [&] {
        if (!manager.canMergeRevision("other", "main", std::string("base"), nullptr))
            fail("the merge is not clean");
        return std::size_t{1};
    });
    table.add("preview of nothing", [&] {
        if (!manager.canMergeRevision("base", "base", std::string("base"), nullptr))
            fail("the merge is not clean");
        return std::size_t{1};
    });
    table.run(11);
    table.bound("preview", "git merge-tree", 1.10);
    const double least = static_cast<double>(table.peakMemory("preview of nothing"));
    table.bound("memory of the preview / size of the report",
                (static_cast<double>(table.peakMemory("preview")) - least) /
                    static_cast<double>(reportSize == 0 ? 1 : reportSize),
                2);
}

}  // namespace

int main(int argc, char** argv) {
    RVBench bench(argc, argv);
    RVGitBinary::setDefaultGitBinary(RVGitBinary::gitBinaryWithPath("/usr/bin/git"));
    benchReword(bench);
    benchPreview(bench);
    return bench.finish();
}
