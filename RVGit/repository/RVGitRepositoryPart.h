#pragma once

#include <memory>
#include <mutex>
#include <utility>

#include "RVGit/base/RVExport.h"

class RVGitRepository;

/// Base of what belongs to one repository: its configuration, index, ignore files, submodules. A
/// part that a caller made keeps its repository alive; one that the repository itself hands out
/// must not, and refers back weakly.
class RVGIT_EXPORT RVGitRepositoryPart {
public:
    /// Null for a part that was made of no repository, or whose owner is gone.
    [[nodiscard]] std::shared_ptr<RVGitRepository> repository() const {
        return repository_ ? repository_ : owner_.lock();
    }

protected:
    explicit RVGitRepositoryPart(std::shared_ptr<RVGitRepository> repository)
        : repository_(std::move(repository)) {}
    /// Of the part that `owner` itself owns.
    explicit RVGitRepositoryPart(std::weak_ptr<RVGitRepository> owner) : owner_(std::move(owner)) {}
    ~RVGitRepositoryPart() = default;

private:
    std::shared_ptr<RVGitRepository> repository_;
    std::weak_ptr<RVGitRepository> owner_;
};

/// Where a repository keeps a part of its own: made on first access, once, on any thread.
template <typename Part>
class RVGitRepositoryPartSlot {
public:
    /// The pointer shares the ownership of the repository, so whoever keeps it keeps both alive.
    /// `make` returns a new Part.
    template <typename Make>
    [[nodiscard]] std::shared_ptr<Part> part(const std::shared_ptr<RVGitRepository>& owner,
                                             Make make) {
        std::call_once(once_, [&] { part_.reset(make()); });
        return {owner, part_.get()};
    }

private:
    std::once_flag once_;
    std::unique_ptr<Part> part_;
};
