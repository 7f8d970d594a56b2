#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "RVGit/base/RVExport.h"
#include "RVGit/base/RVTypes.h"
#include "RVGit/command/RVGitCommand.h"
#include "RVGit/command/RVGitOutputParser.h"

// Options of RVGitShowRefCommand, each a boolean.
inline constexpr char RVGitShowRefOptionHead[] = "head";
inline constexpr char RVGitShowRefOptionHeads[] = "heads";
inline constexpr char RVGitShowRefOptionTags[] = "tags";

/// One ref, as `git show-ref` or `git ls-remote` tells it.
struct RVGitRefOutputParserResultItem {
    std::string fullRefName;
    /// Of an annotated tag whose peeled line was printed: the object that the tag points to.
    std::optional<std::string> commitHash;
    /// The tag object of such a tag.
    std::optional<std::string> tagObjectHash;
    std::optional<RVDate> createdDate;
};

/// Reads lines of a hash and a ref name, as "git show-ref" and "git ls-remote" print them, and "git
/// for-each-ref" where it is told to. A line of another form fails with code 11.
class RVGIT_EXPORT RVGitRefOutputParser
    : public RVGitItemOutputParser<RVGitRefOutputParserResultItem> {
public:
    explicit RVGitRefOutputParser(std::string_view outputData);

    /// One item for each name, in the order in which the names first appeared.
    [[nodiscard]] const std::vector<RVGitRefOutputParserResultItem>& refs() const {
        return resultCache();
    }

protected:
    [[nodiscard]] std::string_view parserName() const override;
    bool parseOutputLine(std::string_view line) override;

private:
    void addRef(std::string_view hash, std::string_view fullRefName);
};

/// Lists refs: git show-ref. Finding none is a success with no refs.
class RVGIT_EXPORT RVGitShowRefCommand : public RVGitCommand {
public:
    RVGitShowRefCommand(const std::shared_ptr<RVGitRepository>& repository,
                        const std::optional<RVOptions>& options);
    [[nodiscard]] static std::shared_ptr<RVGitShowRefCommand> gitShowRefCommandWithRepository(
        const std::shared_ptr<RVGitRepository>& repository,
        const std::optional<RVOptions>& options);

    /// HEAD too, whatever else is chosen.
    [[nodiscard]] bool showsHead() const { return showsHead_; }
    void setShowsHead(bool shows) { showsHead_ = shows; }
    /// Branches only.
    [[nodiscard]] bool showsHeads() const { return showsHeads_; }
    void setShowsHeads(bool shows) { showsHeads_ = shows; }
    /// Tags only, and for an annotated tag what it points to as well.
    [[nodiscard]] bool showsTags() const { return showsTags_; }
    void setShowsTags(bool shows) { showsTags_ = shows; }
    /// Prints hashes without names: they stand in standardOutputString(), and refs() stays empty.
    [[nodiscard]] bool showsHashesOnly() const { return showsHashesOnly_; }
    void setShowsHashesOnly(bool shows) { showsHashesOnly_ = shows; }
    /// Only refs that end in this name, by whole path components. Absent or empty: all.
    [[nodiscard]] const std::optional<std::string>& refName() const { return refName_; }
    void setRefName(std::optional<std::string> refName) { refName_ = std::move(refName); }

    /// The result.
    [[nodiscard]] const std::vector<RVGitRefOutputParserResultItem>& refs() const { return refs_; }

    [[nodiscard]] static const RVGitErrorTable& gitErrorDefinitions();

protected:
    void gitCommandWillInitialize() override;
    bool gitCommandShouldHandleError(const RVError& error) override;
    bool gitCommandWillParseOutput(RVErrorPlace error) override;

private:
    bool showsHead_ = false;
    bool showsHeads_ = false;
    bool showsTags_ = false;
    bool showsHashesOnly_ = false;
    std::optional<std::string> refName_;
    std::vector<RVGitRefOutputParserResultItem> refs_;
};
