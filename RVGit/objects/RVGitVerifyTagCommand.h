#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "RVGit/base/RVExport.h"
#include "RVGit/command/RVGitCommand.h"
#include "RVGit/command/RVGitOutputParser.h"

class RVGitSignature;

/// What GPG's status lines tell of one signature.
struct RVGitGPGTagSignatureOutputParserResultItem {
    std::optional<std::string> username;
    std::optional<std::string> email;
    /// The primary key's fingerprint, or the ID of the signing key where GPG could not validate
    /// the signature.
    std::optional<std::string> fingerprint;
    /// GPG's word: "GOODSIG".
    std::optional<std::string> status;
};

/// Reads the lines "[GNUPG:] WORD ..." that GPG prints for programs.
class RVGIT_EXPORT RVGitGPGTagSignatureOutputParser : public RVGitOutputParser {
public:
    explicit RVGitGPGTagSignatureOutputParser(std::string_view outputData);
    explicit RVGitGPGTagSignatureOutputParser(std::vector<std::string> outputLines);

    [[nodiscard]] const RVGitGPGTagSignatureOutputParserResultItem& result() const {
        return result_;
    }

protected:
    [[nodiscard]] std::string_view parserName() const override;
    bool parseOutputLine(std::string_view line) override;

private:
    RVGitGPGTagSignatureOutputParserResultItem result_;
};

/// What ssh-keygen tells of one signature.
struct RVGitSSHTagSignatureOutputParserResultItem {
    std::optional<std::string> fingerprint;
};

/// Reads the sentence that ssh-keygen prints of a good signature; it must stand first.
class RVGIT_EXPORT RVGitSSHTagSignatureOutputParser : public RVGitOutputParser {
public:
    explicit RVGitSSHTagSignatureOutputParser(std::string_view outputData);
    explicit RVGitSSHTagSignatureOutputParser(std::vector<std::string> outputLines);

    [[nodiscard]] const RVGitSSHTagSignatureOutputParserResultItem& result() const {
        return result_;
    }

protected:
    [[nodiscard]] std::string_view parserName() const override;
    bool parseOutputLine(std::string_view line) override;

private:
    RVGitSSHTagSignatureOutputParserResultItem result_;
};

/// Runs `git verify-tag`. The signature is kept whether the verification succeeded or not; a bad
/// GPG signature, and a failure in which neither parser finds one, are no errors of the command.
class RVGIT_EXPORT RVGitVerifyTagCommand : public RVGitCommand {
public:
    /// The repository is required.
    explicit RVGitVerifyTagCommand(const std::shared_ptr<RVGitRepository>& repository);
    [[nodiscard]] static std::shared_ptr<RVGitVerifyTagCommand> gitVerifyTagCommandWithRepository(
        const std::shared_ptr<RVGitRepository>& repository, std::optional<std::string> refName);

    [[nodiscard]] const std::optional<std::string>& refName() const { return refName_; }
    void setRefName(std::optional<std::string> refName) { refName_ = std::move(refName); }
    /// The file that names the keys trusted for SSH signatures; absent: the configured one,
    /// without which git verifies no SSH signature.
    [[nodiscard]] const std::optional<std::string>& allowedSignersFilePath() const {
        return allowedSignersFilePath_;
    }
    void setAllowedSignersFilePath(std::optional<std::string> path) {
        allowedSignersFilePath_ = std::move(path);
    }

    /// What was found, after the run; null if nothing was. An SSH signature has neither name nor
    /// e-mail address, and the status "G", or "U" if the verification failed.
    [[nodiscard]] const std::shared_ptr<RVGitSignature>& signature() const { return signature_; }

    [[nodiscard]] static const RVGitErrorTable& gitErrorDefinitions();

protected:
    void gitCommandWillInitialize() override;
    bool gitCommandShouldHandleError(const RVError& error) override;
    RVUserInfo gitCommandWillUseErrorUserInfo(RVUserInfo userInfo) override;
    bool gitCommandWillParseOutput(RVErrorPlace error) override;

private:
    bool findGPGSignature();
    bool findSSHSignature(const char* status);

    std::optional<std::string> refName_;
    std::optional<std::string> allowedSignersFilePath_;
    std::shared_ptr<RVGitSignature> signature_;
};
