#pragma once
#include "RVGit/base/RVExport.h"
#include "RVGit/command/RVGitValues.h"

/// What the index's stages and flags mean.
class RVGIT_EXPORT RVGitIndexHelper {
public:
    /// Whether a letter of `git ls-files -v` tells of an entry that git assumes to be unchanged:
    /// one of the lower-case letters "h", "s", "r", "m" and "c"; not "k".
    [[nodiscard]] static bool isAssumeUnchangedFlag(std::string_view flag);

    /// "1", "2" and "3"; anything else is the default stage.
    [[nodiscard]] static RVGitIndexStage indexStageFromString(std::string_view text) {
        return RVGitIndexStageFromString(text);
    }
    /// "Base", "Ours" and "Theirs", and "Default" for anything else.
    [[nodiscard]] static std::string stringRepresentationForIndexStage(RVGitIndexStage stage) {
        return RVGitStringForIndexStage(stage);
    }
    /// ":2:path", by which git knows the blob.
    [[nodiscard]] static std::string indexEntryReferenceWithStage(RVGitIndexStage stage,
                                                                  std::string_view filePath);
};
