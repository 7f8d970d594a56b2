#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "RVGit/base/RVExport.h"
#include "RVGit/base/RVTypes.h"
#include "RVGit/base/RVURL.h"
#include "RVGit/command/RVGitCommand.h"
#include "RVGit/command/RVGitOutputParser.h"

class RVGitCredentials;

// Options of RVGitCredentialCommand, each a boolean.
inline constexpr char RVGitCredentialOptionFill[] = "RVGitCredentialOptionFill";
inline constexpr char RVGitCredentialOptionApprove[] = "RVGitCredentialOptionApprove";
/// Kept for compatibility: the key says "Accept".
inline constexpr char RVGitCredentialOptionReject[] = "RVGitCredentialOptionAccept";

/// Reads the answer of git credential: lines of a key, "=" and a value. A line without "=" and a
/// key other than protocol, host, path, username and password fail with code 11. Kept for
/// compatibility: a value is cut at a "=" in it.
class RVGIT_EXPORT RVGitCredentialOutputParser : public RVGitOutputParser {
public:
    explicit RVGitCredentialOutputParser(std::string_view outputData);

    [[nodiscard]] const std::optional<std::string>& scheme() const { return scheme_; }
    [[nodiscard]] const std::optional<std::string>& host() const { return host_; }
    [[nodiscard]] const std::optional<std::string>& path() const { return path_; }
    [[nodiscard]] const std::optional<std::string>& user() const { return user_; }
    [[nodiscard]] const std::optional<std::string>& password() const { return password_; }

protected:
    [[nodiscard]] std::string_view parserName() const override;
    bool parseOutputLine(std::string_view line) override;

private:
    std::optional<std::string> scheme_;
    std::optional<std::string> host_;
    std::optional<std::string> path_;
    std::optional<std::string> user_;
    std::optional<std::string> password_;
};

/// Asks the credential helpers that git is configured with for a password, or tells them whether
/// one was right: git credential, with no repository. Fill before a connection, approve with the
/// name and password that worked, reject when the server refused them. Nothing stands on the
/// command line: git reads the request from its standard input.
///
/// Failure: code 1 before git is launched where the address, the name or the password holds a
/// newline or a NUL, or an escape for one in the address, since nothing escapes them in the
/// request: a line of it could be given that nobody wrote; the same for a carriage return in the
/// address, which helpers take for the end of a line. Code 1 too where no helper knows the password
/// and nobody can be asked; 11 for an answer with other keys, as helpers of newer gits give them.
class RVGIT_EXPORT RVGitCredentialCommand : public RVGitCommand {
public:
    explicit RVGitCredentialCommand(const std::optional<RVOptions>& options);

    // The address is normalized: the same credential is found whoever's name stands in it.
    [[nodiscard]] static std::shared_ptr<RVGitCredentialCommand>
    gitFillCredentialCommandWithHTTPURL(const RVURL& url);
    [[nodiscard]] static std::shared_ptr<RVGitCredentialCommand>
    gitApproveCredentialCommandWithHTTPURL(const RVURL& url, std::optional<std::string> username,
                                           std::optional<std::string> password);
    [[nodiscard]] static std::shared_ptr<RVGitCredentialCommand>
    gitRejectCredentialCommandWithHTTPURL(const RVURL& url);

    [[nodiscard]] const std::optional<RVURL>& httpURL() const { return httpURL_; }
    void setHttpURL(std::optional<RVURL> url) { httpURL_ = std::move(url); }
    /// Of approve, as is the password.
    [[nodiscard]] const std::optional<std::string>& username() const { return username_; }
    void setUsername(std::optional<std::string> username) { username_ = std::move(username); }
    [[nodiscard]] const std::optional<std::string>& password() const { return password_; }
    void setPassword(std::optional<std::string> password) { password_ = std::move(password); }
    // The first of these that is set counts.
    [[nodiscard]] bool fillsCredential() const { return fillsCredential_; }
    void setFillsCredential(bool fills) { fillsCredential_ = fills; }
    [[nodiscard]] bool approvesCredential() const { return approvesCredential_; }
    void setApprovesCredential(bool approves) { approvesCredential_ = approves; }
    [[nodiscard]] bool rejectsCredential() const { return rejectsCredential_; }
    void setRejectsCredential(bool rejects) { rejectsCredential_ = rejects; }

    /// The request. Fill and reject send the same. Empty without a form.
    [[nodiscard]] std::string inputString() const;

    /// The result of fill; absent where the answer lacks the scheme, host, user or password, which
    /// is no failure.
    [[nodiscard]] const std::shared_ptr<const RVGitCredentials>& credentials() const {
        return credentials_;
    }

protected:
    void gitCommandWillInitialize() override;
    bool gitCommandWillParseOutput(RVErrorPlace error) override;

private:
    [[nodiscard]] bool requestCanBeWritten() const;

    std::optional<RVURL> httpURL_;
    std::optional<std::string> username_;
    std::optional<std::string> password_;
    bool fillsCredential_ = false;
    bool approvesCredential_ = false;
    bool rejectsCredential_ = false;
    std::shared_ptr<const RVGitCredentials> credentials_;
};
