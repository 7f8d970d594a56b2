#include "RVGit/history/RVGitCommit.h"

#include <cstring>

#include "RVGit/base/RVNeverDestroyed.h"
#include "RVGit/base/RVRegularExpression.h"
#include "RVGit/base/RVString.h"
#include "RVGit/command/RVGitActor.h"
#include "RVGit/objects/RVGitSignature.h"

namespace {

using Text = std::optional<std::string>;

struct SVNInfo {
    std::string_view repositoryURL;
    std::string_view revision;
    std::string_view repositoryUUID;
};

std::optional<std::string_view> viewOf(const Text& text) {
    return text ? std::optional<std::string_view>(*text) : std::nullopt;
}

constexpr std::string_view paragraphBreak = "\n\n";

Text subjectOf(std::optional<std::string_view> message) {
    if (!message)
        return std::nullopt;
    const std::size_t end = message->find(paragraphBreak);
    return end == std::string_view::npos ? stringByTrimmingWhitespaceAndNewline(*message)
                                         : std::string(message->substr(0, end));
}

Text bodyOf(std::optional<std::string_view> message) {
    const std::size_t start = message ? message->find(paragraphBreak) : std::string_view::npos;
    if (start == std::string_view::npos)
        return std::nullopt;
    return stringByTrimmingWhitespaceAndNewline(message->substr(start));
}

std::optional<SVNInfo> SVNInfoOf(std::optional<std::string_view> message) {
    static const RVNeverDestroyed<RVRegularExpression> expression(
        R"(git-svn-id: (.+)@([0-9]+) ([0-9a-f\-]+))");
    constexpr std::string_view literal = "git-svn-id: ";
    if (!message)
        return std::nullopt;
    const void* found = memmem(message->data(), message->size(), literal.data(), literal.size());
    if (!found)
        return std::nullopt;
    const auto offset = static_cast<std::size_t>(static_cast<const char*>(found) - message->data());
    const auto match = expression->firstMatch(*message, offset);
    if (match.empty())
        return std::nullopt;
    return SVNInfo{*match[1], *match[2], *match[3]};
}

}  // namespace

struct RVGitCommit::Fields {
    Text commitHash;
    Text treeHash;
    std::vector<std::string> parentCommitHashes;
    std::shared_ptr<RVGitActor> author;
    std::optional<RVDate> authorDate;
    std::shared_ptr<RVGitActor> committer;
    std::optional<RVDate> committerDate;
    Text subject;
    Text body;
    Text message;
    std::shared_ptr<RVGitSignature> signature;
    bool isSVNCommit = false;
    Text SVNRepositoryUUID;
    Text SVNRepositoryURL;
    Text SVNRevision;
    std::shared_ptr<RVGitTree> tree;

    void deriveSubject(std::optional<std::string_view> from) { subject = subjectOf(from); }
    void deriveBody(std::optional<std::string_view> from) {
        if (auto derived = bodyOf(from))
            body = std::move(derived);
    }
    void deriveSVNInfo(std::optional<std::string_view> from) {
        if (const auto info = SVNInfoOf(from)) {
            SVNRepositoryURL = info->repositoryURL;
            SVNRevision = info->revision;
            SVNRepositoryUUID = info->repositoryUUID;
            isSVNCommit = true;
        }
    }
    void deriveFromMessage() {
        deriveSubject(message);
        deriveBody(message);
        deriveSVNInfo(message);
    }
};

struct RVGitCommit::People {
    std::shared_ptr<RVGitActor> author;
    std::shared_ptr<RVGitActor> committer;
};

RVGitCommit::RVGitCommit() : RVGitObject(RVGitObjectTypeCommit), fields_(new Fields) {}

RVGitCommit::RVGitCommit(std::shared_ptr<RVGitRepository> repository, Text commitHash,
                         Text treeHash, std::vector<std::string> parentCommitHashes,
                         std::shared_ptr<RVGitActor> author, std::optional<RVDate> authorDate,
                         std::shared_ptr<RVGitActor> committer, std::optional<RVDate> committerDate,
                         Text message, std::shared_ptr<RVGitSignature> signature)
    : RVGitObject(std::move(repository), RVGitObjectTypeCommit, std::nullopt) {
    auto fields = std::make_unique<Fields>();
    fields->commitHash = std::move(commitHash);
    fields->treeHash = std::move(treeHash);
    fields->parentCommitHashes = std::move(parentCommitHashes);
    fields->author = std::move(author);
    fields->authorDate = authorDate;
    fields->committer = std::move(committer);
    fields->committerDate = committerDate;
    fields->message = std::move(message);
    fields->signature = std::move(signature);
    fields->deriveFromMessage();
    fields_ = fields.release();
}

RVGitCommit::RVGitCommit(std::shared_ptr<RVGitRepository> repository,
                         RVGitCommitOutputParserResultItem commitObject)
    : RVGitObject(std::move(repository), RVGitObjectTypeCommit, std::nullopt),
      item_(std::move(commitObject)) {}

RVGitCommit::~RVGitCommit() {
    delete fields_.load(std::memory_order_relaxed);
    delete people_.load(std::memory_order_relaxed);
}

std::shared_ptr<RVGitCommit> RVGitCommit::commitWithRepository(
    std::shared_ptr<RVGitRepository> repository, RVGitCommitOutputParserResultItem commitObject) {
    return std::make_shared<RVGitCommit>(std::move(repository), std::move(commitObject));
}

std::shared_ptr<RVGitCommit> RVGitCommit::commitWithRepository(
    std::shared_ptr<RVGitRepository> repository, Text commitHash, Text treeHash,
    std::vector<std::string> parentCommitHashes, std::shared_ptr<RVGitActor> author,
    std::optional<RVDate> authorDate, std::shared_ptr<RVGitActor> committer,
    std::optional<RVDate> committerDate, Text message, std::shared_ptr<RVGitSignature> signature) {
    return std::make_shared<RVGitCommit>(std::move(repository), std::move(commitHash),
                                         std::move(treeHash), std::move(parentCommitHashes),
                                         std::move(author), authorDate, std::move(committer),
                                         committerDate, std::move(message), std::move(signature));
}

// Two threads may make the fields at once; the one that comes second drops what it made, so that
// both see the same objects.
RVGitCommit::Fields& RVGitCommit::fields() const {
    Fields* present = fields_.load(std::memory_order_acquire);
    if (present)
        return *present;
    auto made = std::make_unique<Fields>();
    made->commitHash = item_.commitHash();
    made->treeHash = item_.treeHash();
    made->parentCommitHashes = item_.parentCommitHashes();
    made->author = people().author;
    made->authorDate = item_.authorDate();
    made->committer = people().committer;
    made->committerDate = item_.committerDate();
    made->message = item_.message();
    made->signature = RVGitSignature::signatureWithName(item_.GPGUsername(), item_.GPGEmail(),
                                                        item_.GPGKeyIdentifier(),
                                                        item_.GPGSigningKey(), item_.GPGStatus());
    made->deriveFromMessage();
    if (fields_.compare_exchange_strong(present, made.get(), std::memory_order_acq_rel,
                                        std::memory_order_acquire))
        return *made.release();
    return *present;
}

const RVGitCommit::People& RVGitCommit::people() const {
    People* present = people_.load(std::memory_order_acquire);
    if (present)
        return *present;
    auto made = std::make_unique<People>();
    made->author = RVGitActor::actorWithName(item_.authorName(), item_.authorEmail());
    made->committer = RVGitActor::actorWithName(item_.committerName(), item_.committerEmail());
    if (people_.compare_exchange_strong(present, made.get(), std::memory_order_acq_rel,
                                        std::memory_order_acquire))
        return *made.release();
    return *present;
}

template <typename Value, typename Argument>
void RVGitCommit::set(Value Fields::*field, Argument& value, std::string_view name) {
    fields().*field = std::move(value);
    fieldsDidChange({name});
}

Text RVGitCommit::commitHash() const {
    const Fields* made = madeFields();
    return made ? made->commitHash : item_.commitHash();
}

void RVGitCommit::setCommitHash(Text hash) {
    fields().commitHash = std::move(hash);
    fieldsDidChange({"commitHash", "objectHash"});
}

Text RVGitCommit::treeHash() const {
    const Fields* made = madeFields();
    return made ? made->treeHash : item_.treeHash();
}

void RVGitCommit::setTreeHash(Text hash) {
    set(&Fields::treeHash, hash, "treeHash");
}

std::vector<std::string> RVGitCommit::parentCommitHashes() const {
    const Fields* made = madeFields();
    return made ? made->parentCommitHashes : item_.parentCommitHashes();
}

void RVGitCommit::setParentCommitHashes(std::vector<std::string> hashes) {
    fields().parentCommitHashes = std::move(hashes);
    fieldsDidChange({"parentCommitHashes", "mergeCommit", "rootCommit"});
}

std::shared_ptr<RVGitActor> RVGitCommit::author() const {
    const Fields* made = madeFields();
    return made ? made->author : people().author;
}

void RVGitCommit::setAuthor(std::shared_ptr<RVGitActor> author) {
    set(&Fields::author, author, "author");
}

std::optional<RVDate> RVGitCommit::authorDate() const {
    const Fields* made = madeFields();
    return made ? made->authorDate : item_.authorDate();
}

void RVGitCommit::setAuthorDate(std::optional<RVDate> date) {
    set(&Fields::authorDate, date, "authorDate");
}

std::shared_ptr<RVGitActor> RVGitCommit::committer() const {
    const Fields* made = madeFields();
    return made ? made->committer : people().committer;
}

void RVGitCommit::setCommitter(std::shared_ptr<RVGitActor> committer) {
    set(&Fields::committer, committer, "committer");
}

std::optional<RVDate> RVGitCommit::committerDate() const {
    const Fields* made = madeFields();
    return made ? made->committerDate : item_.committerDate();
}

void RVGitCommit::setCommitterDate(std::optional<RVDate> date) {
    set(&Fields::committerDate, date, "committerDate");
}

Text RVGitCommit::subject() const {
    const Fields* made = madeFields();
    return made ? made->subject : subjectOf(item_.messageView());
}

void RVGitCommit::setSubject(Text subject) {
    set(&Fields::subject, subject, "subject");
}

Text RVGitCommit::body() const {
    const Fields* made = madeFields();
    return made ? made->body : bodyOf(item_.messageView());
}

void RVGitCommit::setBody(Text body) {
    set(&Fields::body, body, "body");
}

Text RVGitCommit::message() const {
    const Fields* made = madeFields();
    return made ? made->message : item_.message();
}

void RVGitCommit::setMessage(Text message) {
    set(&Fields::message, message, "message");
}

const std::optional<RVGitCommit::Refs>& RVGitCommit::refs() const {
    static const RVNeverDestroyed<std::optional<Refs>> none;
    return refs_ ? *refs_ : *none;
}

void RVGitCommit::setRefs(std::optional<Refs> refs) {
    refs_ = refs ? std::make_unique<const std::optional<Refs>>(std::move(refs)) : nullptr;
    fieldsDidChange({"refs"});
}

std::shared_ptr<RVGitSignature> RVGitCommit::signature() const {
    return fields().signature;
}

void RVGitCommit::setSignature(std::shared_ptr<RVGitSignature> signature) {
    set(&Fields::signature, signature, "signature");
}

void RVGitCommit::setTopoOrder(std::uint64_t topoOrder) {
    topoOrder_ = topoOrder;
    fieldsDidChange({"topoOrder"});
}

bool RVGitCommit::isSVNCommit() const {
    const Fields* made = madeFields();
    return made ? made->isSVNCommit : SVNInfoOf(item_.messageView()).has_value();
}

void RVGitCommit::setSVNCommit(bool isSVNCommit) {
    set(&Fields::isSVNCommit, isSVNCommit, "SVNCommit");
}

Text RVGitCommit::SVNRepositoryUUID() const {
    return fields().SVNRepositoryUUID;
}

void RVGitCommit::setSVNRepositoryUUID(Text uuid) {
    set(&Fields::SVNRepositoryUUID, uuid, "SVNRepositoryUUID");
}

Text RVGitCommit::SVNRepositoryURL() const {
    return fields().SVNRepositoryURL;
}

void RVGitCommit::setSVNRepositoryURL(Text url) {
    set(&Fields::SVNRepositoryURL, url, "SVNRepositoryURL");
}

Text RVGitCommit::SVNRevision() const {
    return fields().SVNRevision;
}

void RVGitCommit::setSVNRevision(Text revision) {
    set(&Fields::SVNRevision, revision, "SVNRevision");
}

std::shared_ptr<RVGitTree> RVGitCommit::tree() const {
    const Fields* made = madeFields();
    return made ? made->tree : nullptr;
}

void RVGitCommit::setTree(std::shared_ptr<RVGitTree> tree) {
    set(&Fields::tree, tree, "tree");
}

const RVGitActor* RVGitCommit::madeAuthor() const {
    const Fields* made = madeFields();
    return made ? made->author.get() : people().author.get();
}

const RVGitActor* RVGitCommit::madeCommitter() const {
    const Fields* made = madeFields();
    return made ? made->committer.get() : people().committer.get();
}

std::optional<std::string_view> RVGitCommit::authorNameView() const {
    if (!hasMadePeople())
        return item_.authorNameView();
    const RVGitActor* author = madeAuthor();
    return author ? viewOf(author->name()) : std::nullopt;
}

std::optional<std::string_view> RVGitCommit::authorEmailView() const {
    if (!hasMadePeople())
        return item_.authorEmailView();
    const RVGitActor* author = madeAuthor();
    return author ? viewOf(author->email()) : std::nullopt;
}

std::optional<std::string_view> RVGitCommit::committerNameView() const {
    if (!hasMadePeople())
        return item_.committerNameView();
    const RVGitActor* committer = madeCommitter();
    return committer ? viewOf(committer->name()) : std::nullopt;
}

std::optional<std::string_view> RVGitCommit::committerEmailView() const {
    if (!hasMadePeople())
        return item_.committerEmailView();
    const RVGitActor* committer = madeCommitter();
    return committer ? viewOf(committer->email()) : std::nullopt;
}

std::optional<std::string_view> RVGitCommit::commitHashView() const {
    const Fields* made = madeFields();
    return made ? made->commitHash : item_.commitHashView();
}

std::vector<std::string_view> RVGitCommit::parentCommitHashViews() const {
    const Fields* made = madeFields();
    if (!made)
        return item_.parentCommitHashViews();
    return {made->parentCommitHashes.begin(), made->parentCommitHashes.end()};
}

std::optional<std::string_view> RVGitCommit::messageView() const {
    const Fields* made = madeFields();
    return made ? made->message : item_.messageView();
}

std::size_t RVGitCommit::parentCount() const {
    const Fields* made = madeFields();
    return made ? made->parentCommitHashes.size() : item_.parentCount();
}

void RVGitCommit::setSubjectFromCommitMessage(const Text& message) {
    fields().deriveSubject(message);
    fieldsDidChange({"subject"});
}

void RVGitCommit::setBodyFromCommitMessage(const Text& message) {
    fields().deriveBody(message);
    fieldsDidChange({"body"});
}

void RVGitCommit::setSVNInfoFromCommitMessage(const Text& message) {
    fields().deriveSVNInfo(message);
    fieldsDidChange({"SVNCommit", "SVNRepositoryURL", "SVNRevision", "SVNRepositoryUUID"});
}
