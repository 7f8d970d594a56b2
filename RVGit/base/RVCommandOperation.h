#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "RVGit/base/RVChildProcess.h"
#include "RVGit/base/RVError.h"
#include "RVGit/base/RVExport.h"
#include "RVGit/base/RVOperation.h"
#include "RVGit/base/RVStandardInput.h"
#include "RVGit/base/RVTypes.h"

class RVCommandOperation;

/// Told of the course of a command, on the operation's thread. All operations are optional.
class RVGIT_EXPORT RVCommandOperationDelegate {
public:
    virtual ~RVCommandOperationDelegate() = default;
    virtual void commandDidFailToLaunch(RVCommandOperation&) {}
    virtual void commandDidTerminate(RVCommandOperation&) {}
    virtual void commandDidReceiveStandardOutputData(RVCommandOperation&, std::string_view) {}
    virtual void commandDidReceiveStandardErrorData(RVCommandOperation&, std::string_view) {}
};

/// An operation that runs one child process. Fields are set before it is run; results are read
/// after it has finished. All hooks run on the operation's thread.
class RVGIT_EXPORT RVCommandOperation : public RVOperation {
public:
    explicit RVCommandOperation(std::string launchPath,
                                std::optional<std::string> workingDirectory = std::nullopt,
                                std::vector<std::string> arguments = {},
                                RVCommandOperationDelegate* delegate = nullptr);
    ~RVCommandOperation() override;

    [[nodiscard]] const std::string& launchPath() const { return launch_.path; }
    /// Absent: that of this process.
    [[nodiscard]] const std::optional<std::string>& workingDirectory() const {
        return launch_.workingDirectory;
    }
    void setWorkingDirectory(std::optional<std::string> path) {
        launch_.workingDirectory = std::move(path);
    }
    /// Without the executable itself.
    [[nodiscard]] const std::vector<std::string>& arguments() const { return launch_.arguments; }
    void setArguments(std::vector<std::string> arguments) {
        launch_.arguments = std::move(arguments);
    }
    /// The child's environment. Until it is set it is that of this process when the child is
    /// launched, without LANGUAGE, which would beat LC_ALL.
    [[nodiscard]] RVEnvironment environment() const { return launch_.environment.variables(); }
    void setEnvironment(RVEnvironment environment) { launch_.environment = std::move(environment); }
    /// Absent where there is no such variable.
    [[nodiscard]] std::optional<std::string> valueForEnvironmentVariable(
        std::string_view name) const {
        return launch_.environment.value(name);
    }
    /// An absent value takes the variable away.
    void setValueForEnvironmentVariable(std::optional<std::string> value, const std::string& name) {
        launch_.environment.setValue(name, std::move(value));
    }
    /// Not owned; must live as long as the command runs.
    void setDelegate(RVCommandOperationDelegate* delegate) { delegate_ = delegate; }
    void setStandardInput(RVStandardInput input) { launch_.standardInput = std::move(input); }

    /// The exit status, or 128 + N for a child that was killed by signal N. Valid from
    /// commandDidTerminate() on.
    [[nodiscard]] int exitCode() const { return process_.exitCode(); }
    /// The errno value with which the launch failed; 0 where it did not, or there was none.
    [[nodiscard]] int launchErrorNumber() const { return launchErrorNumber_; }
    /// All bytes of that stream so far. The view holds while the command lives, once the child
    /// has exited.
    [[nodiscard]] std::string_view standardOutputData() const {
        return process_.standardOutput().view();
    }
    [[nodiscard]] std::string_view standardErrorData() const {
        return process_.standardError().view();
    }
    /// The same bytes, for whoever keeps views into them beyond the life of the command.
    [[nodiscard]] std::shared_ptr<const RVDataBuffer> standardOutputBuffer() const {
        return process_.sharedStandardOutput();
    }

    /// The executable and the arguments as a shell would take them, for display.
    [[nodiscard]] std::string commandCall() const;

    /// The stored record; absent if there is none.
    [[nodiscard]] const std::optional<RVError>& error() const { return error_; }
    void setError(std::optional<RVError> error) { error_ = std::move(error); }

    /// Ends a running child, which then still reaches commandDidTerminate().
    void cancel() override;

    // An exception of a hook or of the delegate that is called while the child runs ends the child
    // as cancel() does, with a grace to clean up. The command then still reaches
    // commandDidTerminate(), without being cancelled, and the exception whoever waits for it. That
    // is the first one, where more than one is thrown.

protected:
    /// Called once, immediately before the launch; may change the fields. With an error stored
    /// there is no launch; an exception leaves the child unlaunched, too, and reaches whoever
    /// waits.
    virtual void commandWillExecute() {}
    /// Called instead of commandDidTerminate() when the process could not start, with errno's
    /// value.
    virtual void commandDidFailToLaunch(int errorNumber);
    /// Called once after the child has exited and both streams are drained.
    virtual void commandDidTerminate() {}
    /// Called while the child runs, each time that standardOutputData() has grown.
    virtual void commandDidReceiveStandardOutput(std::string_view bytes);
    virtual void commandDidReceiveStandardError(std::string_view bytes);

    /// Whether a hook or the delegate has thrown while the child ran.
    [[nodiscard]] bool handlerDidThrow() const { return process_.handlerException() != nullptr; }

    /// Stores the record; the operation finishes when the calling hook returns.
    void finishWithError(RVError error) { error_ = std::move(error); }

    void main() override;

private:
    RVChildProcess::Launch launch_;
    RVCommandOperationDelegate* delegate_;
    std::optional<RVError> error_;
    RVChildProcess process_;
    int launchErrorNumber_ = 0;
};
