#include "RVGit/command/RVGitActor.h"

std::shared_ptr<RVGitActor> RVGitActor::actor() {
    return std::make_shared<RVGitActor>();
}

std::shared_ptr<RVGitActor> RVGitActor::actorWithName(std::optional<std::string> name,
                                                      std::optional<std::string> email) {
    return std::make_shared<RVGitActor>(std::move(name), std::move(email));
}

std::optional<std::string> RVGitActor::displayNameWithName(
    const std::optional<std::string>& name, const std::optional<std::string>& email) {
    if (name && email)
        return *name + " <" + *email + ">";
    return name ? name : email;
}

std::optional<std::string> RVGitActor::identifierWithName(const std::optional<std::string>& name,
                                                          const std::optional<std::string>& email) {
    return displayNameWithName(name, email);
}

bool RVGitActor::isEqualToGitActor(const RVGitActor& other) const {
    return identifier() == other.identifier();
}
