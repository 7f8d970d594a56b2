#pragma once

#include <optional>
#include <string>

#include "RVGit/base/RVExport.h"
#include "RVGit/base/RVTypes.h"

/// One movement of a ref, as its reflog keeps it: an immutable snapshot.
class RVGIT_EXPORT RVGitRefLogEntry {
public:
    RVGitRefLogEntry(std::optional<RVDate> date, std::string revision, std::string subject,
                     std::string commandName)
        : date_(date),
          revision_(std::move(revision)),
          subject_(std::move(subject)),
          commandName_(std::move(commandName)) {}

    /// When the ref moved; absent if git's date could not be read.
    [[nodiscard]] const std::optional<RVDate>& date() const { return date_; }
    /// The hash of the commit that the ref moved to.
    [[nodiscard]] const std::string& revision() const { return revision_; }
    /// The message of the entry: "commit: Fix it".
    [[nodiscard]] const std::string& subject() const { return subject_; }
    /// The first word of the message, without a colon at its end: "commit".
    [[nodiscard]] const std::string& commandName() const { return commandName_; }

private:
    std::optional<RVDate> date_;
    std::string revision_;
    std::string subject_;
    std::string commandName_;
};
