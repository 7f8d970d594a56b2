#include "tests/objects/RVGitSigningTestCase.h"

#include <filesystem>
#include <stdexcept>

#include "tests/support/RVGitTestEnvironment.h"
#include "tests/support/RVTestFiles.h"

namespace {

std::string run(const std::vector<std::string>& commandLine,
                const std::optional<std::string>& standardInput = std::nullopt) {
    const auto result = runTestProcess(commandLine, "/", standardInput);
    if (result.exitCode != 0)
        throw std::runtime_error(testing::PrintToString(commandLine) + ": " + result.standardError);
    return result.standardOutput;
}

/// Beside the home directory: the path of GPG's socket must be short.
std::string signingHome() {
    return RVGitTestEnvironment::rootDirectory() + "/gpg-secret";
}
std::string verifyingHome() {
    return RVGitTestEnvironment::rootDirectory() + "/gpg-public";
}

std::string runGPG(const std::string& home, const std::vector<std::string>& arguments,
                   const std::optional<std::string>& standardInput = std::nullopt) {
    std::vector<std::string> commandLine = {findTestProgram("gpg"), "--homedir", home, "--batch",
                                            "--quiet"};
    commandLine.insert(commandLine.end(), arguments.begin(), arguments.end());
    return run(commandLine, standardInput);
}

/// The fields of the first line of that kind in the list of a key.
std::string fingerprintOfKey(const std::string& userID) {
    const std::string list = runGPG(signingHome(), {"--with-colons", "--list-keys", userID});
    const auto start = list.find("\nfpr:::::::::") + std::string("\nfpr:::::::::").size();
    return list.substr(start, list.find(':', start) - start);
}

std::string makeKey(const std::string& userID, const std::vector<std::string>& options = {},
                    const std::string& expiry = "never") {
    std::vector<std::string> arguments = options;
    arguments.insert(arguments.end(), {"--passphrase", "", "--quick-generate-key", userID,
                                       "ed25519", "sign", expiry});
    runGPG(signingHome(), arguments);
    return fingerprintOfKey(userID);
}

/// GPG writes the certificate beside each new key, with a colon that keeps it from being used by
/// mistake.
std::string revocationOfKey(const std::string& fingerprint) {
    std::string certificate =
        readTestFile(signingHome() + "/openpgp-revocs.d/" + fingerprint + ".rev");
    return certificate.substr(certificate.find(":-----BEGIN") + 1);
}

RVGitSigningTestCase::Keys makeKeys() {
    for (const std::string& home : {signingHome(), verifyingHome()}) {
        std::filesystem::create_directory(home);
        std::filesystem::permissions(home, std::filesystem::perms::owner_all);
    }
    // It is there when this returns. An agent that gpg starts itself must be within five seconds.
    run({findTestProgram("gpg-agent"), "--homedir", signingHome(), "--daemon"});
    // Old keys can sign on any day since.
    const std::vector<std::string> madeIn2020 = {"--faked-system-time", "20200101T000000"};
    RVGitSigningTestCase::Keys keys = {
        .good = makeKey("Marie Curie <marie@example.org>", madeIn2020),
        .expired = makeKey("Old Key <old@example.org>", madeIn2020, "2020-01-10"),
        .revoked = makeKey("Lost Key <lost@example.org>"),
        .missing = makeKey("Far Away <far@example.org>"),
        .nameless = makeKey("Nobody At All"),
    };
    runGPG(
        verifyingHome(), {"--import"},
        runGPG(signingHome(), {"--export", keys.good, keys.expired, keys.revoked, keys.nameless}));
    runGPG(verifyingHome(), {"--import"}, revocationOfKey(keys.revoked));
    runGPG(verifyingHome(), {"--import-ownertrust"}, keys.good + ":6:\n");
    return keys;
}

}  // namespace

void RVGitSigningTestCase::SetUpTestSuite() {
    (void)keys();
}

void RVGitSigningTestCase::TearDownTestSuite() {
    for (const std::string& home : {signingHome(), verifyingHome()})
        run({findTestProgram("gpgconf"), "--homedir", home, "--kill", "all"});
}

const RVGitSigningTestCase::Keys& RVGitSigningTestCase::keys() {
    static const Keys keys = makeKeys();
    return keys;
}

RVGitSigningTestCase::RVGitSigningTestCase() {
    setEnvironmentVariable("GNUPGHOME", verifyingHome());
}

std::string RVGitSigningTestCase::signingProgram(const std::string& day,
                                                 bool signatureExpires) const {
    std::string script = "#!/bin/sh\nexec gpg --homedir " + quotedForShell(signingHome());
    if (!day.empty())
        script += " --faked-system-time " + day + "T000000";
    if (signatureExpires)
        script += " --default-sig-expire 1d";
    return writeFile("signing-gpg", script + " \"$@\"\n", 0755);
}

void RVGitSigningTestCase::signTag(const std::string& name, const std::string& fingerprint,
                                   const std::string& day, bool signatureExpires) {
    gitInRepository({"-c", "gpg.program=" + signingProgram(day, signatureExpires), "tag",
                     "--local-user=" + fingerprint, "--message=Signed", name});
}

std::string RVGitSigningTestCase::signCommit(const std::string& fingerprint, const std::string& day,
                                             bool signatureExpires) {
    gitInRepository({"-c", "gpg.program=" + signingProgram(day, signatureExpires), "commit",
                     "--quiet", "--allow-empty", "--gpg-sign=" + fingerprint, "--message=Signed"});
    return gitInRepository({"rev-parse", "HEAD"});
}

std::string RVGitSigningTestCase::alteredObject(const std::string& type, const std::string& name,
                                                std::string_view text,
                                                std::string_view replacement) const {
    std::string object = git({"cat-file", type, name}, repositoryPath());
    object.replace(object.find(text), text.size(), replacement);
    std::string hash = git({"hash-object", "-t", type, "-w", "--stdin"}, repositoryPath(), object);
    hash.erase(hash.find_last_not_of('\n') + 1);
    return hash;
}

void RVGitSigningTestCase::alterTag(const std::string& name, std::string_view text,
                                    std::string_view replacement) {
    gitInRepository(
        {"update-ref", "refs/tags/" + name, alteredObject("tag", name, text, replacement)});
}

std::string RVGitSigningTestCase::alteredCommit(const std::string& revision, std::string_view text,
                                                std::string_view replacement) const {
    return alteredObject("commit", revision, text, replacement);
}

std::string RVGitSigningTestCase::makeSSHKey(const std::string& name) const {
    const std::string path = scratchPath(name);
    run({findTestProgram("ssh-keygen"), "-q", "-t", "ed25519", "-N", "", "-C", name, "-f", path});
    return path;
}

std::string RVGitSigningTestCase::fingerprintOfSSHKey(const std::string& path) const {
    // "256 SHA256:... comment (ED25519)"
    const std::string line = run({findTestProgram("ssh-keygen"), "-l", "-f", path});
    const auto start = line.find(' ') + 1;
    return line.substr(start, line.find(' ', start) - start);
}

void RVGitSigningTestCase::signTagWithSSH(const std::string& name, const std::string& keyPath) {
    gitInRepository({"-c", "gpg.format=ssh", "-c", "user.signingKey=" + keyPath, "tag", "--sign",
                     "--message=Signed", name});
}

std::string RVGitSigningTestCase::signCommitWithSSH(const std::string& keyPath) {
    gitInRepository({"-c", "gpg.format=ssh", "-c", "user.signingKey=" + keyPath, "commit",
                     "--quiet", "--allow-empty", "--gpg-sign", "--message=Signed"});
    return gitInRepository({"rev-parse", "HEAD"});
}

std::string RVGitSigningTestCase::writeAllowedSigners(
    const std::vector<std::string>& keyPaths) const {
    std::string lines;
    for (const std::string& path : keyPaths)
        lines += "marie@example.org " + readFile(path + ".pub");
    return writeFile("allowed-signers", lines);
}
