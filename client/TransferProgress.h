#pragma once

#include <cstddef>
#include <string>

class RVGitCommand;

/// One line on the terminal that shows how far a transfer has come: its phase, percent, and bytes
/// as git tells them. Nothing where standard error is no terminal. The line is gone when this is.
class TransferProgress {
public:
    /// The command must not run any more when this goes.
    explicit TransferProgress(RVGitCommand& command);
    ~TransferProgress();
    TransferProgress(const TransferProgress&) = delete;
    TransferProgress& operator=(const TransferProgress&) = delete;

private:
    void show(const std::string& text);

    RVGitCommand& command_;
    bool isOnTerminal_;
    std::size_t shownLength_ = 0;
};
