#include "RVGit/remotes/RVGitRemote.h"
#include "RVGit/repository/RVGitRepository.h"
#include "client/Commands.h"

namespace {

using Repository = std::shared_ptr<RVGitRepository>;

void printRemotes(const Repository& repository, Output& output) {
    std::optional<RVError> error;
    const auto remotes = RVGitRemote::allRemotesForRepository(repository, &error);
    if (!remotes)
        throw Failure(error);
    for (const auto& remote : *remotes) {
        const std::size_t count = remote->branches() ? remote->branches()->size() : 0;
        const auto downstreamURL =
            remote->downstreamURL() ? remote->downstreamURL() : remote->URL();
        output << output.in(Colour::Green, printable(remote->name()))
               << (remote->isSVNRemote() ? " (Subversion)" : "") << "  "
               << printable(downstreamURL.value_or("")) << "  " << std::to_string(count)
               << (count == 1 ? " branch" : " branches") << "\n";
        if (remote->upstreamURL() && remote->upstreamURL() != downstreamURL)
            output << "  pushes to " << printable(*remote->upstreamURL()) << "\n";
    }
}

}  // namespace

void runRemote(const Repository& repository, Arguments arguments, Output& output) {
    const std::string action = arguments.next().value_or("list");
    std::vector<std::string> words = arguments.rest();
    const bool pushes = action == "set-url" && !words.empty() && words.front() == "--push";
    if (pushes)
        words.erase(words.begin());
    const std::size_t count = action == "list" ? 0 : action == "remove" ? 1 : 2;
    for (const std::string& word : words)
        if (word.starts_with('-'))
            throw UsageError("remote " + action + " has no option " + word);
    if (words.size() < count)
        throw UsageError("remote " + action + " needs a name" + (count > 1 ? " and another" : ""));
    if (words.size() > count)
        throw UsageError("remote " + action + " takes no " + words[count]);

    std::optional<RVError> error;
    bool done = false;
    if (action == "list")
        return printRemotes(repository, output);
    if (action == "add")
        done = RVGitRemote::createRemoteWithName(words[0], words[1], repository, &error) != nullptr;
    else if (action == "rename")
        done = RVGitRemote::renameRemoteWithName(words[0], words[1], repository, &error);
    else if (action == "remove")
        done = RVGitRemote::deleteRemoteWithName(words[0], repository, &error);
    else if (action == "set-url")
        done = pushes ? RVGitRemote::setPushURL(words[1], words[0], repository, &error)
                      : RVGitRemote::setURL(words[1], words[0], repository, &error);
    else
        throw UsageError("remote has no " + action);
    if (!done && !error)
        throw UsageError("there is no remote " + words[0]);
    if (!done)
        throw Failure(error);
}
