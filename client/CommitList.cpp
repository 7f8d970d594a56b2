#include "client/CommitList.h"

#include "RVGit/command/RVGitActor.h"
#include "RVGit/history/RVGitCommitGraphDrawer.h"
#include "RVGit/objects/RVGitSignature.h"
#include "RVGit/repository/RVGitRef.h"
#include "client/GraphText.h"

namespace {

constexpr std::size_t authorWidth = 18;

std::string decorations(const RVGitCommit& commit, const Output& output) {
    if (!commit.refs())
        return {};
    std::string names;
    for (const auto& ref : *commit.refs()) {
        const Colour colour = ref->isTagRefType()            ? Colour::Yellow
                              : ref->isRemoteBranchRefType() ? Colour::Red
                                                             : Colour::Green;
        names += (names.empty() ? "" : ", ") + output.in(colour, printable(ref->refName()));
    }
    return "(" + names + ") ";
}

std::string firstLine(const std::optional<std::string>& text) {
    return text ? printable(text->substr(0, text->find('\n'))) : "";
}

}  // namespace

void printCommits(const RVGitCommit::List& commits, const CommitListStyle& style, Output& output) {
    RVGitCommitGraphDrawer drawer;
    drawer.setDrawsFirstParentOnly(style.firstParentOnly);
    for (const auto& commit : commits) {
        std::string connector;
        if (style.drawsGraph) {
            const GraphText graph(*drawer.drawGraphForCommit(commit), output);
            output << graph.commitLine << " ";
            connector = graph.connectorLine;
        }
        const auto author = commit->author();
        const std::string name =
            author ? printable(author->name().value_or(author->email().value_or(""))) : "";
        output << output.in(Colour::Yellow, commit->shortObjectHash().value_or("")) << " "
               << dateText(commit->authorDate()) << " "
               << output.in(Colour::Cyan, padded(name, authorWidth)) << " ";
        if (style.showsSignatures) {
            const auto signature = commit->signature();
            output << "[" << (signature ? signature->status().value_or("-") : "-") << "] ";
        }
        output << decorations(*commit, output) << firstLine(commit->subject()) << "\n";
        if (!connector.empty())
            output << connector << "\n";
    }
}
