#include "RVGit/objects/RVGitObjectReference.h"

#include "RVGit/command/RVGitErrorKeys.h"

void rvgit::addObjectReferenceToErrorUserInfo(const std::string& objectReference,
                                              RVUserInfo& userInfo) {
    userInfo.insert_or_assign(RVGitObjectReferenceErrorKey, objectReference);
    const auto colon = objectReference.find(':');
    if (colon == std::string::npos) {
        userInfo.insert_or_assign(RVGitObjectHashErrorKey, objectReference);
    } else if (objectReference.find(':', colon + 1) == std::string::npos) {
        userInfo.insert_or_assign(RVGitRevisionErrorKey, objectReference.substr(0, colon));
        userInfo.insert_or_assign(RVGitFilePathErrorKey, objectReference.substr(colon + 1));
    }
}
