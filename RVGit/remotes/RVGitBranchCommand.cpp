#include "RVGit/remotes/RVGitBranchCommand.h"

#include <utility>

#include "RVGit/base/RVNeverDestroyed.h"
#include "RVGit/base/RVPath.h"
#include "RVGit/base/RVRegularExpression.h"
#include "RVGit/base/RVString.h"
#include "RVGit/command/RVGitError.h"
#include "RVGit/command/RVGitValues.h"
#include "RVGit/remotes/RVGitBranchLine.h"
#include "RVGit/remotes/RVGitRemoteBranchOutputParser.h"

namespace {

// Whether the expression's blanks or brackets could begin here: its blanks are Unicode's white
// space, none of whose characters begins with another byte than these.
bool mayHoldCounts(std::string_view subject) {
    if (subject.empty())
        return false;
    const auto first = static_cast<unsigned char>(subject.front());
    return first <= ' ' || first == '[' || first == 0xC2 || (first >= 0xE1 && first <= 0xE3);
}

std::uint64_t countFrom(const std::optional<std::string_view>& digits) {
    return digits ? static_cast<std::uint64_t>(integerValue(*digits)) : 0;
}

std::string shortBranchName(const std::string& refName) {
    return RVGitMakeShortRefName(refName, RVGitRefTypeBranch);
}

std::shared_ptr<RVGitBranchCommand> commandForBranch(
    const std::shared_ptr<RVGitRepository>& repository, const std::optional<RVOptions>& options,
    std::string refName) {
    auto command = std::make_shared<RVGitBranchCommand>(repository, options);
    command->setRefNames(std::vector<std::string>{std::move(refName)});
    return command;
}

}  // namespace

RVGitBranchOutputParser::RVGitBranchOutputParser(std::string_view outputData)
    : RVGitItemOutputParser(outputData, Delimiter::Newline) {}

std::string_view RVGitBranchOutputParser::parserName() const {
    return "RVGitBranchOutputParser";
}

bool RVGitBranchOutputParser::isDetachedHEADDescription(std::string_view name) {
    // Git's own descriptions, in the versions of many years; the last takes in all others.
    for (std::string_view beginning : {"(no branch", "(HEAD detached ", "(detached ", "("})
        if (name.starts_with(beginning))
            return true;
    return false;
}

bool RVGitBranchOutputParser::parseOutputLine(std::string_view line) {
    if (const auto plain = RVGitPlainBranchLineFrom(line);
        plain && !mayHoldCounts(plain->subject)) {
        addBranch(plain->isMarked, plain->name, plain->hash, 0, 0);
        return true;
    }
    static const RVNeverDestroyed<RVRegularExpression> expression(
        std::in_place,
        R"(^(\*)?\s*(\(.+\)|[^ ]+)\s+([0-9a-f]{40})\s+(\[(ahead (\d+),?\s?)?(behind (\d+))?\])?)",
        RVRegularExpression::DotMatchesLineSeparators);
    const auto components = expression->firstMatch(line);
    if (components.empty())
        return !RVGitBranchLineHoldsHashOfOtherFormat(line);
    addBranch(components[1] == "*", trimmedWhitespaceAndNewline(*components[2]), *components[3],
              countFrom(components[6]), countFrom(components[8]));
    return true;
}

void RVGitBranchOutputParser::addBranch(bool isHead, std::string_view name, std::string_view hash,
                                        std::uint64_t ahead, std::uint64_t behind) {
    RVGitBranchOutputParserResultItem item;
    if (!isDetachedHEADDescription(name))
        item.fullRefName = pathByAppendingComponent("refs/heads/", name);
    item.commitHash = hash;
    item.isHead = isHead;
    item.ahead = ahead;
    item.behind = behind;
    addResult(std::move(item));
}

RVGitDeleteBranchErrorOutputParser::RVGitDeleteBranchErrorOutputParser(std::string_view outputData)
    : RVGitItemOutputParser(outputData, Delimiter::Newline) {}

std::string_view RVGitDeleteBranchErrorOutputParser::parserName() const {
    return "RVGitDeleteBranchErrorOutputParser";
}

bool RVGitDeleteBranchErrorOutputParser::parseOutputLine(std::string_view line) {
    static const RVNeverDestroyed<RVRegularExpression> expression(
        std::in_place, "^error: The branch '(.+)' is not fully merged.$",
        RVRegularExpression::AnchorsMatchLines);
    // The expression's "^" would match behind a line separator inside of the line, too.
    if (!line.starts_with("error: The branch '"))
        return true;
    const auto components = expression->firstMatch(line);
    if (!components.empty() && components[0]->data() == line.data())
        addResult(std::string(*components[1]));
    return true;
}

RVGitBranchCommand::RVGitBranchCommand(const std::shared_ptr<RVGitRepository>& repository,
                                       const std::optional<RVOptions>& options)
    : RVGitCommand(repository),
      showsRemoteBranches_(optionIsSet(options, RVGitBranchOptionShowRemoteBranches)),
      renamesBranch_(optionIsSet(options, RVGitBranchOptionRename)),
      forcesRenaming_(optionIsSet(options, RVGitBranchOptionForceRenaming)),
      deletesBranch_(optionIsSet(options, RVGitBranchOptionDelete)),
      forcesDeletion_(optionIsSet(options, RVGitBranchOptionForceDeletion)),
      createsTracking_(optionIsSet(options, RVGitBranchOptionCreateTracking)),
      addsTracking_(optionIsSet(options, RVGitBranchOptionAddTracking)),
      removesTracking_(optionIsSet(options, RVGitBranchOptionRemoveTracking)) {
    renamesBranch_ = renamesBranch_ || forcesRenaming_;
    deletesBranch_ = deletesBranch_ || forcesDeletion_;
}

std::shared_ptr<RVGitBranchCommand> RVGitBranchCommand::gitBranchCommandWithRepository(
    const std::shared_ptr<RVGitRepository>& repository) {
    return std::make_shared<RVGitBranchCommand>(repository);
}

std::shared_ptr<RVGitBranchCommand> RVGitBranchCommand::gitCreateBranchCommandWithRepository(
    const std::shared_ptr<RVGitRepository>& repository, std::string refName,
    std::optional<std::string> startingPoint) {
    auto command = commandForBranch(repository, std::nullopt, std::move(refName));
    command->setStartingPoint(std::move(startingPoint));
    return command;
}

std::shared_ptr<RVGitBranchCommand>
RVGitBranchCommand::gitCreateTrackingBranchCommandWithRepository(
    const std::shared_ptr<RVGitRepository>& repository, std::string refName,
    std::optional<std::string> trackedRefName) {
    auto command = commandForBranch(repository, RVOptions{{RVGitBranchOptionCreateTracking, true}},
                                    std::move(refName));
    command->setTrackedRefName(std::move(trackedRefName));
    return command;
}

std::shared_ptr<RVGitBranchCommand> RVGitBranchCommand::gitAddTrackingBranchCommandWithRepository(
    const std::shared_ptr<RVGitRepository>& repository, std::string refName,
    std::optional<std::string> trackedRefName) {
    auto command = commandForBranch(repository, RVOptions{{RVGitBranchOptionAddTracking, true}},
                                    std::move(refName));
    command->setTrackedRefName(std::move(trackedRefName));
    return command;
}

std::shared_ptr<RVGitBranchCommand>
RVGitBranchCommand::gitRemoveTrackingBranchCommandWithRepository(
    const std::shared_ptr<RVGitRepository>& repository, std::string refName) {
    return commandForBranch(repository, RVOptions{{RVGitBranchOptionRemoveTracking, true}},
                            std::move(refName));
}

std::shared_ptr<RVGitBranchCommand> RVGitBranchCommand::gitDeleteBranchCommandWithRepository(
    const std::shared_ptr<RVGitRepository>& repository, std::vector<std::string> refNames,
    bool forcedDeletion) {
    auto command = std::make_shared<RVGitBranchCommand>(
        repository, RVOptions{{RVGitBranchOptionDelete, true},
                              {RVGitBranchOptionForceDeletion, forcedDeletion}});
    command->setRefNames(std::move(refNames));
    return command;
}

std::shared_ptr<RVGitBranchCommand> RVGitBranchCommand::gitRenameBranchCommandWithRepository(
    const std::shared_ptr<RVGitRepository>& repository, std::string refName,
    std::optional<std::string> newRefName, bool forcedRenaming) {
    auto command = commandForBranch(repository,
                                    RVOptions{{RVGitBranchOptionRename, true},
                                              {RVGitBranchOptionForceRenaming, forcedRenaming}},
                                    std::move(refName));
    command->setRenameToRefName(std::move(newRefName));
    return command;
}

const RVGitErrorTable& RVGitBranchCommand::gitErrorDefinitions() {
    static const RVNeverDestroyed<RVGitErrorTable> table = {
        gitErrorRow(RVGitRenameBranchInvalidObjectError)
            .command("branch")
            .argument("-m")
            .exitCode(128)
            .standardError("error: refname (.+) not found", {RVGitRefNameErrorKey}),
        gitErrorRow(RVGitRenameBranchRefAlreadyExistsError)
            .command("branch")
            .argument("-m")
            .exitCode(128)
            .standardError("fatal: A branch named '(.+)' already exists", {RVGitRefNameErrorKey}),
        gitErrorRow(RVGitDeleteUnmergedBranchError)
            .command("branch")
            .exitCode(1)
            .standardError("The branch '(.+)' is not fully merged", {RVGitRefNameErrorKey}),
        gitErrorRow(RVGitCreateBranchInvalidNameError)
            .command("branch")
            .exitCode(128)
            .standardError("fatal: '(.+)' is not a valid branch name", {RVGitRefNameErrorKey}),
        gitErrorRow(RVGitCreateBranchInvalidObjectError)
            .command("branch")
            .exitCode(128)
            .standardError("fatal: Not a valid object name: '(.+)'", {RVGitObjectHashErrorKey}),
        gitErrorRow(RVGitCreateBranchRefAlreadyExistsError)
            .command("branch")
            .exitCode(128)
            .standardError("fatal: A branch named '(.+)' already exists", {RVGitRefNameErrorKey}),
        gitErrorRow(RVGitDeleteBranchNoSuchBranchError)
            .command("branch")
            .exitCode(1)
            .standardError("error: branch '(.+)' not found", {RVGitRefNameErrorKey}),
        gitErrorRow(RVGitDeleteCurrentBranchError)
            .command("branch")
            .exitCode(1)
            .standardError("error: Cannot delete the branch '(.+)' which you are currently on",
                           {RVGitRefNameErrorKey})
            .standardError("error: Cannot delete branch '(.+)' checked out at"),
        gitErrorRow(RVGitTrackBranchInvalidObjectError)
            .command("branch")
            .exitCode(128)
            .standardOutput("fatal: Not a valid object name: '(.+)'", {RVGitRevisionErrorKey}),
        gitErrorRow(RVGitDeleteUnmergedBranchError)
            .command("branch")
            .argument("-d")
            .exitCode(1)
            .standardError("error: The branch '(.+)' is not fully merged.",
                           {RVGitMultipleRefNamesErrorKey}),
    };
    return *table;
}

void RVGitBranchCommand::gitCommandWillInitialize() {
    setGitCommand("branch");
    if (!refNames_) {
        addGitCommandOptions({"--no-color", "--no-abbrev", "-v"});
        if (showsRemoteBranches_)
            addGitCommandOption("-r");
        return;
    }
    const auto addFirstName = [this] {
        if (!refNames_->empty())
            addGitCommandName(shortBranchName(refNames_->front()),
                              RVGitCreateBranchInvalidNameError);
    };
    if (renamesBranch_) {
        addGitCommandOption(forcesRenaming_ ? "-M" : "-m");
        addFirstName();
        if (renameToRefName_)
            addGitCommandName(shortBranchName(*renameToRefName_),
                              RVGitCreateBranchInvalidNameError);
    } else if (deletesBranch_) {
        addGitCommandOption(forcesDeletion_ ? "-D" : "-d");
        for (const std::string& refName : *refNames_)
            addGitCommandName(shortBranchName(refName), RVGitDeleteBranchNoSuchBranchError);
    } else if (addsTracking_) {
        addGitCommandOption("-u");
        if (trackedRefName_)
            addGitCommandName(*trackedRefName_, RVGitTrackBranchInvalidObjectError);
        addFirstName();
    } else if (removesTracking_) {
        addGitCommandOption("--unset-upstream");
        addFirstName();
    } else {
        addGitCommandOption(createsTracking_ ? "--track" : "--no-track");
        addFirstName();
        if (trackedRefName_)
            addGitCommandName(*trackedRefName_, RVGitTrackBranchInvalidObjectError);
        if (startingPoint_)
            addGitCommandName(*startingPoint_, RVGitCreateBranchInvalidObjectError);
    }
}

bool RVGitBranchCommand::gitCommandShouldHandleError(const RVError& error) {
    return error.code() != RVGitRefsReadError;
}

RVUserInfo RVGitBranchCommand::gitCommandWillUseErrorUserInfo(RVUserInfo userInfo) {
    if (!deletesBranch_)
        return userInfo;
    RVGitDeleteBranchErrorOutputParser parser(standardErrorString());
    if (parser.parse() && !parser.refNames().empty())
        userInfo.insert_or_assign(RVGitMultipleRefNamesErrorKey, parser.refNames());
    return userInfo;
}

bool RVGitBranchCommand::gitCommandWillParseOutput(RVErrorPlace error) {
    if (refNames_)
        return true;
    if (!showsRemoteBranches_) {
        RVGitBranchOutputParser parser(standardOutputData());
        const bool parsed = parser.parse(error);
        branches_ = parser.takeIndexedResults();
        return parsed;
    }
    RVGitRemoteBranchOutputParser parser(standardOutputData());
    const bool parsed = parser.parse(error);
    auto remoteBranches = parser.takeResults();
    branches_.reserve(remoteBranches.size());
    for (auto& item : remoteBranches)
        branches_.push_back({.fullRefName = std::move(item.fullRefName),
                             .commitHash = std::move(item.commitHash),
                             .isHead = item.isHead});
    return parsed;
}
