#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "RVGit/base/RVError.h"
#include "RVGit/base/RVExport.h"
#include "RVGit/base/RVObservable.h"
#include "RVGit/base/RVTypes.h"
#include "RVGit/history/RVGitCommitOutputParser.h"
#include "RVGit/objects/RVGitObject.h"

class RVGitActor;
class RVGitRef;
class RVGitRepository;
class RVGitSignature;
class RVGitTree;

/// One commit: a snapshot that holds its repository strongly.
///
/// A commit of a listing is a place in what git printed; texts are made on request, and objects
/// when they are first asked for: author() and committer() make these two, signature() and the
/// setters make copies of all texts. It keeps the whole output of its listing alive: keep commits
/// of long listings as long as the listing is of use, and what is needed of single ones beyond that
/// as strings.
///
/// Any number of threads may read one commit; a setter needs it for itself. Each setter tells the
/// observers of its field; "mergeCommit" and "rootCommit" change with "parentCommitHashes".
class RVGIT_EXPORT RVGitCommit : public RVGitObject, public RVObservable {
public:
    using List = std::vector<std::shared_ptr<RVGitCommit>>;
    using Refs = std::vector<std::shared_ptr<RVGitRef>>;

    /// A blank commit, without a repository and with every field absent.
    RVGitCommit();
    /// Derives subject, body and the Subversion fields from the message. The repository is
    /// required.
    RVGitCommit(std::shared_ptr<RVGitRepository> repository, std::optional<std::string> commitHash,
                std::optional<std::string> treeHash, std::vector<std::string> parentCommitHashes,
                std::shared_ptr<RVGitActor> author, std::optional<RVDate> authorDate,
                std::shared_ptr<RVGitActor> committer, std::optional<RVDate> committerDate,
                std::optional<std::string> message, std::shared_ptr<RVGitSignature> signature);
    /// A commit of a listing, without refs and topoOrder.
    RVGitCommit(std::shared_ptr<RVGitRepository> repository,
                RVGitCommitOutputParserResultItem commitObject);
    ~RVGitCommit() override;
    RVGitCommit(const RVGitCommit&) = delete;
    RVGitCommit& operator=(const RVGitCommit&) = delete;

    [[nodiscard]] static std::shared_ptr<RVGitCommit> commitWithRepository(
        std::shared_ptr<RVGitRepository> repository,
        RVGitCommitOutputParserResultItem commitObject);
    [[nodiscard]] static std::shared_ptr<RVGitCommit> commitWithRepository(
        std::shared_ptr<RVGitRepository> repository, std::optional<std::string> commitHash,
        std::optional<std::string> treeHash, std::vector<std::string> parentCommitHashes,
        std::shared_ptr<RVGitActor> author, std::optional<RVDate> authorDate,
        std::shared_ptr<RVGitActor> committer, std::optional<RVDate> committerDate,
        std::optional<std::string> message, std::shared_ptr<RVGitSignature> signature = nullptr);

    // Queries. Each runs `git log` (RVGitLogCommand, whose options they take and whose codes they
    // give) and blocks. Absent, with a filled place, on failure.

    /// The commit of a hash, or of any revision. With `verifySignature` its signature is verified,
    /// which runs gpg or ssh-keygen.
    [[nodiscard]] static std::shared_ptr<RVGitCommit> commitForCommitHash(
        const std::string& commitHash, const std::shared_ptr<RVGitRepository>& repository,
        RVErrorPlace error = nullptr);
    [[nodiscard]] static std::shared_ptr<RVGitCommit> commitForCommitHash(
        const std::string& commitHash, const std::shared_ptr<RVGitRepository>& repository,
        bool verifySignature, RVErrorPlace error = nullptr);
    /// The commits of the range "endRevision..startRevision".
    [[nodiscard]] static std::optional<List> allCommitsFromRevision(
        const std::string& startRevision, const std::string& endRevision,
        const std::shared_ptr<RVGitRepository>& repository,
        const std::optional<RVOptions>& options = std::nullopt, RVErrorPlace error = nullptr);
    /// The commits that one of the two has and the other has not: "revision...otherRevision".
    [[nodiscard]] static std::optional<List> allCommitsByComparingRevision(
        const std::string& revision, const std::string& otherRevision,
        const std::shared_ptr<RVGitRepository>& repository,
        const std::optional<RVOptions>& options = std::nullopt, RVErrorPlace error = nullptr);
    /// Commits in git's order, with refs and a running topoOrder from RVGitLogOptionOffset on.
    /// An unborn branch has none. Without revisions git starts at HEAD; with file paths it gives
    /// the commits that change them. Lists with file paths or patterns to search for leave commits
    /// out and make no graph: see RVGitCommitGraphDrawer.
    [[nodiscard]] static std::optional<List> allCommitsForRevisions(
        const std::vector<std::string>& revisions, const std::vector<std::string>& filePaths,
        const std::shared_ptr<RVGitRepository>& repository,
        const std::optional<RVOptions>& options = std::nullopt, RVErrorPlace error = nullptr);

    // The same, hashes only.
    [[nodiscard]] static std::optional<std::vector<std::string>> allCommitHashesFromRevision(
        const std::string& startRevision, const std::string& endRevision,
        const std::shared_ptr<RVGitRepository>& repository,
        const std::optional<RVOptions>& options = std::nullopt, RVErrorPlace error = nullptr);
    [[nodiscard]] static std::optional<std::vector<std::string>> allCommitHashesByComparingRevision(
        const std::string& revision, const std::string& otherRevision,
        const std::shared_ptr<RVGitRepository>& repository,
        const std::optional<RVOptions>& options = std::nullopt, RVErrorPlace error = nullptr);
    [[nodiscard]] static std::optional<std::vector<std::string>> allCommitHashesForRevisions(
        const std::vector<std::string>& revisions, const std::vector<std::string>& filePaths,
        const std::shared_ptr<RVGitRepository>& repository,
        const std::optional<RVOptions>& options = std::nullopt, RVErrorPlace error = nullptr);

    /// How many commits there are; RVNotFound on failure.
    [[nodiscard]] static std::int64_t countAllCommitsForRevisions(
        const std::vector<std::string>& revisions, const std::vector<std::string>& filePaths,
        const std::shared_ptr<RVGitRepository>& repository,
        const std::optional<RVOptions>& options = std::nullopt, RVErrorPlace error = nullptr);

    // Fields.

    /// The commit hash.
    [[nodiscard]] std::optional<std::string> objectHash() const override { return commitHash(); }
    [[nodiscard]] std::optional<std::string> commitHash() const;
    void setCommitHash(std::optional<std::string> hash);
    [[nodiscard]] std::optional<std::string> treeHash() const;
    void setTreeHash(std::optional<std::string> hash);
    /// In git's order, the first parent first.
    [[nodiscard]] std::vector<std::string> parentCommitHashes() const;
    void setParentCommitHashes(std::vector<std::string> hashes);
    [[nodiscard]] std::shared_ptr<RVGitActor> author() const;
    void setAuthor(std::shared_ptr<RVGitActor> author);
    [[nodiscard]] std::optional<RVDate> authorDate() const;
    void setAuthorDate(std::optional<RVDate> date);
    [[nodiscard]] std::shared_ptr<RVGitActor> committer() const;
    void setCommitter(std::shared_ptr<RVGitActor> committer);
    [[nodiscard]] std::optional<RVDate> committerDate() const;
    void setCommitterDate(std::optional<RVDate> date);
    /// The first paragraph of the message, which may have several lines.
    [[nodiscard]] std::optional<std::string> subject() const;
    void setSubject(std::optional<std::string> subject);
    /// What follows the first blank line of the message; absent without one.
    [[nodiscard]] std::optional<std::string> body() const;
    void setBody(std::optional<std::string> body);
    /// The whole message, trimmed. The setter leaves subject and body as they are.
    [[nodiscard]] std::optional<std::string> message() const;
    void setMessage(std::optional<std::string> message);
    /// The refs that point at the commit, HEAD among them; absent if there are none.
    [[nodiscard]] const std::optional<Refs>& refs() const;
    void setRefs(std::optional<Refs> refs);
    /// Always there on a commit of a listing, with every field absent if none was asked for.
    [[nodiscard]] std::shared_ptr<RVGitSignature> signature() const;
    void setSignature(std::shared_ptr<RVGitSignature> signature);
    /// The position in the listing.
    [[nodiscard]] std::uint64_t topoOrder() const { return topoOrder_; }
    void setTopoOrder(std::uint64_t topoOrder);
    /// Whether the message has a "git-svn-id" line, from which the next three are.
    [[nodiscard]] bool isSVNCommit() const;
    void setSVNCommit(bool isSVNCommit);
    [[nodiscard]] std::optional<std::string> SVNRepositoryUUID() const;
    void setSVNRepositoryUUID(std::optional<std::string> uuid);
    [[nodiscard]] std::optional<std::string> SVNRepositoryURL() const;
    void setSVNRepositoryURL(std::optional<std::string> url);
    [[nodiscard]] std::optional<std::string> SVNRevision() const;
    void setSVNRevision(std::optional<std::string> revision);
    /// For callers to keep the tree in; absent until they set it.
    [[nodiscard]] std::shared_ptr<RVGitTree> tree() const;
    void setTree(std::shared_ptr<RVGitTree> tree);

    /// Two or more parents.
    [[nodiscard]] bool isMergeCommit() const { return parentCount() >= 2; }
    /// Kept for compatibility: exactly one parent, and not none.
    [[nodiscard]] bool isRootCommit() const { return parentCount() == 1; }

    // For whoever goes through many commits: nothing is copied or made. The views hold until the
    // next setter, of the commit or of its author or committer, and no longer than the commit.
    [[nodiscard]] std::optional<std::string_view> authorNameView() const;
    [[nodiscard]] std::optional<std::string_view> authorEmailView() const;
    [[nodiscard]] std::optional<std::string_view> committerNameView() const;
    [[nodiscard]] std::optional<std::string_view> committerEmailView() const;
    [[nodiscard]] std::optional<std::string_view> commitHashView() const;
    [[nodiscard]] std::vector<std::string_view> parentCommitHashViews() const;
    [[nodiscard]] std::optional<std::string_view> messageView() const;
    [[nodiscard]] std::size_t parentCount() const;

    // What the constructor derives from the message. What the message does not hold is left as it
    // is: the body without a blank line, the Subversion fields without a "git-svn-id" line.
    void setSubjectFromCommitMessage(const std::optional<std::string>& message);
    void setBodyFromCommitMessage(const std::optional<std::string>& message);
    void setSVNInfoFromCommitMessage(const std::optional<std::string>& message);

private:
    struct Fields;

    /// The fields as values of their own, made once; null as long as nothing has asked for them.
    [[nodiscard]] const Fields* madeFields() const {
        return fields_.load(std::memory_order_acquire);
    }
    [[nodiscard]] Fields& fields() const;
    /// Author and committer, made once, ahead of the other fields.
    struct People;
    [[nodiscard]] const People& people() const;
    /// The two as they are now; null as long as nothing has asked for them.
    [[nodiscard]] const RVGitActor* madeAuthor() const;
    [[nodiscard]] const RVGitActor* madeCommitter() const;
    [[nodiscard]] bool hasMadePeople() const {
        return madeFields() || people_.load(std::memory_order_acquire);
    }
    template <typename Value, typename Argument>
    void set(Value Fields::*field, Argument& value, std::string_view name);

    RVGitCommitOutputParserResultItem item_;
    mutable std::atomic<Fields*> fields_ = nullptr;
    mutable std::atomic<People*> people_ = nullptr;
    /// Null where there are none, as on nearly all commits.
    std::unique_ptr<const std::optional<Refs>> refs_;
    std::uint64_t topoOrder_ = 0;
};
