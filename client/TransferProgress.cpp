#include "client/TransferProgress.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>

#include "RVGit/command/RVGitCommand.h"
#include "RVGit/command/RVGitCommandProgress.h"
#include "client/Terminal.h"

namespace {

// "Receiving objects:  45% (9/20), 1.20 MiB | 3.40 MiB/s", from this side or the other.
std::string phaseIn(std::string line) {
    constexpr std::string_view remote = "remote: ";
    if (line.starts_with(remote))
        line.erase(0, remote.size());
    const auto percent = line.find('%');
    const bool isPhase = percent != std::string::npos && line.find(": ") < percent;
    return isPhase ? printable(line) : std::string();
}

std::size_t widthOfTerminal() {
    winsize size{};
    const bool known = ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 1;
    return known ? size.ws_col : 80;
}

}  // namespace

TransferProgress::TransferProgress(RVGitCommand& command)
    : command_(command), isOnTerminal_(isatty(STDERR_FILENO) == 1) {
    if (isOnTerminal_)
        command_.setProgressHandler([this](RVGitCommandProgress& progress) {
            // A phase that has ended stands above the line in progress.
            const auto lines = progress.outputBuffer();
            for (auto line = lines.rbegin(); line != lines.rend(); ++line)
                if (const auto text = phaseIn(*line); !text.empty())
                    return show(text);
        });
}

TransferProgress::~TransferProgress() {
    command_.setProgressHandler({});
    if (shownLength_ == 0)
        return;
    show("");
    std::fputc('\r', stderr);
}

// Blanks, and no escape sequences: any terminal knows them.
void TransferProgress::show(const std::string& text) {
    const std::string shown = text.substr(0, widthOfTerminal() - 1);
    const std::string blanks(shownLength_ - std::min(shownLength_, shown.size()), ' ');
    std::fprintf(stderr, "\r%s%s", shown.c_str(), blanks.c_str());
    std::fflush(stderr);
    shownLength_ = shown.size();
}
