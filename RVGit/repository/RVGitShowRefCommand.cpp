#include "RVGit/repository/RVGitShowRefCommand.h"

#include <algorithm>

#include "RVGit/base/RVNeverDestroyed.h"
#include "RVGit/base/RVRegularExpression.h"
#include "RVGit/base/RVString.h"
#include "RVGit/command/RVGitErrorCodes.h"

namespace {

constexpr std::size_t hashLength = 40;
constexpr std::string_view peeledSuffix = "^{}";

bool isLowercaseHexDigit(char character) {
    return (character >= '0' && character <= '9') || (character >= 'a' && character <= 'f');
}

// A hash, one blank or tab, and a name of printable ASCII characters: what nearly every line is.
// The expression's blanks and line ends reach beyond ASCII, so every other line is left to it.
bool isPlainRefLine(std::string_view line) {
    if (line.size() < hashLength + 2)
        return false;
    char separator = line[hashLength];
    if ((separator != ' ' && separator != '\t') || line[hashLength + 1] == ' ')
        return false;
    std::string_view hash = line.substr(0, hashLength);
    std::string_view name = line.substr(hashLength + 1);
    return std::all_of(hash.begin(), hash.end(), isLowercaseHexDigit) &&
           std::all_of(name.begin(), name.end(),
                       [](char character) { return character >= ' ' && character <= '~'; });
}

}  // namespace

RVGitRefOutputParser::RVGitRefOutputParser(std::string_view outputData)
    : RVGitItemOutputParser(outputData, Delimiter::Newline) {}

std::string_view RVGitRefOutputParser::parserName() const {
    return "RVGitRefOutputParser";
}

bool RVGitRefOutputParser::parseOutputLine(std::string_view line) {
    if (isPlainRefLine(line)) {
        addRef(line.substr(0, hashLength), line.substr(hashLength + 1));
        return true;
    }
    static const RVNeverDestroyed<RVRegularExpression> expression(R"(^([0-9a-f]{40})\s+(.*))");
    auto components = expression->firstMatch(line);
    if (components.empty())
        return false;
    addRef(*components[1], *components[2]);
    return true;
}

void RVGitRefOutputParser::addRef(std::string_view hash, std::string_view fullRefName) {
    if (fullRefName.ends_with(peeledSuffix)) {
        fullRefName.remove_suffix(peeledSuffix.size());
        if (auto* tag = existingResultForKey(fullRefName)) {
            tag->tagObjectHash = std::move(tag->commitHash);
            tag->commitHash = hash;
        }
        return;
    }
    resultForKeyMakingIt(fullRefName) = {.fullRefName = std::string(fullRefName),
                                         .commitHash = std::string(hash),
                                         .tagObjectHash = std::nullopt,
                                         .createdDate = std::nullopt};
}

RVGitShowRefCommand::RVGitShowRefCommand(const std::shared_ptr<RVGitRepository>& repository,
                                         const std::optional<RVOptions>& options)
    : RVGitCommand(repository) {
    showsHead_ = optionIsSet(options, RVGitShowRefOptionHead);
    showsHeads_ = optionIsSet(options, RVGitShowRefOptionHeads);
    showsTags_ = optionIsSet(options, RVGitShowRefOptionTags);
}

std::shared_ptr<RVGitShowRefCommand> RVGitShowRefCommand::gitShowRefCommandWithRepository(
    const std::shared_ptr<RVGitRepository>& repository, const std::optional<RVOptions>& options) {
    return std::make_shared<RVGitShowRefCommand>(repository, options);
}

const RVGitErrorTable& RVGitShowRefCommand::gitErrorDefinitions() {
    static const RVNeverDestroyed<RVGitErrorTable> table = {
        gitErrorRow(RVGitNoRefsError).command("show-ref").exitCode(1),
    };
    return *table;
}

void RVGitShowRefCommand::gitCommandWillInitialize() {
    setGitCommand("show-ref");
    if (showsHead_)
        addGitCommandOption("--head");
    if (showsHeads_)
        addGitCommandOption("--heads");
    if (showsTags_)
        addGitCommandOptions({"--tags", "--dereference"});
    if (showsHashesOnly_)
        addGitCommandOption("-s");
    if (!RVStringIsEmpty(refName_))
        addGitCommandName(*refName_);
}

bool RVGitShowRefCommand::gitCommandShouldHandleError(const RVError& error) {
    return error.code() != RVGitNoRefsError;
}

bool RVGitShowRefCommand::gitCommandWillParseOutput(RVErrorPlace error) {
    if (showsHashesOnly_)
        return true;
    RVGitRefOutputParser parser(standardOutputData());
    bool parsed = parser.parse(error);
    refs_ = parser.takeResults();
    return parsed;
}
