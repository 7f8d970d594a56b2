#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// A git that says what the test wants it to say: for versions and outputs that the real one
/// cannot be brought to give. It reads nothing from its standard input and waits for nothing.
///
///     RVFakeGit fake = fakeGit();
///     fake.setVersion("git version 2.0.5");
///     fake.setAnswer({.standardError = "fatal: bad object\n", .exitCode = 128});
class RVFakeGit {
public:
    struct Answer {
        std::string standardOutput = {};
        std::string standardError = {};
        int exitCode = 0;
    };

    /// Writes the script "git" into the directory, which it makes. It answers "--version" with
    /// "git version 2.39.5" and everything else with nothing and exit code 0.
    RVFakeGit(std::string directory, std::string realGitPath);

    [[nodiscard]] const std::string& path() const { return path_; }

    /// What any call with the argument "--version" prints; a newline is added.
    void setVersion(std::string_view version);
    /// The same with full control: "--version" may fail, or print nothing.
    void setVersionAnswer(Answer answer);
    /// The answer to everything for which no other has been set.
    void setAnswer(Answer answer);
    /// The answer to any call that has this word among its arguments. The first word set wins.
    void setAnswer(std::string_view word, Answer answer);
    /// Calls for which no answer has been set go to the real git.
    void passOtherCallsOn();

private:
    struct WordAnswer {
        std::string word;
        Answer answer;
    };

    void writeScript() const;

    std::string directory_;
    std::string path_;
    std::string realGitPath_;
    Answer versionAnswer_;
    std::vector<WordAnswer> wordAnswers_;
    /// Absent: the real git answers.
    std::optional<Answer> otherAnswer_ = Answer{};
};
