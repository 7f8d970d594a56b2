#include "RVGit/remotes/RVGitCredentialCommand.h"

#include "RVGit/base/RVStandardInput.h"
#include "RVGit/command/RVGitBinary.h"
#include "RVGit/command/RVGitError.h"
#include "RVGit/remotes/RVGitCredentials.h"

namespace {

constexpr std::string_view lineEnds("\n\0", 2);
constexpr std::string_view lineEndsOfHelpers("\n\0\r", 3);

bool holdsLineEnd(const std::optional<std::string>& field) {
    return field && field->find_first_of(lineEnds) != std::string::npos;
}

// An escape counts, whatever part it stands in: git decodes them all.
bool holdsLineEnd(const RVURL& url) {
    const std::string& text = url.absoluteString();
    if (text.find_first_of(lineEndsOfHelpers) != std::string::npos)
        return true;
    for (const char* escape : {"%0A", "%0a", "%00", "%0D", "%0d"})
        if (text.find(escape) != std::string::npos)
            return true;
    return false;
}

}  // namespace

RVGitCredentialOutputParser::RVGitCredentialOutputParser(std::string_view outputData)
    : RVGitOutputParser(outputData) {}

std::string_view RVGitCredentialOutputParser::parserName() const {
    return "RVGitCredentialOutputParser";
}

bool RVGitCredentialOutputParser::parseOutputLine(std::string_view line) {
    const auto equals = line.find('=');
    if (equals == std::string_view::npos)
        return false;
    const auto key = line.substr(0, equals);
    auto value = line.substr(equals + 1);
    value = value.substr(0, value.find('='));
    if (key == "protocol")
        scheme_ = value;
    else if (key == "host")
        host_ = value;
    else if (key == "path")
        path_ = value;
    else if (key == "username")
        user_ = value;
    else if (key == "password")
        password_ = value;
    else
        return false;
    return true;
}

RVGitCredentialCommand::RVGitCredentialCommand(const std::optional<RVOptions>& options)
    : RVGitCommand(RVGitBinary::defaultGitBinary()),
      fillsCredential_(optionIsSet(options, RVGitCredentialOptionFill)),
      approvesCredential_(optionIsSet(options, RVGitCredentialOptionApprove)),
      rejectsCredential_(optionIsSet(options, RVGitCredentialOptionReject)) {}

std::shared_ptr<RVGitCredentialCommand> RVGitCredentialCommand::gitFillCredentialCommandWithHTTPURL(
    const RVURL& url) {
    auto command =
        std::make_shared<RVGitCredentialCommand>(RVOptions{{RVGitCredentialOptionFill, true}});
    command->setHttpURL(normalizedKeychainURL(url));
    return command;
}

std::shared_ptr<RVGitCredentialCommand>
RVGitCredentialCommand::gitApproveCredentialCommandWithHTTPURL(
    const RVURL& url, std::optional<std::string> username, std::optional<std::string> password) {
    auto command =
        std::make_shared<RVGitCredentialCommand>(RVOptions{{RVGitCredentialOptionApprove, true}});
    command->setHttpURL(normalizedKeychainURL(url));
    command->setUsername(std::move(username));
    command->setPassword(std::move(password));
    return command;
}

std::shared_ptr<RVGitCredentialCommand>
RVGitCredentialCommand::gitRejectCredentialCommandWithHTTPURL(const RVURL& url) {
    auto command =
        std::make_shared<RVGitCredentialCommand>(RVOptions{{RVGitCredentialOptionReject, true}});
    command->setHttpURL(normalizedKeychainURL(url));
    return command;
}

std::string RVGitCredentialCommand::inputString() const {
    const RVURL url = httpURL_.value_or(RVURL(""));
    if (fillsCredential_ || (rejectsCredential_ && !approvesCredential_))
        return "url=" + url.absoluteString() + "\n\n";
    if (!approvesCredential_)
        return "";
    std::string host = url.host().value_or("");
    if (const auto port = url.port())
        host += ":" + std::to_string(*port);
    std::string request = "protocol=" + url.scheme().value_or("") + "\nhost=" + host + "\n";
    const std::string path = url.path();
    if (!path.empty())
        request += "path=" + (path.size() > 1 ? path.substr(1) : path) + "\n";
    return request + "username=" + username_.value_or("") + "\npassword=" + password_.value_or("") +
           "\n\n";
}

bool RVGitCredentialCommand::requestCanBeWritten() const {
    return !(httpURL_ && holdsLineEnd(*httpURL_)) && !holdsLineEnd(username_) &&
           !holdsLineEnd(password_);
}

void RVGitCredentialCommand::gitCommandWillInitialize() {
    if (!requestCanBeWritten())
        return finishWithError(gitErrorWithCode(RVGitRVGitGenericError));
    setGitCommand("credential");
    if (fillsCredential_)
        addGitCommandArgument("fill");
    else if (approvesCredential_)
        addGitCommandArgument("approve");
    else if (rejectsCredential_)
        addGitCommandArgument("reject");
    setStandardInput(RVStandardInput::data(inputString()));
}

bool RVGitCredentialCommand::gitCommandWillParseOutput(RVErrorPlace error) {
    RVGitCredentialOutputParser parser(standardOutputData());
    const bool parsed = parser.parse(error);
    if (parser.scheme() && parser.host() && parser.user() && parser.password())
        credentials_ = std::make_shared<const RVGitCredentials>(
            *parser.scheme(), *parser.host(), parser.path(), *parser.user(), *parser.password());
    return parsed;
}
