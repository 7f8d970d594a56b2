#include <git2.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "RVGit/command/RVGitActor.h"
#include "RVGit/command/RVGitBinary.h"
#include "RVGit/history/RVGitCommit.h"
#include "RVGit/history/RVGitLogCommand.h"
#include "RVGit/repository/RVGitRepository.h"
#include "bench/support/RVBareProcess.h"
#include "bench/support/RVBench.h"

// The whole history of a repository, with decorations: the library against the git process that it
// runs, and against a walk by a library that reads the objects itself.

namespace {

RVGitCommit::List listHistory(const std::string& path) {
    const auto commits =
        RVGitCommit::allCommitsForRevisions({}, {}, RVGitRepository::repositoryWithPath(path),
                                            RVOptions{{RVGitLogOptionAllRefs, true}});
    if (!commits) {
        std::fprintf(stderr, "the history of %s cannot be listed\n", path.c_str());
        std::exit(1);
    }
    return *commits;
}

std::size_t readEveryText(const RVGitCommit::List& commits) {
    std::size_t bytes = 0;
    for (const auto& commit : commits) {
        bytes += commit->commitHash()->size() + commit->treeHash()->size();
        for (const std::string& parent : commit->parentCommitHashes())
            bytes += parent.size();
        bytes += commit->subject()->size() + commit->message()->size();
        bytes += commit->author()->name()->size() + commit->committer()->name()->size();
    }
    return bytes;
}

// The command line of listHistory(), asked of the command itself.
std::vector<std::string> logCommandLine(const std::string& path) {
    const auto command = RVGitLogCommand::gitLogCommandWithRepository(
        RVGitRepository::repositoryWithPath(path),
        RVOptions{{RVGitLogOptionAllRefs, true}, {RVGitLogOptionLimit, 1}});
    command->setDecoratesCommits(true);
    command->run();
    std::vector<std::string> line = command->arguments();
    std::erase(line, "-n1");
    line.insert(line.begin(), command->launchPath());
    return line;
}

void check(int result) {
    if (result < 0) {
        std::fprintf(stderr, "libgit2: %s\n", git_error_last()->message);
        std::exit(1);
    }
}

template <auto Free>
struct Freeing {
    template <typename Object>
    void operator()(Object* object) const {
        Free(object);
    }
};
using PeerRepository = std::unique_ptr<git_repository, Freeing<git_repository_free>>;
using PeerWalk = std::unique_ptr<git_revwalk, Freeing<git_revwalk_free>>;
using PeerCommit = std::unique_ptr<git_commit, Freeing<git_commit_free>>;
using PeerReference = std::unique_ptr<git_reference, Freeing<git_reference_free>>;
using PeerObject = std::unique_ptr<git_object, Freeing<git_object_free>>;
using PeerReferences =
    std::unique_ptr<git_reference_iterator, Freeing<git_reference_iterator_free>>;
using RefsByHash = std::map<std::string, std::vector<std::string>>;

struct PeerFields {
    std::string hash, treeHash, authorName, authorEmail, committerName, committerEmail, message;
    std::vector<std::string> parentHashes, refs;
    git_time_t authorTime = 0, committerTime = 0;
};

std::string hexText(const git_oid* id) {
    std::string text(GIT_OID_HEXSZ, '\0');
    git_oid_fmt(text.data(), id);
    return text;
}

RefsByHash peerRefs(git_repository* repository) {
    RefsByHash refs;
    git_reference_iterator* iterator = nullptr;
    check(git_reference_iterator_new(&iterator, repository));
    const PeerReferences owner(iterator);
    for (git_reference* reference = nullptr; git_reference_next(&reference, iterator) == 0;) {
        const PeerReference referenceOwner(reference);
        git_object* object = nullptr;
        if (git_reference_peel(&object, reference, GIT_OBJECT_COMMIT) != 0)
            continue;
        const PeerObject objectOwner(object);
        refs[hexText(git_object_id(object))].emplace_back(git_reference_name(reference));
    }
    return refs;
}

PeerFields peerFields(const git_commit* commit, const RefsByHash& refs) {
    PeerFields fields;
    fields.hash = hexText(git_commit_id(commit));
    fields.treeHash = hexText(git_commit_tree_id(commit));
    for (unsigned index = 0; index < git_commit_parentcount(commit); ++index)
        fields.parentHashes.push_back(hexText(git_commit_parent_id(commit, index)));
    const git_signature* author = git_commit_author(commit);
    fields.authorName = author->name;
    fields.authorEmail = author->email;
    fields.authorTime = author->when.time;
    const git_signature* committer = git_commit_committer(commit);
    fields.committerName = committer->name;
    fields.committerEmail = committer->email;
    fields.committerTime = committer->when.time;
    fields.message = git_commit_message(commit);
    if (const auto found = refs.find(fields.hash); found != refs.end())
        fields.refs = found->second;
    return fields;
}

// Gives every commit, newest first, to `take`.
template <typename Take>
void walkWithPeer(const std::string& path, const Take& take) {
    git_repository* repository = nullptr;
    check(git_repository_open(&repository, path.c_str()));
    const PeerRepository repositoryOwner(repository);
    const RefsByHash refs = peerRefs(repository);
    git_revwalk* walk = nullptr;
    check(git_revwalk_new(&walk, repository));
    const PeerWalk walkOwner(walk);
    check(git_revwalk_sorting(walk, GIT_SORT_TIME));
    check(git_revwalk_push_head(walk));
    check(git_revwalk_push_glob(walk, "refs/*"));
    for (git_oid id; git_revwalk_next(&id, walk) == 0;) {
        git_commit* commit = nullptr;
        check(git_commit_lookup(&commit, repository, &id));
        take(PeerCommit(commit), refs);
    }
}

std::size_t listWithPeer(const std::string& path) {
    std::vector<PeerFields> commits;
    walkWithPeer(path, [&](const PeerCommit& commit, const RefsByHash& refs) {
        commits.push_back(peerFields(commit.get(), refs));
    });
    return commits.size();
}

// The least that loads the fields: they are read once and the objects dropped at once.
std::size_t visitWithPeer(const std::string& path) {
    std::size_t count = 0;
    walkWithPeer(path, [&](const PeerCommit& commit, const RefsByHash& refs) {
        count += peerFields(commit.get(), refs).hash.size() == GIT_OID_HEXSZ ? 1 : 0;
    });
    return count;
}

}  // namespace

int main(int argc, char** argv) {
    RVBench bench(argc, argv);
    git_libgit2_init();
    RVGitBinary::setDefaultGitBinary(RVGitBinary::gitBinaryWithPath("/usr/bin/git"));
    const std::string path = bench.repositoryPath();

    RVBenchTable table(bench, "log");
    table.add("bare", [&] {
        static const std::vector<std::string> line = logCommandLine(path);
        return runBare(line).outputBytes;
    });
    table.add("library", [&] { return listHistory(path).size(); });
    table.add("library, every text read", [&] { return readEveryText(listHistory(path)); });
    table.add("libgit2", [&] { return listWithPeer(path); });
    table.add("libgit2, nothing kept", [&] { return visitWithPeer(path); });
    table.run(11);
    table.bound("library", "bare", 1.10);
    table.bound("library", "libgit2", 0.92);
    table.boundPeakMemory("library",
                          2.5 * static_cast<double>(runBare(logCommandLine(path)).outputBytes));
    return bench.finish();
}
