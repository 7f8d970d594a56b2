#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "RVGit/base/RVExport.h"
#include "RVGit/command/RVGitCommand.h"
#include "RVGit/command/RVGitOutputParser.h"

/// One person, as `git shortlog -s -e` tells of it.
struct RVGitShortlogOutputItem {
    /// In composed Unicode form.
    std::string authorName;
    std::string authorEmail;
    std::uint64_t numberOfCommits = 0;
};

/// Reads the lines of "git shortlog -s -e"; a line of another form, such as that of an author
/// without an e-mail address, is skipped. A name that holds " <" is split at the last one.
class RVGIT_EXPORT RVGitShortlogOutputParser
    : public RVGitItemOutputParser<RVGitShortlogOutputItem> {
public:
    explicit RVGitShortlogOutputParser(std::string_view outputData);

    /// In the order of the lines.
    [[nodiscard]] const std::vector<RVGitShortlogOutputItem>& result() const {
        return indexedResultCache();
    }

protected:
    [[nodiscard]] std::string_view parserName() const override;
    bool parseOutputLine(std::string_view line) override;
};

/// Counts the commits of each person: git shortlog.
class RVGIT_EXPORT RVGitShortlogCommand : public RVGitCommand {
public:
    RVGitShortlogCommand(const std::shared_ptr<RVGitRepository>& repository, std::string revision);
    [[nodiscard]] static std::shared_ptr<RVGitShortlogCommand> gitShortlogCommandWithRepository(
        const std::shared_ptr<RVGitRepository>& repository, std::string revision);

    [[nodiscard]] const std::string& revision() const { return revision_; }
    /// Only commits that change one of these; absent: all.
    [[nodiscard]] const std::optional<std::vector<std::string>>& filePaths() const {
        return filePaths_;
    }
    void setFilePaths(std::optional<std::vector<std::string>> filePaths) {
        filePaths_ = std::move(filePaths);
    }
    /// Committers in place of authors.
    [[nodiscard]] bool showsCommitters() const { return showsCommitters_; }
    void setShowsCommitters(bool shows) { showsCommitters_ = shows; }
    /// How many commits are looked at, from the revision on; 0: all.
    [[nodiscard]] std::uint64_t limit() const { return limit_; }
    void setLimit(std::uint64_t limit) { limit_ = limit; }

    /// The persons, those with most commits first.
    [[nodiscard]] const std::vector<RVGitShortlogOutputItem>& result() const { return result_; }

protected:
    void gitCommandWillInitialize() override;
    bool gitCommandWillParseOutput(RVErrorPlace error) override;

private:
    std::string revision_;
    std::optional<std::vector<std::string>> filePaths_;
    bool showsCommitters_ = false;
    std::uint64_t limit_ = 0;
    std::vector<RVGitShortlogOutputItem> result_;
};
