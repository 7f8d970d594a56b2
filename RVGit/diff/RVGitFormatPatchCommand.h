#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "RVGit/base/RVExport.h"
#include "RVGit/base/RVTypes.h"
#include "RVGit/base/RVURL.h"
#include "RVGit/command/RVGitCommand.h"

/// Runs `git format-patch`, which writes commits to files as patches.
class RVGIT_EXPORT RVGitFormatPatchCommand : public RVGitCommand {
public:
    /// The repository is required. The options are not read. A single revision names those behind
    /// it, up to HEAD, unless a limit is set: then that many up to it.
    RVGitFormatPatchCommand(const std::shared_ptr<RVGitRepository>& repository,
                            std::string revision,
                            const std::optional<RVOptions>& options = std::nullopt);
    [[nodiscard]] static std::shared_ptr<RVGitFormatPatchCommand>
    gitFormatPatchCommandWithRepository(const std::shared_ptr<RVGitRepository>& repository,
                                        std::string revision,
                                        const std::optional<RVOptions>& options = std::nullopt);

    [[nodiscard]] const std::string& revision() const { return revision_; }
    void setRevision(std::string revision) { revision_ = std::move(revision); }
    /// The directory to write to; absent: the root of the working tree.
    [[nodiscard]] const std::optional<RVURL>& destinationURL() const { return destinationURL_; }
    void setDestinationURL(std::optional<RVURL> url) { destinationURL_ = std::move(url); }
    /// 0: as git chooses.
    [[nodiscard]] std::uint64_t startingNumber() const { return startingNumber_; }
    void setStartingNumber(std::uint64_t number) { startingNumber_ = number; }
    /// Whether subjects say "n/m" also where there is but one patch.
    [[nodiscard]] bool numbersPatches() const { return numbersPatches_; }
    void setNumbersPatches(bool numbers) { numbersPatches_ = numbers; }
    /// Leaves "a/" and "b/" out.
    [[nodiscard]] bool noPrefix() const { return noPrefix_; }
    void setNoPrefix(bool noPrefix) { noPrefix_ = noPrefix; }
    /// 0: no limit.
    [[nodiscard]] std::uint64_t limit() const { return limit_; }
    void setLimit(std::uint64_t limit) { limit_ = limit; }

    /// The files that were written, in the order of the commits, as git prints them; after the run.
    [[nodiscard]] const std::vector<std::string>& createdPatchFilePaths() const {
        return createdPatchFilePaths_;
    }

protected:
    void gitCommandWillInitialize() override;
    bool gitCommandWillParseOutput(RVErrorPlace error) override;

private:
    std::string revision_;
    std::optional<RVURL> destinationURL_;
    std::uint64_t startingNumber_ = 0;
    bool numbersPatches_ = false;
    bool noPrefix_ = false;
    std::uint64_t limit_ = 0;
    std::vector<std::string> createdPatchFilePaths_;
};
