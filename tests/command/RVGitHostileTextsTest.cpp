// No text that comes from a repository or a caller reaches git as an option, whichever command it
// is given to. The table has a row for each field that holds text of each command class; the last
// test reads the headers, so that neither a new class nor a new field can be forgotten here.

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <regex>
#include <set>

#include "RVGit/archive/RVGitArchiveCommand.h"
#include "RVGit/base/RVURL.h"
#include "RVGit/command/RVGitBinary.h"
#include "RVGit/command/RVGitError.h"
#include "RVGit/command/RVGitErrorCodes.h"
#include "RVGit/diff/RVGitApplyCommand.h"
#include "RVGit/diff/RVGitDiffCommand.h"
#include "RVGit/diff/RVGitFormatPatchCommand.h"
#include "RVGit/history/RVGitBlameCommand.h"
#include "RVGit/history/RVGitLogCommand.h"
#include "RVGit/history/RVGitMergeBaseCommand.h"
#include "RVGit/history/RVGitRevListCommand.h"
#include "RVGit/history/RVGitShortlogCommand.h"
#include "RVGit/lfs/RVGitLFSCleanCommand.h"
#include "RVGit/lfs/RVGitLFSCommand.h"
#include "RVGit/lfs/RVGitLFSLsFilesCommand.h"
#include "RVGit/lfs/RVGitLFSPointer.h"
#include "RVGit/lfs/RVGitLFSSmudgeCommand.h"
#include "RVGit/lfs/RVGitLFSTrackCommand.h"
#include "RVGit/lfs/RVGitLFSTransferCommands.h"
#include "RVGit/merge/RVGitCherryPickCommand.h"
#include "RVGit/merge/RVGitConflictingFilePathsCommand.h"
#include "RVGit/merge/RVGitDiffToolCommand.h"
#include "RVGit/merge/RVGitMergeCommand.h"
#include "RVGit/merge/RVGitMergeToolCommand.h"
#include "RVGit/merge/RVGitMergeTreeCommand.h"
#include "RVGit/merge/RVGitRebaseCommand.h"
#include "RVGit/merge/RVGitRevertCommand.h"
#include "RVGit/objects/RVGitForEachRefCommand.h"
#include "RVGit/objects/RVGitForEachRefTagOutputParser.h"
#include "RVGit/objects/RVGitShowCommand.h"
#include "RVGit/objects/RVGitTagCommand.h"
#include "RVGit/objects/RVGitTreeCommand.h"
#include "RVGit/objects/RVGitVerifyTagCommand.h"
#include "RVGit/remotes/RVGitBranchCommand.h"
#include "RVGit/remotes/RVGitCloneCommand.h"
#include "RVGit/remotes/RVGitCredentialCommand.h"
#include "RVGit/remotes/RVGitFetchCommand.h"
#include "RVGit/remotes/RVGitLsRemoteCommand.h"
#include "RVGit/remotes/RVGitPullCommand.h"
#include "RVGit/remotes/RVGitPushCommand.h"
#include "RVGit/remotes/RVGitRemote.h"
#include "RVGit/remotes/RVGitRemoteCommand.h"
#include "RVGit/repository/RVGitConfig.h"
#include "RVGit/repository/RVGitConfigCommand.h"
#include "RVGit/repository/RVGitInitCommand.h"
#include "RVGit/repository/RVGitRefLogCommand.h"
#include "RVGit/repository/RVGitRefSpec.h"
#include "RVGit/repository/RVGitRepository.h"
#include "RVGit/repository/RVGitShowRefCommand.h"
#include "RVGit/repository/RVGitUpdateRefCommand.h"
#include "RVGit/submodules/RVGitSubmoduleCommand.h"
#include "RVGit/svn/RVGitSVNCommand.h"
#include "RVGit/worktree/RVGitAddCommand.h"
#include "RVGit/worktree/RVGitCheckAttrCommand.h"
#include "RVGit/worktree/RVGitCheckoutCommand.h"
#include "RVGit/worktree/RVGitCommitCommand.h"
#include "RVGit/worktree/RVGitLsFilesCommand.h"
#include "RVGit/worktree/RVGitMoveCommand.h"
#include "RVGit/worktree/RVGitResetCommand.h"
#include "RVGit/worktree/RVGitRmCommand.h"
#include "RVGit/worktree/RVGitStashCommand.h"
#include "RVGit/worktree/RVGitStatusCommand.h"
#include "RVGit/worktree/RVGitUpdateIndexCommand.h"
#include "tests/support/RVGitRepositoryTestCase.h"

namespace {

using Repository = std::shared_ptr<RVGitRepository>;
using Made = std::shared_ptr<RVGitCommand>;
using Arguments = std::vector<std::string>;

// What becomes of a text that begins with "-".
enum Handling {
    // Nothing is launched, and the command has the row's code.
    RefusedRevision,
    RefusedName,
    // It stands behind "--", or as "./-...".
    Path,
    // It stands directly behind the row's option, which takes one value whatever it begins with.
    OptionValue,
    // It stands behind the first word, after which this git command looks for no options.
    BehindFirstWord,
    // It is part of the argument that begins with the row's option.
    Attached,
    // It is no part of the command line.
    NotAnArgument,
    // The same, and one of a list on standard input, where what ends an item cannot stand in one.
    ListOnInput,
};

struct Field {
    std::string name;
    Handling handling;
    std::function<Made(const Repository&, const std::string& text)> make;
    std::int64_t code = RVGitRVGitGenericError;
    std::string option = {};
};

template <typename Command>
auto with(void (*set)(Command&, const std::string&)) {
    return [set](const Repository& repository, const std::string& text) -> Made {
        auto command = std::make_shared<Command>(repository);
        set(*command, text);
        return command;
    };
}
template <typename Command>
auto withOptions(void (*set)(Command&, const std::string&)) {
    return [set](const Repository& repository, const std::string& text) -> Made {
        auto command = [&] {
            if constexpr (std::is_same_v<Command, RVGitConfigCommand>)
                return std::make_shared<Command>(repository->path(), std::nullopt);
            else if constexpr (std::is_same_v<Command, RVGitRefLogCommand>)
                return std::make_shared<Command>(repository, std::nullopt, std::nullopt);
            else
                return std::make_shared<Command>(repository, std::nullopt);
        }();
        set(*command, text);
        return command;
    };
}
template <typename Command>
Field filePaths() {
    return {"FilePaths", Path, [](const Repository& repository, const std::string& text) -> Made {
                auto command = std::make_shared<Command>(repository);
                command->setFilePaths(Arguments{"plain", text});
                return command;
            }};
}

std::shared_ptr<RVGitRemote> remoteNamed(const Repository& repository, const std::string& name) {
    return RVGitRemote::remoteWithRepository(repository, name, std::nullopt, std::nullopt,
                                             std::nullopt);
}

// What the idle git prints is no pointer.
class CleanOfNothing : public RVGitLFSCleanCommand {
public:
    using RVGitLFSCleanCommand::RVGitLFSCleanCommand;

protected:
    bool gitCommandWillParseOutput(RVErrorPlace) override { return true; }
};
template <typename Command>
Field lfsPatterns() {
    return {"Patterns", RefusedName, with<Command>([](auto& command, auto& text) {
                command.setPatterns(Arguments{"plain", text});
            })};
}
template <typename Command>
Field field(const char* name, Handling handling,
            std::function<void(Command&, const std::string&)> set, const char* option = "") {
    return {name, handling,
            [set](const Repository&, const std::string& text) -> Made {
                auto command = std::make_shared<Command>("svn://host", "new", std::nullopt);
                set(*command, text);
                return command;
            },
            RVGitRVGitGenericError, option};
}
template <typename Command>
Field svnRemote(Handling handling) {
    return {"Remote", handling, [](const Repository& repository, const std::string& text) -> Made {
                return std::make_shared<Command>(repository, remoteNamed(repository, text));
            }};
}

template <typename Command>
std::vector<Field> svnCopyFields() {
    const auto field = [](const char* name, Handling handling,
                          void (RVGitSVNCopyCommand::*set)(std::optional<std::string>),
                          const char* option = "") -> Field {
        return {name, handling,
                [set](const Repository& repository, const std::string& text) -> Made {
                    auto command = std::make_shared<Command>(repository, nullptr);
                    ((*command).*set)(text);
                    return command;
                },
                RVGitRVGitGenericError, option};
    };
    return {svnRemote<Command>(NotAnArgument),
            field("RefName", RefusedName, &RVGitSVNCopyCommand::setRefName),
            field("StartingPoint", RefusedName, &RVGitSVNCopyCommand::setStartingPoint),
            field("Message", OptionValue, &RVGitSVNCopyCommand::setMessage, "-m"),
            field("Destination", Attached, &RVGitSVNCopyCommand::setDestination, "--destination=")};
}
Field archiveField(const char* name, Handling handling,
                   void (*set)(RVGitArchiveCommand&, const std::string&), std::int64_t code = 0,
                   const char* option = "") {
    return {name, handling,
            [set](const Repository& repository, const std::string& text) -> Made {
                auto command = std::make_shared<RVGitArchiveCommand>(repository, "HEAD",
                                                                     std::nullopt, "a.zip");
                set(*command, text);
                return command;
            },
            code, option};
}

// By class. The name of a field is that of its setter.
const std::map<std::string, std::vector<Field>>& table() {
    static const auto& rows = *new std::map<std::string, std::vector<Field>>{
        {"RVGitAddCommand", {filePaths<RVGitAddCommand>()}},
        {"RVGitApplyCommand",
         {{"FilePaths", Path,
           withOptions<RVGitApplyCommand>(
               [](auto& command, auto& text) { command.setFilePaths(Arguments{text}); })},
          {"Patch", NotAnArgument,
           withOptions<RVGitApplyCommand>(
               [](auto& command, auto& text) { command.setPatch(text); })}}},
        {"RVGitArchiveCommand",
         {archiveField(
              "Revision", RefusedName,
              [](auto& command, auto& text) { command.setRevision(text); }, RVGitArchiveFilesError),
          archiveField("FilePaths", Path, [](auto& command,
                                             auto& text) { command.setFilePaths(Arguments{text}); }),
          archiveField(
              "Destination", OptionValue,
              [](auto& command, auto& text) { command.setDestination(text); }, 0, "-o"),
          archiveField("ArchivedFilePaths", NotAnArgument, [](auto& command, auto& text) {
              command.setArchivedFilePaths({text});
          })}},
        {"RVGitBlameCommand",
         {{"Revision", RefusedRevision,
           [](auto& repository, auto& text) {
               return RVGitBlameCommand::gitBlameCommandWithRepository(repository, text, "file");
           }},
          {"FilePath", Path,
           [](auto& repository, auto& text) {
               return RVGitBlameCommand::gitBlameCommandWithRepository(repository, "HEAD", text);
           }}}},
        {"RVGitBranchCommand",
         {{"RefNames", RefusedName,
           with<RVGitBranchCommand>(
               [](auto& command, auto& text) { command.setRefNames(Arguments{text}); }),
           RVGitCreateBranchInvalidNameError},
          {"StartingPoint", RefusedName,
           with<RVGitBranchCommand>([](auto& command, auto& text) {
               command.setRefNames(Arguments{"name"});
               command.setStartingPoint(text);
           }),
           RVGitCreateBranchInvalidObjectError},
          {"TrackedRefName", RefusedName,
           with<RVGitBranchCommand>([](auto& command, auto& text) {
               command.setRefNames(Arguments{"name"});
               command.setTrackedRefName(text);
           }),
           RVGitTrackBranchInvalidObjectError},
          {"RenameToRefName", RefusedName,
           with<RVGitBranchCommand>([](auto& command, auto& text) {
               command.setRefNames(Arguments{"name"});
               command.setRenamesBranch(true);
               command.setRenameToRefName(text);
           }),
           RVGitCreateBranchInvalidNameError}}},
        {"RVGitCheckAttrCommand",
         {{"FilePaths", ListOnInput,
           [](auto& repository, auto& text) {
               return RVGitCheckAttrCommand::gitCheckAttrCommandWithRepository(repository,
                                                                               Arguments{text});
           }}}},
        {"RVGitCheckoutCommand",
         {{"Revision", RefusedRevision,
           with<RVGitCheckoutCommand>(
               [](auto& command, auto& text) { command.setRevision(text); })},
          filePaths<RVGitCheckoutCommand>()}},
        {"RVGitCherryPickCommand",
         {{"Revisions", RefusedName,
           withOptions<RVGitCherryPickCommand>([](auto& command, auto& text) {
               command.setRevisions(Arguments{"HEAD", text});
           })}}},
        {"RVGitCloneCommand",
         {{"RemoteURL", RefusedName,
           [](auto&, auto& text) {
               return RVGitCloneCommand::gitCloneCommandWithRemoteURL(text, "path", std::nullopt);
           }},
          {"LocalPath", Path,
           [](auto&, auto& text) {
               return RVGitCloneCommand::gitCloneCommandWithRemoteURL("url", text, std::nullopt);
           }},
          {"Filter", Attached,
           [](auto&, auto& text) {
               return RVGitCloneCommand::gitCloneCommandWithRemoteURL(
                   "url", "path", RVOptions{{RVGitCloneOptionFilter, text}});
           },
           0, "--filter="}}},
        {"RVGitCommitCommand",
         {{"Message", NotAnArgument,
           [](auto& repository, auto& text) {
               return RVGitCommitCommand::gitCommitCommandWithRepository(repository, text);
           }},
          {"ReEditsRevision", RefusedRevision,
           [](auto& repository, auto& text) {
               auto command =
                   RVGitCommitCommand::gitCommitCommandWithRepository(repository, std::nullopt);
               command->setReEditsRevision(text);
               return command;
           }}}},
        {"RVGitConfigCommand",
         {{"ConfigFilePath", Attached,
           withOptions<RVGitConfigCommand>(
               [](auto& command, auto& text) { command.setConfigFilePath(text); }),
           0, "--file="},
          {"ConfigFileType", NotAnArgument,
           withOptions<RVGitConfigCommand>(
               [](auto& command, auto& text) { command.setConfigFileType(text); })},
          {"ConfigAction", NotAnArgument,
           withOptions<RVGitConfigCommand>(
               [](auto& command, auto& text) { command.setConfigAction(text); })},
          {"ConfigKey", RefusedName,
           withOptions<RVGitConfigCommand>(
               [](auto& command, auto& text) { command.setConfigKey(text); })},
          {"ConfigValue", BehindFirstWord,
           withOptions<RVGitConfigCommand>([](auto& command, auto& text) {
               command.setConfigKey("a.b");
               command.setConfigValue(text);
           })},
          {"ConfigValueRegex", BehindFirstWord,
           withOptions<RVGitConfigCommand>([](auto& command, auto& text) {
               command.setConfigKey("a.b");
               command.setConfigValueRegex(text);
           })}}},
        // What would be another line of its request is refused in its own way.
        {"RVGitCredentialCommand",
         {{"HttpURL", NotAnArgument,
           [](auto&, auto& text) {
               return RVGitCredentialCommand::gitFillCredentialCommandWithHTTPURL(RVURL(text));
           }},
          {"Username", NotAnArgument,
           [](auto&, auto& text) {
               return RVGitCredentialCommand::gitApproveCredentialCommandWithHTTPURL(
                   RVURL("https://host"), text, "password");
           }},
          {"Password", NotAnArgument,
           [](auto&, auto& text) {
               return RVGitCredentialCommand::gitApproveCredentialCommandWithHTTPURL(
                   RVURL("https://host"), "name", text);
           }}}},
        {"RVGitConflictingFilePathsCommand",
         {{"Revision", RefusedName,
           [](auto& repository, auto& text) {
               return std::make_shared<RVGitConflictingFilePathsCommand>(repository, text, "a");
           }},
          {"IntoRevision", RefusedName,
           [](auto& repository, auto& text) {
               return std::make_shared<RVGitConflictingFilePathsCommand>(repository, "a", text);
           }}}},
        {"RVGitDiffCommand",
         {{"Submodule", Attached,
           withOptions<RVGitDiffCommand>(
               [](auto& command, auto& text) { command.setSubmodule(text); }),
           0, "--submodule="}}},
        {"RVGitFetchCommand",
         {{"RemoteURLString", RefusedName,
           [](auto& repository, auto& text) {
               return RVGitFetchCommand::gitFetchCommandWithRepository(repository, text, nullptr);
           }},
          {"Remote", RefusedName,
           [](auto& repository, auto& text) {
               return RVGitFetchCommand::gitFetchCommandWithRepository(
                   repository, remoteNamed(repository, text), nullptr, std::nullopt);
           }},
          {"RefSpec", RefusedName,
           [](auto& repository, auto& text) {
               return RVGitFetchCommand::gitFetchCommandWithRepository(
                   repository, "url", RVGitRefSpec::refSpecFromString(text));
           }}}},
        // Its fields are those of the classes that are made of it.
        {"RVGitFilePathsCommand",
         {{"FilePaths", NotAnArgument,
           [](auto& repository, auto&) { return std::make_shared<RVGitCommand>(repository); }}}},
        {"RVGitForEachRefCommand",
         {{"Pattern", RefusedName,
           with<RVGitForEachRefCommand>(
               [](auto& command, auto& text) { command.setPattern(text); })},
          {"Format", Attached,
           with<RVGitForEachRefCommand>([](auto& command, auto& text) {
               command.setFormat(text);
               command.template setOutputParserClass<RVGitForEachRefTagOutputParser>();
           }),
           0, "--format="}}},
        {"RVGitFormatPatchCommand",
         {{"Revision", RefusedRevision,
           [](auto& repository, auto& text) {
               return RVGitFormatPatchCommand::gitFormatPatchCommandWithRepository(repository,
                                                                                   text);
           }},
          {"DestinationURL", OptionValue,
           [](auto& repository, auto& text) {
               auto command = RVGitFormatPatchCommand::gitFormatPatchCommandWithRepository(
                   repository, "HEAD");
               command->setDestinationURL(RVURL(text));
               return command;
           },
           0, "-o"}}},
        {"RVGitInitCommand",
         {{"Path", Path,
           [](auto&, auto& text) {
               return RVGitInitCommand::gitInitCommandWithPath(text, std::nullopt);
           }},
          {"SharedMode", Attached,
           [](auto&, auto& text) {
               auto command = RVGitInitCommand::gitInitCommandWithPath("path", std::nullopt);
               command->setSharedMode(text);
               return command;
           },
           0, "--shared="}}},
        {"RVGitLFSCommand", {}},
        {"RVGitLFSInstallCommand", {}},
        {"RVGitLFSUninstallCommand", {}},
        {"RVGitLFSUpdateCommand", {}},
        {"RVGitLFSCheckoutCommand", {}},
        {"RVGitLFSPruneCommand", {}},
        {"RVGitLFSFetchCommand",
         {{"Remote", RefusedName,
           [](auto& repository, auto& text) {
               auto command = RVGitLFSFetchCommand::gitLFSFetchCommandWithRepository(repository);
               command->setRemote(remoteNamed(repository, text));
               command->setRefSpec(RVGitRefSpec::refSpecFromString("main"));
               return command;
           }},
          {"RefSpec", RefusedName,
           [](auto& repository, auto& text) {
               auto command = RVGitLFSFetchCommand::gitLFSFetchCommandWithRepository(repository);
               command->setRemote(remoteNamed(repository, "origin"));
               command->setRefSpec(RVGitRefSpec::refSpecFromString(text));
               return command;
           }}}},
        {"RVGitLFSPullCommand",
         {{"Remote", RefusedName,
           [](auto& repository, auto& text) {
               return RVGitLFSPullCommand::gitLFSPullCommandWithRepository(
                   repository, remoteNamed(repository, text));
           }}}},
        {"RVGitLFSPushCommand",
         {{"Remote", RefusedName,
           [](auto& repository, auto& text) {
               return RVGitLFSPushCommand::gitLFSPushCommandWithRepository(
                   repository, remoteNamed(repository, text));
           }},
          {"RefSpecs", RefusedName,
           [](auto& repository, auto& text) {
               auto command = RVGitLFSPushCommand::gitLFSPushCommandWithRepository(
                   repository, remoteNamed(repository, "origin"));
               command->setRefSpecs({RVGitRefSpec::refSpecFromString(text)});
               return command;
           }}}},
        {"RVGitLFSCleanCommand",
         {{"FilePath", NotAnArgument,
           [](auto& repository, auto& text) {
               const std::string path = repository->path() + "/" + text;
               std::ofstream(path) << "contents";
               auto command = std::make_shared<CleanOfNothing>(repository);
               command->setFilePath(path);
               return command;
           }}}},
        {"RVGitLFSCloneCommand",
         {field<RVGitLFSCloneCommand>(
              "RemoteURL", RefusedName,
              [](auto& command, auto& text) { command.setRemoteURL(text); }),
          field<RVGitLFSCloneCommand>(
              "LocalPath", Path, [](auto& command, auto& text) { command.setLocalPath(text); })}},
        {"RVGitLFSLsFilesCommand",
         {{"Revision", RefusedName, with<RVGitLFSLsFilesCommand>([](auto& command, auto& text) {
               command.setRevision(text);
           })}}},
        {"RVGitLFSSmudgeCommand",
         {{"OutputPath", NotAnArgument,
           [](auto& repository, auto& text) {
               auto command = std::make_shared<RVGitLFSSmudgeCommand>(repository);
               command->setOutputPath(repository->path() + "/" + text);
               return command;
           }},
          {"Pointer", NotAnArgument,
           [](auto& repository, auto& text) {
               auto command = std::make_shared<RVGitLFSSmudgeCommand>(repository);
               command->setPointer(std::make_shared<RVGitLFSPointer>(
                   RVGitLFSPointer::Entries{{"version", text}, {"oid", text}, {"size", text}},
                   text));
               return command;
           }}}},
        {"RVGitLFSTrackCommand", {lfsPatterns<RVGitLFSTrackCommand>()}},
        {"RVGitLFSUntrackCommand", {lfsPatterns<RVGitLFSUntrackCommand>()}},
        {"RVGitLogCommand",
         {{"Revisions", RefusedRevision,
           withOptions<RVGitLogCommand>(
               [](auto& command, auto& text) { command.setRevisions({"HEAD", text}); }),
           RVGitLogNoSuchRevisionError},
          {"FilePaths", Path,
           withOptions<RVGitLogCommand>(
               [](auto& command, auto& text) { command.setFilePaths({text}); })},
          {"AllowedSignersFile", Attached,
           withOptions<RVGitLogCommand>([](auto& command, auto& text) {
               command.setShowsSignatures(true);
               command.setAllowedSignersFile(text);
           }),
           0, "gpg.ssh.allowedSignersFile="},
          {"SearchPatterns", Attached,
           withOptions<RVGitLogCommand>(
               [](auto& command, auto& text) { command.setSearchPatterns({text}); }),
           0, "--grep="},
          {"SearchAuthorPatterns", Attached,
           withOptions<RVGitLogCommand>(
               [](auto& command, auto& text) { command.setSearchAuthorPatterns({text}); }),
           0, "--author="},
          {"SearchCommitterPatterns", Attached,
           withOptions<RVGitLogCommand>(
               [](auto& command, auto& text) { command.setSearchCommitterPatterns({text}); }),
           0, "--committer="},
          {"SearchContentPatterns", Attached,
           withOptions<RVGitLogCommand>(
               [](auto& command, auto& text) { command.setSearchContentPatterns({text}); }),
           0, "-G"},
          // The command has one of its own.
          {"PrettyFormat", NotAnArgument,
           withOptions<RVGitLogCommand>(
               [](auto& command, auto& text) { command.setPrettyFormat(text); })}}},
        {"RVGitLsFilesCommand", {filePaths<RVGitLsFilesCommand>()}},
        {"RVGitLsRemoteCommand",
         {{"RemoteURL", RefusedName,
           [](auto&, auto& text) {
               return RVGitLsRemoteCommand::gitLsRemoteCommandWithRemoteURL(text, std::nullopt);
           }}}},
        {"RVGitMergeBaseCommand",
         {{"Revisions", RefusedRevision, with<RVGitMergeBaseCommand>([](auto& command, auto& text) {
               command.setRevisions({"HEAD", text});
           })}}},
        {"RVGitDiffToolCommand",
         {filePaths<RVGitDiffToolCommand>(),
          {"Revisions", RefusedRevision,
           with<RVGitDiffToolCommand>(
               [](auto& command, auto& text) { command.setRevisions(Arguments{"HEAD", text}); })},
          {"DiffToolName", Attached,
           with<RVGitDiffToolCommand>(
               [](auto& command, auto& text) { command.setDiffToolName(text); }),
           0, "--tool="}}},
        {"RVGitMergeToolCommand",
         {{"FilePath", Path,
           [](auto& repository, auto& text) {
               return std::make_shared<RVGitMergeToolCommand>(repository, text);
           }},
          {"MergeToolName", Attached,
           [](auto& repository, auto& text) {
               auto command = std::make_shared<RVGitMergeToolCommand>(repository, "file");
               command->setMergeToolName(text);
               return command;
           },
           0, "--tool="}}},
        {"RVGitMergeTreeCommand",
         {{"BaseTreeRevision", RefusedName,
           [](auto& repository, auto& text) {
               return std::make_shared<RVGitMergeTreeCommand>(repository, text, "HEAD", "HEAD");
           }},
          {"SourceTreeRevision", RefusedName,
           [](auto& repository, auto& text) {
               return std::make_shared<RVGitMergeTreeCommand>(repository, "HEAD", text, "HEAD");
           }},
          {"TargetTreeRevision", RefusedName,
           [](auto& repository, auto& text) {
               return std::make_shared<RVGitMergeTreeCommand>(repository, "HEAD", "HEAD", text);
           }}}},
        {"RVGitMergeCommand",
         {{"Revision", RefusedName,
           withOptions<RVGitMergeCommand>(
               [](auto& command, auto& text) { command.setRevision(text); })},
          {"AllowedSignersFile", Attached,
           withOptions<RVGitMergeCommand>([](auto& command, auto& text) {
               command.setVerifiesSignatures(true);
               command.setAllowedSignersFile(text);
           }),
           0, "gpg.ssh.allowedSignersFile="}}},
        {"RVGitMoveCommand",
         {{"SourceFilePath", Path,
           [](auto& repository, auto& text) {
               return RVGitMoveCommand::gitMoveCommandWithRepository(repository, text, "target");
           }},
          {"DestinationFilePath", Path,
           [](auto& repository, auto& text) {
               return RVGitMoveCommand::gitMoveCommandWithRepository(repository, "source", text);
           }}}},
        {"RVGitRebaseCommand",
         {{"Revision", RefusedName,
           withOptions<RVGitRebaseCommand>(
               [](auto& command, auto& text) { command.setRevision(text); })},
          {"CurrentBaseRevision", RefusedName,
           withOptions<RVGitRebaseCommand>([](auto& command, auto& text) {
               command.setRebaseOnto(true);
               command.setTargetBaseRevision("HEAD");
               command.setCurrentBaseRevision(text);
           })},
          {"TargetBaseRevision", RefusedName,
           withOptions<RVGitRebaseCommand>([](auto& command, auto& text) {
               command.setRebaseOnto(true);
               command.setTargetBaseRevision(text);
           })},
          {"CommitCleanupOptionValue", Attached,
           withOptions<RVGitRebaseCommand>([](auto& command, auto& text) {
               command.setCleanUpCommits(true);
               command.setCommitCleanupOptionValue(text);
           }),
           0, "commit.cleanup="}}},
        {"RVGitPullCommand",
         {{"Remote", RefusedName,
           [](auto& repository, auto& text) {
               return RVGitPullCommand::gitPullCommandWithRepository(
                   repository, remoteNamed(repository, text), nullptr, std::nullopt);
           }},
          {"RefSpec", RefusedName,
           [](auto& repository, auto& text) {
               return RVGitPullCommand::gitPullCommandWithRepository(
                   repository, nullptr, RVGitRefSpec::refSpecFromString(text), std::nullopt);
           }},
          {"AllowedSignersFile", Attached,
           [](auto& repository, auto& text) {
               auto command = RVGitPullCommand::gitPullCommandWithRepository(
                   repository, nullptr, nullptr, std::nullopt);
               command->setVerifiesSignatures(true);
               command->setAllowedSignersFile(text);
               return command;
           },
           0, "gpg.ssh.allowedSignersFile="}}},
        {"RVGitPushCommand",
         {{"Remote", RefusedName,
           [](auto& repository, auto& text) {
               return RVGitPushCommand::gitPushCommandWithRepository(
                   repository, remoteNamed(repository, text), RVGitRefSpec::refSpecFromString("a"),
                   std::nullopt);
           }},
          {"RefSpecs", RefusedName,
           [](auto& repository, auto& text) {
               return RVGitPushCommand::gitPushCommandWithRepository(
                   repository, nullptr, RVGitRefSpec::refSpecFromString(text), std::nullopt);
           }},
          {"RefSpecs", RefusedName,
           [](auto& repository, auto& text) {
               return RVGitPushCommand::gitPushCommandWithRepository(
                   repository, nullptr, RVGitRefSpec::deleteRefSpecWithRemoteRefName(text),
                   RVOptions{{RVGitPushOptionDeleteRef, true}});
           }},
          {"LeaseValueCommitHash", Attached,
           [](auto& repository, auto& text) {
               auto command = RVGitPushCommand::gitPushCommandWithRepository(
                   repository, nullptr, RVGitRefSpec::refSpecFromString("a:b"),
                   RVOptions{{RVGitPushOptionForcePushWithLease, true}});
               command->setLeaseValueCommitHash(text);
               return command;
           },
           0, "--force-with-lease=b:"}}},
        {"RVGitRefLogCommand",
         {{"RefName", RefusedName,
           withOptions<RVGitRefLogCommand>(
               [](auto& command, auto& text) { command.setRefName(text); })},
          {"SearchPattern", Attached,
           withOptions<RVGitRefLogCommand>(
               [](auto& command, auto& text) { command.setSearchPattern(text); }),
           0, "--grep="}}},
        {"RVGitRemoteCommand",
         {{"RemoteNames", RefusedName,
           with<RVGitRemoteCommand>([](auto& command, auto& text) {
               command.setCreatesRemote(true);
               command.setRemoteNames(Arguments{text});
           }),
           RVGitCreateRemoteInvalidNameError},
          {"URL", RefusedName,
           with<RVGitRemoteCommand>([](auto& command, auto& text) {
               command.setCreatesRemote(true);
               command.setURL(text);
           })}}},
        {"RVGitResetCommand",
         {{"Revision", RefusedRevision,
           with<RVGitResetCommand>([](auto& command, auto& text) { command.setRevision(text); }),
           RVGitResetCommand::unresolvedRevisionErrorCode},
          filePaths<RVGitResetCommand>()}},
        {"RVGitRevertCommand",
         {{"Revisions", RefusedName,
           withOptions<RVGitRevertCommand>([](auto& command, auto& text) {
               command.setRevisions(Arguments{"HEAD", text});
           })}}},
        {"RVGitRevListCommand",
         {{"Revisions", RefusedRevision, withOptions<RVGitRevListCommand>([](auto& command,
                                                                             auto& text) {
               command.setRevisions({"HEAD", text});
           })}}},
        {"RVGitRmCommand", {filePaths<RVGitRmCommand>()}},
        {"RVGitShortlogCommand",
         {{"Revision", RefusedRevision,
           [](auto& repository, auto& text) {
               return RVGitShortlogCommand::gitShortlogCommandWithRepository(repository, text);
           }},
          {"FilePaths", Path,
           [](auto& repository, auto& text) {
               auto command =
                   RVGitShortlogCommand::gitShortlogCommandWithRepository(repository, "HEAD");
               command->setFilePaths(Arguments{text});
               return command;
           }}}},
        {"RVGitShowCommand",
         {{"ObjectReference", RefusedRevision,
           [](auto& repository, auto& text) {
               return RVGitShowCommand::gitShowCommandWithRepository(repository, text);
           },
           RVGitBlobNotFoundError}}},
        {"RVGitShowRefCommand",
         {{"RefName", RefusedName, withOptions<RVGitShowRefCommand>([](auto& command, auto& text) {
               command.setRefName(text);
           })}}},
        {"RVGitStashCommand",
         {{"RefName", RefusedName,
           [](auto& repository, auto& text) {
               return RVGitStashCommand::gitDeleteStashCommandWithRepository(repository, text);
           },
           RVGitDropStashNotFoundError},
          {"RefName", RefusedName,
           [](auto& repository, auto& text) {
               return RVGitStashCommand::gitApplyStashCommandWithRepository(repository, text,
                                                                            false);
           },
           RVGitApplyStashNotFoundError},
          {"RefName", RefusedName,
           [](auto& repository, auto& text) {
               return RVGitStashCommand::gitShowStashCommandWithRepository(repository, text);
           }},
          {"RefName", RefusedName,
           [](auto& repository, auto& text) {
               return RVGitStashCommand::gitStoreStashCommandWithRepository(repository, "message",
                                                                            text);
           }},
          {"Message", OptionValue,
           [](auto& repository, auto& text) {
               return RVGitStashCommand::gitSaveStashCommandWithRepository(repository, text);
           },
           0, "-m"},
          {"Message", OptionValue,
           [](auto& repository, auto& text) {
               return RVGitStashCommand::gitStoreStashCommandWithRepository(repository, text,
                                                                            std::nullopt);
           },
           0, "-m"},
          // "git stash create" takes all of its words for the message.
          {"Message", BehindFirstWord,
           [](auto& repository, auto& text) {
               return RVGitStashCommand::gitCreateStashCommandWithRepository(repository, text);
           }},
          {"FilePaths", Path,
           [](auto& repository, auto& text) {
               auto command = RVGitStashCommand::gitSaveStashCommandWithRepository(repository,
                                                                                   std::nullopt);
               command->setFilePaths({text});
               return command;
           }}}},
        {"RVGitStatusCommand", {filePaths<RVGitStatusCommand>()}},
        {"RVGitSVNFetchCommand", {svnRemote<RVGitSVNFetchCommand>(RefusedName)}},
        {"RVGitSVNRebaseCommand", {svnRemote<RVGitSVNRebaseCommand>(NotAnArgument)}},
        {"RVGitSVNBranchCommand", svnCopyFields<RVGitSVNBranchCommand>()},
        {"RVGitSVNTagCommand", svnCopyFields<RVGitSVNTagCommand>()},
        {"RVGitSVNShowIgnoreCommand", {}},
        {"RVGitSVNCloneCommand",
         {{"Remote", NotAnArgument,
           [](auto& repository, auto& text) {
               auto command = std::make_shared<RVGitSVNCloneCommand>("svn://host", "new",
                                                                     std::nullopt);
               command->setRemote(remoteNamed(repository, text));
               return command;
           }},
          field<RVGitSVNCloneCommand>(
              "RemoteURL", RefusedName,
              [](auto& command, auto& text) { command.setRemoteURL(text); }),
          field<RVGitSVNCloneCommand>(
              "LocalPath", Path, [](auto& command, auto& text) { command.setLocalPath(text); }),
          field<RVGitSVNCloneCommand>(
              "TrunkDirectories", Attached,
              [](auto& command, auto& text) { command.setTrunkDirectories({text}); }, "--trunk="),
          field<RVGitSVNCloneCommand>(
              "BranchDirectories", Attached,
              [](auto& command, auto& text) { command.setBranchDirectories({text}); },
              "--branches="),
          field<RVGitSVNCloneCommand>(
              "TagDirectories", Attached,
              [](auto& command, auto& text) { command.setTagDirectories({text}); }, "--tags=")}},
        {"RVGitSVNDCommitCommand",
         {{"Remote", NotAnArgument,
           [](auto& repository, auto& text) {
               return RVGitSVNDCommitCommand::gitSVNDCommitCommandWithRepository(
                   repository, remoteNamed(repository, text), "HEAD");
           }},
          {"Revision", RefusedName,
           [](auto& repository, auto& text) {
               return RVGitSVNDCommitCommand::gitSVNDCommitCommandWithRepository(repository,
                                                                                 nullptr, text);
           }}}},
        {"RVGitSubmoduleCommand",
         {filePaths<RVGitSubmoduleCommand>(),
          {"RemoteURL", RefusedName,
           with<RVGitSubmoduleCommand>(
               [](auto& command, auto& text) { command.setRemoteURL(text); })}}},
        {"RVGitTagCommand",
         {{"RefNames", RefusedName,
           [](auto& repository, auto& text) {
               return RVGitTagCommand::gitCreateTagCommandWithRepository(repository, text, "HEAD",
                                                                         std::nullopt);
           }},
          {"RefNames", RefusedName,
           [](auto& repository, auto& text) {
               return RVGitTagCommand::gitDeleteTagCommandWithRepository(repository, {"v1", text});
           },
           RVGitDeleteTagNotFoundError},
          {"Revision", RefusedRevision,
           [](auto& repository, auto& text) {
               return RVGitTagCommand::gitCreateTagCommandWithRepository(repository, "v1", text,
                                                                         std::nullopt);
           },
           RVGitCreateTagInvalidObjectError},
          {"Message", NotAnArgument,
           [](auto& repository, auto& text) {
               return RVGitTagCommand::gitCreateTagCommandWithRepository(repository, "v1", "HEAD",
                                                                         text);
           }},
          {"SigningKeyFingerprint", OptionValue,
           [](auto& repository, auto& text) {
               auto command = RVGitTagCommand::gitCreateTagCommandWithRepository(
                   repository, "v1", "HEAD", "message");
               command->setSignsTag(true);
               command->setSigningKeyFingerprint(text);
               return command;
           },
           0, "-u"}}},
        {"RVGitTreeCommand",
         {svnRemote<RVGitSVNDCommitCommand>(NotAnArgument),
{"ObjectReference", RefusedRevision,
           [](auto& repository, auto& text) {
               return RVGitTreeCommand::gitTreeCommandWithRepository(repository, text);
           },
           RVGitTreeNotFoundError},
          {"Revision", RefusedRevision,
           [](auto& repository, auto& text) {
               return RVGitTreeCommand::gitTreeCommandWithRepositoryFilePath(repository, text,
                                                                             "file");
           },
           RVGitTreeNotFoundError},
          {"FilePath", Path,
           [](auto& repository, auto& text) {
               return RVGitTreeCommand::gitTreeCommandWithRepositoryFilePath(repository, "HEAD",
                                                                             text);
           }}}},
        {"RVGitUpdateIndexCommand", {filePaths<RVGitUpdateIndexCommand>()}},
        {"RVGitUpdateRefCommand",
         {{"Instructions", ListOnInput,
           withOptions<RVGitUpdateRefCommand>(
               [](auto& command, auto& text) { command.setInstructions({text}); })},
          {"FullRefName", RefusedName,
           withOptions<RVGitUpdateRefCommand>(
               [](auto& command, auto& text) { command.setFullRefName(text); })},
          {"Revision", RefusedName,
           withOptions<RVGitUpdateRefCommand>([](auto& command, auto& text) {
               command.setFullRefName("refs/heads/main");
               command.setRevision(text);
           })}}},
        {"RVGitVerifyTagCommand",
         {{"RefName", RefusedName,
           with<RVGitVerifyTagCommand>(
               [](auto& command, auto& text) { command.setRefName(text); })},
          {"AllowedSignersFilePath", Attached,
           with<RVGitVerifyTagCommand>(
               [](auto& command, auto& text) { command.setAllowedSignersFilePath(text); }),
           0, "gpg.ssh.allowedSignersFile="}}},
    };
    return rows;
}

class RVGitHostileTextsTest : public RVGitRepositoryTestCase {
protected:
    // Records every call, and does nothing.
    RVRecordingGit useIdleRecordingGit() {
        RVRecordingGit recorder(scratchPath("idle"), fakeGit().path());
        RVGitBinary::setDefaultGitBinary(RVGitBinary::gitBinaryWithPath(recorder.path()));
        recorder.clear();
        return recorder;
    }

    static void forEachField(const std::function<void(const Field&)>& visit) {
        for (const auto& [name, fields] : table())
            for (const Field& field : fields) {
                const testing::ScopedTrace trace(__FILE__, __LINE__, name + " " + field.name);
                visit(field);
            }
    }
};

bool isRefused(Handling handling) {
    return handling == RefusedRevision || handling == RefusedName;
}

// Whether git takes the argument at the index for data wherever it looks for options.
bool isData(const Field& field, const Arguments& arguments, std::size_t index) {
    const auto begin = arguments.begin();
    const auto here = begin + static_cast<std::ptrdiff_t>(index);
    switch (field.handling) {
        case Path:
            return std::find(begin, here, "--") != here;
        case OptionValue:
            return index > 0 && arguments[index - 1] == field.option;
        case BehindFirstWord:
            return index > 0 && !arguments[index - 1].starts_with('-');
        default:
            return false;
    }
}

TEST_F(RVGitHostileTextsTest, NothingThatBeginsWithADashReachesGitAsAnOption) {
    const RVRecordingGit recorder = useIdleRecordingGit();
    for (const std::string text : {"-d", "--output=x", "-", "--", "--all-x"}) {
        forEachField([&](const Field& field) {
            SCOPED_TRACE(text);
            recorder.clear();
            const Made command = field.make(repository(), text);
            std::optional<RVError> error;
            const bool succeeded = command->run(&error);
            const auto lists = recorder.argumentLists();
            if (isRefused(field.handling)) {
                EXPECT_FALSE(succeeded);
                EXPECT_THAT(lists, testing::IsEmpty()) << "nothing is launched";
                ASSERT_TRUE(error);
                EXPECT_EQ(error->code(), field.code);
                return;
            }
            ASSERT_EQ(lists.size(), 1u);
            const Arguments& arguments = lists.front();
            bool found = field.handling == NotAnArgument || field.handling == ListOnInput;
            for (std::size_t index = 0; index < arguments.size(); ++index) {
                const std::string& argument = arguments[index];
                if (argument == text && text != "--" && text != "-") {
                    EXPECT_TRUE(isData(field, arguments, index))
                        << testing::PrintToString(arguments);
                }
                found = found || argument == field.option + text || argument == text ||
                        argument == "./" + text;
            }
            EXPECT_TRUE(found) << testing::PrintToString(arguments);
        });
    }
}

TEST_F(RVGitHostileTextsTest, NeitherEndOfARangeIsAnOption) {
    const RVRecordingGit recorder = useIdleRecordingGit();
    for (const std::string text : {"a..-b", "a...-b", "^-x"}) {
        forEachField([&](const Field& field) {
            if (field.handling != RefusedRevision)
                return;
            SCOPED_TRACE(text);
            EXPECT_THAT(field.make(repository(), text), failsWith(field.code));
        });
    }
    EXPECT_THAT(recorder.argumentLists(), testing::IsEmpty());
}

TEST_F(RVGitHostileTextsTest, WhatSelectsIsLetThroughInPlaceOfARevisionAlone) {
    const RVRecordingGit recorder = useIdleRecordingGit();
    for (const std::string text : {"--all", "--glob=x", "--ours"}) {
        forEachField([&](const Field& field) {
            if (!isRefused(field.handling))
                return;
            SCOPED_TRACE(text);
            recorder.clear();
            // Whether it then fails is of no account: an idle git gives some nothing to read.
            field.make(repository(), text)->run();
            EXPECT_NE(recorder.argumentLists().empty(), field.handling == RefusedRevision);
        });
    }
}

TEST_F(RVGitHostileTextsTest, WhatHoldsANULIsNotCutOffThere) {
    const RVRecordingGit recorder = useIdleRecordingGit();
    const std::string text("notes\0yz", 8);
    forEachField([&](const Field& field) {
        recorder.clear();
        const Made command = field.make(repository(), text);
        std::optional<RVError> error;
        const bool succeeded = command->run(&error);
        const auto lists = recorder.argumentLists();
        for (const Arguments& arguments : lists)
            for (const std::string& argument : arguments)
                EXPECT_THAT(argument, testing::Not(testing::HasSubstr("notes")));
        if (field.handling == NotAnArgument)
            return;
        EXPECT_FALSE(succeeded);
        EXPECT_THAT(lists, testing::IsEmpty());
        ASSERT_TRUE(error);
        if (field.handling != ListOnInput) {
            EXPECT_EQ(error->code(), RVGitNoGitRepoError);
            EXPECT_EQ(command->launchErrorNumber(), EINVAL);
        }
    });
}

TEST_F(RVGitHostileTextsTest, EveryCommandClassAndEachOfItsTextsHasARow) {
    static const std::regex declaration(
        R"(class\s+(?:RVGIT_EXPORT\s+)?(RVGit\w*)\s*(?:final\s*)?:\s*public\s+(\w+))"
        R"(|void\s+set(\w+)\(\s*((?:const\s+)?(?:std|RV)[^)]*?)[\s&]+\w+\))");
    // What stands for a name, or holds some, is a text, too.
    static const std::regex textType("string|RVData|RVURL|Remote|RefSpec|Pointer|Instruction");
    std::map<std::string, std::string> bases;
    std::map<std::string, std::set<std::string>> texts;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(RVGIT_SOURCES)) {
        if (entry.path().extension() != ".h")
            continue;
        const std::string header = readFile(entry.path().string());
        std::string owner;
        for (std::sregex_iterator match(header.begin(), header.end(), declaration), end;
             match != end; ++match) {
            if ((*match)[1].matched) {
                owner = (*match)[1];
                bases[owner] = (*match)[2];
            } else if (const std::string type = (*match)[4]; std::regex_search(type, textType)) {
                texts[owner].insert((*match)[3]);
            }
        }
    }
    const auto isCommand = [&](std::string name) {
        while (bases.contains(name) && name != "RVGitCommand")
            name = bases[name];
        return name == "RVGitCommand";
    };
    std::set<std::string> derivedFrom;
    for (const auto& entry : bases)
        derivedFrom.insert(entry.second);
    std::size_t classes = 0;
    for (const auto& entry : bases) {
        const std::string& name = entry.first;
        if (!isCommand(name) || name == "RVGitCommand")
            continue;
        const auto row = table().find(name);
        if (row == table().end()) {
            EXPECT_TRUE(derivedFrom.contains(name)) << name << " has no row";
            continue;
        }
        ++classes;
        std::set<std::string> fields;
        for (const Field& field : row->second)
            fields.insert(field.name);
        // The texts of its bases, too.
        for (std::string owner = name; owner != "RVGitCommand"; owner = bases.at(owner))
            for (const std::string& text : texts[owner])
                EXPECT_TRUE(fields.contains(text)) << name << "::set" << text << " has no row";
    }
    EXPECT_EQ(classes, table().size()) << "a row is of no class, or the headers are no longer read";
}

}  // namespace
