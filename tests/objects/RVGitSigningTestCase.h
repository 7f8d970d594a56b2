#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "tests/support/RVGitRepositoryTestCase.h"

/// Base of tests with real signatures. The GPG keys are made once for the process: a test signs
/// with a keyring of secret keys and verifies with one of public keys, in which one key has been
/// revoked and another is missing. Of the others only the good one is trusted.
class RVGitSigningTestCase : public RVGitRepositoryTestCase {
public:
    /// Fingerprints. The good and the expired key were made on 2020-01-01; the latter held until
    /// 2020-01-10.
    struct Keys {
        std::string good;
        std::string expired;
        std::string revoked;
        std::string missing;
        /// Its user ID has no e-mail address.
        std::string nameless;
    };

protected:
    static void SetUpTestSuite();
    static void TearDownTestSuite();

    [[nodiscard]] static const Keys& keys();

    /// The library's commands see the keyring with which a test verifies.
    RVGitSigningTestCase();

    /// Makes a tag at HEAD, signed with the GPG key; on another day ("20200102") than today, and
    /// with a signature that expires a day later, if asked for.
    void signTag(const std::string& name, const std::string& fingerprint,
                 const std::string& day = {}, bool signatureExpires = false);
    /// The same for a new commit on the branch; returns its hash.
    std::string signCommit(const std::string& fingerprint, const std::string& day = {},
                           bool signatureExpires = false);
    /// Replaces a text within the tag object, which its signature then does not fit any more.
    void alterTag(const std::string& name, std::string_view text, std::string_view replacement);
    /// Such a copy of a commit; returns its hash.
    std::string alteredCommit(const std::string& revision, std::string_view text,
                              std::string_view replacement) const;

    /// Makes an SSH key and returns the path of its private half.
    std::string makeSSHKey(const std::string& name) const;
    /// "SHA256:..." of a key.
    std::string fingerprintOfSSHKey(const std::string& path) const;
    void signTagWithSSH(const std::string& name, const std::string& keyPath);
    std::string signCommitWithSSH(const std::string& keyPath);
    /// A file that trusts the keys as "marie@example.org"; returns its path.
    std::string writeAllowedSigners(const std::vector<std::string>& keyPaths) const;

private:
    /// A program that signs with GPG on the day.
    std::string signingProgram(const std::string& day, bool signatureExpires) const;
    /// Writes a copy of the object in which the text is replaced; returns its hash.
    std::string alteredObject(const std::string& type, const std::string& name,
                              std::string_view text, std::string_view replacement) const;
};
