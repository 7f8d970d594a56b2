#include "RVGit/objects/RVGitVerifyTagCommand.h"

#include <algorithm>
#include <utility>

#include "RVGit/base/RVNeverDestroyed.h"
#include "RVGit/base/RVRegularExpression.h"
#include "RVGit/base/RVString.h"
#include "RVGit/command/RVGitError.h"
#include "RVGit/objects/RVGitSignature.h"

RVGitGPGTagSignatureOutputParser::RVGitGPGTagSignatureOutputParser(std::string_view outputData)
    : RVGitOutputParser(outputData, Delimiter::Newline) {}

RVGitGPGTagSignatureOutputParser::RVGitGPGTagSignatureOutputParser(
    std::vector<std::string> outputLines)
    : RVGitOutputParser(std::move(outputLines)) {}

std::string_view RVGitGPGTagSignatureOutputParser::parserName() const {
    return "RVGitGPGTagSignatureOutputParser";
}

bool RVGitGPGTagSignatureOutputParser::parseOutputLine(std::string_view line) {
    static constexpr std::string_view statusWords[] = {
        "GOODSIG", "EXPSIG", "EXPKEYSIG", "REVKEYSIG", "BADSIG", "ERRSIG",
    };
    constexpr std::size_t primaryKeyIndex = 11;

    const auto pieces = componentsSeparatedByString(line, " ");
    if (pieces.size() < 2)
        return false;
    if (pieces[1] == "VALIDSIG") {
        if (pieces.size() <= primaryKeyIndex)
            return false;
        result_.fingerprint = pieces[primaryKeyIndex];
        return true;
    }
    if (std::ranges::find(statusWords, pieces[1]) == std::end(statusWords))
        return true;

    // The brackets are meant as a group, but the words were tested above.
    static const RVNeverDestroyed<RVRegularExpression> userExpression(
        std::in_place,
        R"(^\[GNUPG:\]\s+[GOODSIG|EXPSIG|EXPKEYSIG|REVKEYSIG|BADSIG|ERRSIG]+\s+[0-9A-F]+\s+)"
        R"((.*)\s+<(.*)>)",
        RVRegularExpression::CaseInsensitive);
    if (const auto user = userExpression->firstMatch(line); !user.empty()) {
        result_.username = *user[1];
        result_.email = *user[2];
    }
    result_.status = pieces[1];
    if (pieces.size() > 2)
        result_.fingerprint = pieces[2];
    return true;
}

RVGitSSHTagSignatureOutputParser::RVGitSSHTagSignatureOutputParser(std::string_view outputData)
    : RVGitOutputParser(outputData, Delimiter::Newline) {}

RVGitSSHTagSignatureOutputParser::RVGitSSHTagSignatureOutputParser(
    std::vector<std::string> outputLines)
    : RVGitOutputParser(std::move(outputLines)) {}

std::string_view RVGitSSHTagSignatureOutputParser::parserName() const {
    return "RVGitSSHTagSignatureOutputParser";
}

bool RVGitSSHTagSignatureOutputParser::parseOutputLine(std::string_view line) {
    if (result_.fingerprint)
        return true;
    if (line.find(R"("git" signature)") == std::string_view::npos)
        return false;
    result_.fingerprint = line.substr(line.rfind(' ') + 1);
    return true;
}

RVGitVerifyTagCommand::RVGitVerifyTagCommand(const std::shared_ptr<RVGitRepository>& repository)
    : RVGitCommand(repository) {}

std::shared_ptr<RVGitVerifyTagCommand> RVGitVerifyTagCommand::gitVerifyTagCommandWithRepository(
    const std::shared_ptr<RVGitRepository>& repository, std::optional<std::string> refName) {
    auto command = std::make_shared<RVGitVerifyTagCommand>(repository);
    command->setRefName(std::move(refName));
    return command;
}

const RVGitErrorTable& RVGitVerifyTagCommand::gitErrorDefinitions() {
    // Neither code stands in the catalogue.
    static const RVNeverDestroyed<RVGitErrorTable> table = {
        gitErrorRow(1703)
            .command("verify-tag")
            .exitCode(1)
            .standardError(".*cannot verify a non-tag object of type commit.",
                           {RVGitRefNameErrorKey}),
        gitErrorRow(1704)
            .command("verify-tag")
            .exitCode(1)
            .standardError("error: no signature found", {RVGitRefNameErrorKey}),
    };
    return *table;
}

void RVGitVerifyTagCommand::gitCommandWillInitialize() {
    if (allowedSignersFilePath_)
        addGitOptions({"-c", "gpg.ssh.allowedSignersFile=" + *allowedSignersFilePath_});
    setGitCommand("verify-tag");
    addGitCommandOption("--raw");
    if (refName_)
        addGitCommandName(*refName_);
}

bool RVGitVerifyTagCommand::gitCommandShouldHandleError(const RVError&) {
    return findSSHSignature("U");
}

RVUserInfo RVGitVerifyTagCommand::gitCommandWillUseErrorUserInfo(RVUserInfo userInfo) {
    if (refName_)
        userInfo.insert_or_assign(RVGitRefNameErrorKey, *refName_);
    return userInfo;
}

bool RVGitVerifyTagCommand::gitCommandWillParseOutput(RVErrorPlace) {
    return findGPGSignature() || findSSHSignature("G");
}

bool RVGitVerifyTagCommand::findGPGSignature() {
    RVGitGPGTagSignatureOutputParser parser(standardErrorData());
    parser.parse();
    const auto& found = parser.result();
    if (!found.fingerprint)
        return false;
    signature_ = RVGitSignature::signatureWithName(
        found.username, found.email, found.fingerprint, found.fingerprint,
        RVGitSignature::signatureStatusFromTagSignatureStatus(found.status.value_or("")));
    return true;
}

/// Without any output the parser succeeds and has found nothing.
bool RVGitVerifyTagCommand::findSSHSignature(const char* status) {
    RVGitSSHTagSignatureOutputParser parser(standardErrorData());
    if (!parser.parse())
        return false;
    if (const auto& fingerprint = parser.result().fingerprint)
        signature_ = RVGitSignature::signatureWithName(std::nullopt, std::nullopt, fingerprint,
                                                       fingerprint, status);
    return true;
}
