#include <algorithm>

#include "RVGit/worktree/RVGitWorkingTreeEntry.h"
#include "RVGit/worktree/RVGitWorkingTreeOptions.h"
#include "client/Commands.h"
#include "client/OperationText.h"

namespace {

std::string letterOf(RVGitFileStatus status) {
    return RVGitShortStringForFileStatus(status).value_or(" ");
}

/// The letter of a status that says that something has changed; else empty.
std::string changeOf(RVGitFileStatus status) {
    return status >= RVGitFileStatusAdded ? letterOf(status) : "";
}

/// A heading with the files below it: those to which it gives letters.
struct Group {
    std::string_view title;
    Colour colour;
    std::string (*lettersOf)(const RVGitWorkingTreeEntry& entry);
};

constexpr Group groups[] = {
    {"Conflicts", Colour::Red,
     [](const RVGitWorkingTreeEntry& entry) -> std::string {
         if (!entry.isUnmergedFile())
             return "";
         return letterOf(entry.unmergedOursStatus()) + letterOf(entry.unmergedTheirsStatus());
     }},
    {"Staged", Colour::Green,
     [](const RVGitWorkingTreeEntry& entry) -> std::string {
         return entry.isUnmergedFile() ? "" : changeOf(entry.stagedStatus());
     }},
    {"Unstaged", Colour::Yellow,
     [](const RVGitWorkingTreeEntry& entry) -> std::string {
         return entry.isUnmergedFile() ? "" : changeOf(entry.currentStatus());
     }},
    {"Untracked", Colour::Cyan,
     [](const RVGitWorkingTreeEntry& entry) -> std::string {
         return entry.currentStatus() == RVGitFileStatusUntracked ? "?" : "";
     }},
    {"Ignored", Colour::Blue,
     [](const RVGitWorkingTreeEntry& entry) -> std::string {
         return entry.currentStatus() == RVGitFileStatusIgnored ? "!" : "";
     }},
};

}  // namespace

void runStatus(const std::shared_ptr<RVGitRepository>& repository, Arguments arguments,
               Output& output) {
    RVOptions options;
    while (const auto word = arguments.next()) {
        if (*word != "--ignored")
            throw UsageError("status takes no " + *word);
        options.insert_or_assign(RVGitWorkingTreeOptionIncludeIgnoredFiles, true);
    }
    std::optional<RVError> error;
    auto entries =
        RVGitWorkingTreeEntry::allWorkingTreeEntriesForRepository(repository, options, &error);
    if (!entries)
        throw Failure(error);
    if (const std::string underWay = operationText(repository); !underWay.empty())
        output << output.in(Colour::Magenta, underWay) << "\n";
    std::ranges::sort(*entries, {}, [](const auto& entry) { return entry->filePath(); });
    for (const Group& group : groups) {
        std::string files;
        for (const auto& entry : *entries) {
            const std::string letters = group.lettersOf(*entry);
            if (letters.empty())
                continue;
            files += "  " + output.in(group.colour, letters) + " ";
            const auto originalPath = entry->originalFilePath();
            if (originalPath && (letters == "R" || letters == "C"))
                files += printable(*originalPath) + " -> ";
            files += printable(entry->filePath()) + "\n";
        }
        if (!files.empty())
            output << output.bold(group.title) << "\n" << files;
    }
    if (entries->empty())
        output << "Nothing has changed\n";
}
