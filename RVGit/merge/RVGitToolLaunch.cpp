#include "RVGit/merge/RVGitToolLaunch.h"

#include <csignal>
#include <exception>
#include <utility>

#include "RVGit/base/RVOperationQueue.h"
#include "RVGit/command/RVGitCommand.h"
#include "RVGit/command/RVGitError.h"

namespace {

/// Stands behind a command in its serial queue, and so runs when the command has finished, however
/// it has: a command's own handler is not called for one that was never launched. It cannot be
/// cancelled itself.
class ToolCompletion : public RVOperation {
public:
    ToolCompletion(std::shared_ptr<RVGitCommand> command, RVGitToolCompletionHandler handler)
        : command_(std::move(command)), handler_(std::move(handler)) {
        command_->setCompletionHandler([ended = ended_](const RVGitCommand&) { *ended = true; });
    }

    void cancel() override {}

protected:
    void main() override {
        std::optional<RVError> error;
        try {
            command_->waitUntilFinished();
            error = command_->error();
        } catch (const std::exception& exception) {
            error = gitErrorWithCode(RVGitRVGitGenericError,
                                     {{RVGitErrorOutputErrorKey, exception.what()}});
        }
        const bool neverRan = !*ended_ && !error;
        const int exitCode = neverRan ? 128 + SIGTERM : command_->exitCode();
        if (const auto handler = std::exchange(handler_, nullptr))
            handler(exitCode, error);
    }

private:
    std::shared_ptr<RVGitCommand> command_;
    RVGitToolCompletionHandler handler_;
    /// Written and read on the queue's thread, one after the other.
    std::shared_ptr<bool> ended_ = std::make_shared<bool>(false);
};

}  // namespace

void rvgit::launchToolCommand(const std::shared_ptr<RVGitCommand>& command, RVOperationQueue& queue,
                              RVGitToolCompletionHandler handler) {
    auto completion = std::make_shared<ToolCompletion>(command, std::move(handler));
    queue.addOperation(command);
    queue.addOperation(std::move(completion));
}
