#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "RVGit/base/RVString.h"
#include "RVGit/objects/RVGitSignature.h"
#include "RVGit/objects/RVGitVerifyTagCommand.h"

// Whatever the bytes: texts are UTF-8, GPG's name comes with its address and a status, and SSH's
// fingerprint is one word.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view output(reinterpret_cast<const char*>(data), size);

    RVGitGPGTagSignatureOutputParser gpg(output);
    (void)gpg.parse();
    const RVGitGPGTagSignatureOutputParserResultItem& found = gpg.result();
    if (found.username.has_value() != found.email.has_value() || (found.username && !found.status))
        std::abort();
    for (const auto& text : {found.username, found.email, found.fingerprint, found.status}) {
        if (text && !isValidUTF8(*text))
            std::abort();
    }
    if (RVGitSignature::signatureStatusFromTagSignatureStatus(found.status.value_or("")).size() !=
        1)
        std::abort();

    RVGitSSHTagSignatureOutputParser ssh(output);
    const bool parsed = ssh.parse();
    const auto& fingerprint = ssh.result().fingerprint;
    if (fingerprint && (!parsed || fingerprint->find(' ') != std::string::npos))
        std::abort();
    return 0;
}
