#include "RVGit/command/RVGitEnglishTexts.h"

#include "RVGit/base/RVErrorManager.h"

void rvgit::installEnglishTexts() {
    static constexpr const char* texts[][2] = {
        {"NO_REFS_ERROR_DESCRIPTION", "No Refs Found"},
        {"NO_REFS_ERROR_FAILURE_REASON", "The repository has no ref of that name."},
        {"REFS_READ_ERROR_DESCRIPTION", "Could Not Read Refs"},
        {"REFS_READ_ERROR_FAILURE_REASON", "Some refs of the repository could not be read."},
        {"BAD_DEFAULT_REVISION_ERROR_DESCRIPTION", "No Commit Yet"},
        {"BAD_DEFAULT_REVISION_ERROR_FAILURE_REASON", "HEAD does not name a commit."},
        {"BAD_REVISION_ERROR_DESCRIPTION", "Bad Revision"},
        {"BAD_REVISION_ERROR_FAILURE_REASON", "The revision could not be used."},
        {"CONFIG_INVALID_FILE_ERROR_DESCRIPTION", "Invalid Configuration"},
        {"CONFIG_INVALID_FILE_ERROR_FAILURE_REASON", "A configuration file could not be read."},
        {"LOG_NO_SUCH_REVISION_ERROR_DESCRIPTION", "No Such Revision"},
        {"LOG_NO_SUCH_REVISION_ERROR_FAILURE_REASON",
         "A revision that was named does not exist in this repository."},
        {"MERGETOOL_MERGE_FAILED_ERROR_DESCRIPTION", "Merge Failed"},
        {"MERGETOOL_MERGE_FAILED_ERROR_FAILURE_REASON",
         "The merge tool did not resolve the conflict."},
        {"RENAME_BRANCH_INVALID_OBJECT_ERROR_DESCRIPTION", "Could Not Rename Branch"},
        {"RENAME_BRANCH_INVALID_OBJECT_ERROR_FAILURE_REASON",
         "There is no branch of that name, or it has no commit yet."},
        {"RENAME_BRANCH_REF_ALREADY_EXISTS_ERROR_DESCRIPTION", "Could Not Rename Branch"},
        {"RENAME_BRANCH_REF_ALREADY_EXISTS_ERROR_FAILURE_REASON",
         "There is a branch of the new name already."},
        {"TRACK_BRANCH_INVALID_OBJECT_ERROR_DESCRIPTION", "Could Not Track Branch"},
        {"TRACK_BRANCH_INVALID_OBJECT_ERROR_FAILURE_REASON",
         "The branch that was to be tracked does not exist."},
        {"GIT_COMMAND_ARGUMENTS_OVERFLOW", "Too many arguments for a Git command (%d)."},
    };
    for (const auto& [key, text] : texts)
        setLocalizedString(key, text);
}
