#include <algorithm>
#include <cstddef>
#include <utility>

#include "RVGit/base/RVString.h"
#include "RVGit/merge/RVGitMergeManager.h"
#include "RVGit/merge/RVGitMergeSequenceContentParser.h"
#include "RVGit/repository/RVGitRepository.h"
#include "RVGit/repository/RVGitShowRefCommand.h"

// The readers of RVGitMergeManager.

namespace {

constexpr std::size_t mostBytesOfLine = std::size_t{1} << 20;
constexpr std::size_t mostBytesOfText = std::size_t{64} << 20;

}  // namespace

RVGitMergeMode RVGitMergeManager::currentMergeMode() const {
    if (files_.isDirectory("rebase-apply"))
        return RVGitMergeModeRebase;
    if (files_.isDirectory("rebase-merge"))
        return files_.exists("rebase-merge/amend") ? RVGitMergeModeEditing : RVGitMergeModeRebase;
    if (files_.exists("sequencer/todo")) {
        const auto instructions = sequenceInFile("sequencer/todo").sequenceInstructions();
        const std::string command = instructions.empty() ? "" : instructions.front()->command();
        if (command == RVGitSequenceInstructionCommandPick)
            return RVGitMergeModeCherryPick;
        if (command == RVGitSequenceInstructionCommandRevert)
            return RVGitMergeModeRevert;
    }
    if (files_.exists("REVERT_HEAD") || refInTables("REVERT_HEAD"))
        return RVGitMergeModeRevert;
    if (files_.exists("CHERRY_PICK_HEAD") || refInTables("CHERRY_PICK_HEAD"))
        return RVGitMergeModeCherryPick;
    if (files_.exists("SQUASH_MSG"))
        return RVGitMergeModeSquash;
    if (files_.exists("MERGE_HEAD"))
        return RVGitMergeModeMerge;
    return RVGitMergeModeNone;
}

bool RVGitMergeManager::isMerging() const {
    return currentMergeMode() != RVGitMergeModeNone;
}

bool RVGitMergeManager::isEditingRevision() const {
    return files_.exists("rebase-merge/amend") && !files_.exists("rebase-merge/message-fixup") &&
           !files_.exists("rebase-merge/message-squash");
}

bool RVGitMergeManager::isPendingInteractiveRebase() const {
    return currentMergeMode() == RVGitMergeModeRebase && !usesRebaseApplyBackend() &&
           !files_.exists("rebase-merge/stopped-sha");
}

bool RVGitMergeManager::usesRebaseApplyBackend() const {
    return files_.exists("rebase-apply");
}

std::optional<std::string_view> RVGitMergeManager::markerFile(RVGitMergeMode mode) const {
    switch (mode) {
        case RVGitMergeModeMerge:
            return "MERGE_HEAD";
        case RVGitMergeModeSquash:
            return "SQUASH_MSG";
        case RVGitMergeModeRebase:
            return files_.exists("rebase-apply/onto") ? "rebase-apply/onto" : "rebase-merge/onto";
        case RVGitMergeModeEditing:
            return "rebase-merge/onto";
        case RVGitMergeModeCherryPick:
            return nextSequenceRevision() ? "sequencer/head" : "CHERRY_PICK_HEAD";
        case RVGitMergeModeRevert:
            return nextSequenceRevision() ? "sequencer/head" : "REVERT_HEAD";
        case RVGitMergeModeNone:
            break;
    }
    return std::nullopt;
}

double RVGitMergeManager::mergeTimestamp() const {
    const auto file = markerFile(currentMergeMode());
    return file ? files_.modificationTime(*file).value_or(0) : 0;
}

std::optional<std::string> RVGitMergeManager::originalRevision() const {
    const RVGitMergeMode mode = currentMergeMode();
    std::string_view file = "ORIG_HEAD";
    if (mode == RVGitMergeModeRebase || mode == RVGitMergeModeEditing)
        file = *markerFile(mode);
    else if (mode == RVGitMergeModeCherryPick || mode == RVGitMergeModeRevert)
        file = "sequencer/head";
    if (auto revision = file == "ORIG_HEAD" ? fileOrRef(file) : trimmedFile(file))
        return revision;
    return repository_->HEADRevision();
}

std::optional<std::string> RVGitMergeManager::originalRefName() const {
    constexpr std::string_view beginning = "refs/";
    for (const std::string_view file : {"rebase-merge/head-name", "rebase-apply/head-name"}) {
        if (!files_.exists(file))
            continue;
        const auto name = files_.UTF8Contents(file, mostBytesOfLine);
        if (!name || !name->starts_with(beginning))
            return std::nullopt;
        return stringByTrimmingWhitespaceAndNewline(*name);
    }
    auto name = repository_->HEADRefName();
    return name && name->starts_with(beginning) ? name : std::nullopt;
}

std::optional<std::string> RVGitMergeManager::mergedRevision() const {
    switch (currentMergeMode()) {
        case RVGitMergeModeRebase:
            return trimmedFile(files_.exists("rebase-apply/orig-head") ? "rebase-apply/orig-head"
                                                                       : "rebase-merge/orig-head");
        case RVGitMergeModeEditing:
            return trimmedFile("rebase-merge/orig-head");
        case RVGitMergeModeCherryPick:
            return fileOrRef("CHERRY_PICK_HEAD");
        case RVGitMergeModeRevert:
            return fileOrRef("REVERT_HEAD");
        default:
            return trimmedFile("MERGE_HEAD");
    }
}

std::optional<std::string> RVGitMergeManager::mergeCommitMessage() const {
    for (const std::string_view file :
         {"SQUASH_MSG", "rebase-merge/message-fixup", "rebase-merge/message-squash",
          "rebase-merge/message", "rebase-apply/final-commit", "MERGE_MSG"})
        if (files_.exists(file))
            return files_.UTF8Contents(file, mostBytesOfText);
    return std::nullopt;
}

// The position.

std::uint64_t RVGitMergeManager::nextSequenceStep() const {
    switch (currentMergeMode()) {
        case RVGitMergeModeRebase:
            return files_.exists("rebase-merge") ? nextInteractiveRebaseSequenceStep()
                                                 : nextRebaseSequenceStep();
        case RVGitMergeModeEditing:
            return nextInteractiveRebaseSequenceStep();
        case RVGitMergeModeCherryPick:
        case RVGitMergeModeRevert:
            return nextDefaultSequencerStep();
        default:
            return 0;
    }
}

std::uint64_t RVGitMergeManager::lastSequenceStep() const {
    switch (currentMergeMode()) {
        case RVGitMergeModeRebase:
            return files_.exists("rebase-merge") ? lastInteractiveRebaseSequenceStep()
                                                 : lastRebaseSequenceStep();
        case RVGitMergeModeEditing:
            return lastInteractiveRebaseSequenceStep();
        case RVGitMergeModeCherryPick:
        case RVGitMergeModeRevert:
            return lastDefaultSequencerStep();
        default:
            return 0;
    }
}

std::optional<std::string> RVGitMergeManager::nextSequenceRevision() const {
    switch (currentMergeMode()) {
        case RVGitMergeModeRebase:
            return files_.exists("rebase-merge") ? nextInteractiveRebaseSequenceRevision()
                                                 : nextRebaseSequenceRevision();
        case RVGitMergeModeEditing:
            return amendSequenceRevision();
        case RVGitMergeModeCherryPick:
        case RVGitMergeModeRevert:
            return nextDefaultSequencerRevision();
        default:
            return std::nullopt;
    }
}

std::optional<std::string> RVGitMergeManager::lastSequenceRevision() const {
    switch (currentMergeMode()) {
        case RVGitMergeModeRebase:
        case RVGitMergeModeEditing:
            return lastRebaseSequenceRevision();
        case RVGitMergeModeCherryPick:
        case RVGitMergeModeRevert:
            return lastDefaultSequencerRevision();
        default:
            return std::nullopt;
    }
}

std::uint64_t RVGitMergeManager::nextRebaseSequenceStep() const {
    return numberInFile("rebase-apply/next");
}

std::uint64_t RVGitMergeManager::nextInteractiveRebaseSequenceStep() const {
    return numberInFile("rebase-merge/msgnum");
}

std::uint64_t RVGitMergeManager::lastRebaseSequenceStep() const {
    return numberInFile("rebase-apply/last");
}

std::uint64_t RVGitMergeManager::lastInteractiveRebaseSequenceStep() const {
    return numberInFile("rebase-merge/end");
}

std::optional<std::string> RVGitMergeManager::nextRebaseSequenceRevision() const {
    return trimmedFile("rebase-apply/original-commit");
}

std::optional<std::string> RVGitMergeManager::amendSequenceRevision() const {
    return trimmedFile("rebase-merge/amend");
}

std::optional<std::string> RVGitMergeManager::nextInteractiveRebaseSequenceRevision() const {
    return sequenceInFile("rebase-merge/done").lastRevision();
}

std::optional<std::string> RVGitMergeManager::lastRebaseSequenceRevision() const {
    return mergedRevision();
}

std::uint64_t RVGitMergeManager::nextDefaultSequencerStep() const {
    return 0;
}

std::uint64_t RVGitMergeManager::lastDefaultSequencerStep() const {
    return sequenceInFile("sequencer/todo").revisionsCount();
}

std::optional<std::string> RVGitMergeManager::nextDefaultSequencerRevision() const {
    return sequenceInFile("sequencer/todo").nextRevision();
}

std::optional<std::string> RVGitMergeManager::lastDefaultSequencerRevision() const {
    return sequenceInFile("sequencer/todo").lastRevision();
}

std::optional<std::string> RVGitMergeManager::trimmedFile(std::string_view path) const {
    const auto contents = files_.UTF8Contents(path, mostBytesOfLine);
    if (!contents)
        return std::nullopt;
    return stringByTrimmingWhitespaceAndNewline(*contents);
}

std::optional<std::string> RVGitMergeManager::fileOrRef(std::string_view name) const {
    auto contents = trimmedFile(name);
    return contents ? std::move(contents) : refInTables(name);
}

std::optional<std::string> RVGitMergeManager::refInTables(std::string_view name) const {
    // The file is a stand-in then.
    const auto head = files_.UTF8Contents("HEAD", mostBytesOfLine);
    if (!head || !head->starts_with("ref: refs/heads/.invalid"))
        return std::nullopt;
    const auto command =
        RVGitShowRefCommand::gitShowRefCommandWithRepository(repository_, std::nullopt);
    // The very ref, and no branch of that name.
    command->addGitCommandOption("--verify");
    command->setShowsHashesOnly(true);
    command->setRefName(std::string(name));
    if (!command->run())
        return std::nullopt;
    auto hash = stringByTrimmingWhitespaceAndNewline(command->standardOutputString());
    return hash.empty() ? std::nullopt : std::optional(std::move(hash));
}

std::uint64_t RVGitMergeManager::numberInFile(std::string_view path) const {
    const std::int64_t number = integerValue(trimmedFile(path).value_or(""));
    return static_cast<std::uint64_t>(std::max<std::int64_t>(number, 0));
}

RVGitMergeSequenceContentParser RVGitMergeManager::sequenceInFile(std::string_view path) const {
    RVGitMergeSequenceContentParser parser(files_.UTF8Contents(path, mostBytesOfText));
    // What stands ahead of a line that cannot be read counts.
    (void)parser.parse();
    return parser;
}
