#include "tests/support/RVFakeGit.h"

#include <utility>

#include "tests/support/RVTestFiles.h"

namespace {

/// The words of a script that give the answer, whose texts lie in the two files.
std::string answerScript(const std::string& filePrefix, const RVFakeGit::Answer& answer) {
    std::string script;
    if (!answer.standardOutput.empty()) {
        writeTestFile(filePrefix + ".output", answer.standardOutput);
        script += "cat " + quotedForShell(filePrefix + ".output") + "; ";
    }
    if (!answer.standardError.empty()) {
        writeTestFile(filePrefix + ".error", answer.standardError);
        script += "cat " + quotedForShell(filePrefix + ".error") + " >&2; ";
    }
    return script + "exit " + std::to_string(answer.exitCode);
}

}  // namespace

RVFakeGit::RVFakeGit(std::string directory, std::string realGitPath)
    : directory_(std::move(directory)),
      path_(directory_ + "/git"),
      realGitPath_(std::move(realGitPath)) {
    setVersion("git version 2.39.5");
}

void RVFakeGit::setVersion(std::string_view version) {
    setVersionAnswer({.standardOutput = std::string(version) + "\n"});
}

void RVFakeGit::setVersionAnswer(Answer answer) {
    versionAnswer_ = std::move(answer);
    writeScript();
}

void RVFakeGit::setAnswer(Answer answer) {
    otherAnswer_ = std::move(answer);
    writeScript();
}

void RVFakeGit::setAnswer(std::string_view word, Answer answer) {
    wordAnswers_.push_back({std::string(word), std::move(answer)});
    writeScript();
}

void RVFakeGit::passOtherCallsOn() {
    otherAnswer_.reset();
    writeScript();
}

void RVFakeGit::writeScript() const {
    const auto branch = [](std::string_view word, const std::string& commands) {
        return "for argument; do if [ \"$argument\" = " + quotedForShell(word) + " ]; then " +
               commands + "; fi; done\n";
    };
    std::string script = "#!/bin/sh\n";
    script += branch("--version", answerScript(directory_ + "/version", versionAnswer_));
    for (std::size_t index = 0; index < wordAnswers_.size(); ++index) {
        const auto& [word, answer] = wordAnswers_[index];
        script += branch(word, answerScript(directory_ + "/" + std::to_string(index), answer));
    }
    script += otherAnswer_ ? answerScript(directory_ + "/other", *otherAnswer_)
                           : "exec " + quotedForShell(realGitPath_) + " \"$@\"";
    writeTestFile(path_, script + "\n", 0755);
}
