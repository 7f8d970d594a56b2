#include "RVGit/command/RVGitValues.h"

#include <algorithm>

#include "RVGit/base/RVCharacter.h"
#include "RVGit/base/RVNeverDestroyed.h"
#include "RVGit/base/RVRegularExpression.h"
#include "RVGit/base/RVString.h"

namespace {

/// A value with its name for people and the text by which git knows it.
template <typename Enum>
struct Form {
    Enum value;
    std::string_view name;
    std::string_view text;
};

constexpr Form<RVGitObjectType> objectTypes[] = {
    {RVGitObjectTypeTree, "Tree", "tree"},
    {RVGitObjectTypeBlob, "Blob", "blob"},
    {RVGitObjectTypeCommit, "Commit", "commit"},
    {RVGitObjectTypeTag, "Tag", "tag"},
};

constexpr Form<RVGitFileMode> fileModes[] = {
    {RVGitFileModeDirectory, "Directory", "040000"},
    {RVGitFileModeRegular, "Regular", "100644"},
    {RVGitFileModeExecutable, "Executable", "100755"},
    {RVGitFileModeSymbolicLink, "Symbolic Link", "120000"},
    {RVGitFileModeSubmodule, "Submodule", "160000"},
};

constexpr Form<RVGitIndexStage> indexStages[] = {
    {RVGitIndexStageBase, "Base", "1"},
    {RVGitIndexStageOurs, "Ours", "2"},
    {RVGitIndexStageTheirs, "Theirs", "3"},
};

constexpr Form<RVGitFileStatus> fileStatuses[] = {
    {RVGitFileStatusUntracked, "Untracked", "?"}, {RVGitFileStatusIgnored, "Ignored", "!"},
    {RVGitFileStatusUnchanged, "Unchanged", " "}, {RVGitFileStatusAdded, "Added", "A"},
    {RVGitFileStatusCopied, "Copied", "C"},       {RVGitFileStatusModified, "Modified", "M"},
    {RVGitFileStatusRenamed, "Renamed", "R"},     {RVGitFileStatusTypeChanged, "Type Changed", "T"},
    {RVGitFileStatusDeleted, "Deleted", "D"},     {RVGitFileStatusUnmerged, "Unmerged", "U"},
};

template <typename Enum, std::size_t count>
const Form<Enum>* formForText(const Form<Enum> (&forms)[count], std::string_view text) {
    auto found = std::find_if(std::begin(forms), std::end(forms),
                              [&](const Form<Enum>& form) { return form.text == text; });
    return found == std::end(forms) ? nullptr : found;
}

template <typename Enum, std::size_t count>
const Form<Enum>* formForValue(const Form<Enum> (&forms)[count], Enum value) {
    auto found = std::find_if(std::begin(forms), std::end(forms),
                              [&](const Form<Enum>& form) { return form.value == value; });
    return found == std::end(forms) ? nullptr : found;
}

template <typename Enum, std::size_t count>
std::string nameForValue(const Form<Enum> (&forms)[count], Enum value, std::string_view fallback) {
    const Form<Enum>* form = formForValue(forms, value);
    return std::string(form ? form->name : fallback);
}

std::string joined(std::initializer_list<std::string_view> parts) {
    std::string text;
    for (std::string_view part : parts)
        text += part;
    return text;
}

char byteFromOctalDigits(std::string_view digits) {
    unsigned value = 0;
    for (char digit : digits) {
        if (digit < '0' || digit > '7')
            break;
        value = value * 8 + static_cast<unsigned>(digit - '0');
    }
    return static_cast<char>(value);
}

/// The bytes that a quoted text stands for, its quotes included.
std::string bytesOfEscapedText(std::string_view text) {
    std::string bytes;
    std::string digits;
    bool escaped = false;
    for (char c : text) {
        if (!escaped) {
            escaped = c == '\\';
            digits.clear();
            if (!escaped)
                bytes += c;
            continue;
        }
        static constexpr std::string_view letters = "\"\\trn";
        static constexpr std::string_view meanings = "\"\\\t\r\n";
        if (std::size_t letter = letters.find(c); letter != std::string_view::npos) {
            bytes += meanings[letter];
            escaped = false;
        } else if (digits += c; digits.size() == 3) {
            bytes += byteFromOctalDigits(digits);
            escaped = false;
        }
    }
    return bytes;
}

}  // namespace

RVGitObjectType RVGitObjectTypeFromString(std::string_view text) {
    const auto* form = formForText(objectTypes, text);
    if (!form)
        form = formForText(objectTypes, lowercaseString(text));
    return form ? form->value : RVGitObjectTypeNone;
}

std::string RVGitStringForObjectType(RVGitObjectType objectType) {
    return nameForValue(objectTypes, objectType, "None");
}

RVGitFileMode RVGitFileModeFromString(std::string_view text) {
    return RVGitKnownFileModeFromString(text).value_or(RVGitFileModeRegular);
}

std::optional<RVGitFileMode> RVGitKnownFileModeFromString(std::string_view text) {
    const auto* form = formForText(fileModes, text);
    return form ? std::optional(form->value) : std::nullopt;
}

std::string RVGitStringForFileMode(RVGitFileMode fileMode) {
    return nameForValue(fileModes, fileMode, "None");
}

RVGitIndexStage RVGitIndexStageFromString(std::string_view text) {
    const auto* form = formForText(indexStages, text);
    return form ? form->value : RVGitIndexStageDefault;
}

std::string RVGitStringForIndexStage(RVGitIndexStage stage) {
    return nameForValue(indexStages, stage, "Default");
}

RVGitFileStatus RVGitFileStatusFromString(std::string_view text) {
    const auto* form = formForText(fileStatuses, text);
    return form ? form->value : RVGitFileStatusUnchanged;
}

std::string RVGitStringForFileStatus(RVGitFileStatus status) {
    return nameForValue(fileStatuses, status, "None");
}

std::optional<std::string> RVGitShortStringForFileStatus(RVGitFileStatus status) {
    const auto* form = formForValue(fileStatuses, status);
    return form ? std::optional(std::string(form->text)) : std::nullopt;
}

bool rvgit::isValidCommitHash(std::string_view text) {
    static const RVNeverDestroyed<RVRegularExpression> expression(
        std::in_place, "^[a-f0-9]{40}$", RVRegularExpression::CaseInsensitive);
    return expression->matches(text);
}

bool rvgit::isSHA256Hash(std::string_view text) {
    return text.size() == 64 && beginsWithSHA256Hash(text);
}

bool rvgit::beginsWithSHA256Hash(std::string_view text) {
    constexpr std::size_t length = 64;
    const auto isHashDigit = [](char byte) {
        return isDigit(byte) || (byte >= 'a' && byte <= 'f');
    };
    return text.size() >= length && std::ranges::all_of(text.substr(0, length), isHashDigit) &&
           (text.size() == length || !isHashDigit(text[length]));
}

bool RVGitValidateCommitHash(std::string_view hash) {
    return isValidCommitHash(hash);
}

std::optional<std::string> RVGitShortenHash(const std::optional<std::string>& hash) {
    constexpr std::size_t usualLength = 8;
    const auto start = RVGitShortenHashWithLength(hash, usualLength);
    return start ? start : hash;
}

std::optional<std::string> RVGitShortenHashWithLength(const std::optional<std::string>& hash,
                                                      std::size_t length) {
    const auto rest = hash ? textFromCharacter(*hash, length) : std::nullopt;
    return rest ? std::optional(hash->substr(0, hash->size() - rest->size())) : std::nullopt;
}

std::string RVGitMakeObjectReference(const std::optional<std::string>& revision,
                                     const std::optional<std::string>& filePath) {
    return joined({revision ? *revision : "", ":", filePath ? *filePath : ""});
}

std::string RVGitMakeRevisionRange(std::string_view first, std::string_view second) {
    return joined({second, "..", first});
}

std::string RVGitMakeRevisionComparisonString(std::string_view first, std::string_view second) {
    return joined({first, "...", second});
}

std::string RVGitMakeBranchConfigSection(std::string_view branch) {
    return joined({"branch.", branch});
}

std::string RVGitMakeBranchConfigKey(std::string_view branch, std::string_view key) {
    return joined({"branch.", branch, ".", key});
}

std::string RVGitMakeRemoteConfigSection(std::string_view remote) {
    return joined({"remote.", remote});
}

std::string RVGitMakeRemoteConfigKey(std::string_view remote, std::string_view key) {
    return joined({"remote.", remote, ".", key});
}

std::string RVGitMakeSVNRemoteConfigSection(std::string_view remote) {
    return joined({"svn-remote.", remote});
}

std::string RVGitMakeSVNRemoteConfigKey(std::string_view remote, std::string_view key) {
    return joined({"svn-remote.", remote, ".", key});
}

std::string RVGitMakeSubmoduleConfigSection(std::string_view submodule) {
    return joined({"submodule.", submodule});
}

std::string RVGitMakeSubmoduleConfigKey(std::string_view submodule, std::string_view key) {
    return joined({"submodule.", submodule, ".", key});
}

std::string RVGitMakeQueueName(std::string_view label) {
    return joined({"com.varnelsoft.Git.", label});
}

std::string rvgit::unquotedCString(std::string_view text) {
    if (!text.starts_with('"'))
        return std::string(text);
    if (!isASCII(text))
        return std::string(withoutFirstAndLastCharacter(text));
    std::string unquoted = stringUsingBestEncoding(bytesOfEscapedText(text));
    if (unquoted.starts_with('"'))
        unquoted.erase(0, 1);
    if (unquoted.ends_with('"'))
        unquoted.pop_back();
    return unquoted;
}

std::string rvgit::stringByEscapingReservedGitPatternCharacters(std::string_view text) {
    std::string escaped;
    for (char c : text) {
        if (std::string_view("![]?#*").find(c) != std::string_view::npos)
            escaped += '\\';
        escaped += c;
    }
    return escaped;
}
