// A clone that takes a while, as somebody at a terminal has it: with Ctrl-C in the middle, and then
// once more to its end.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <random>
#include <regex>
#include <string>
#include <vector>

#include "tests/remotes/RVGitTransferTestCase.h"

namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;

constexpr std::size_t megabyte = 1 << 20;

/// 48 MB; `RVGIT_TEST_MEGABYTES` gives another size.
class RvgitLargeCloneSlowTest : public RVGitTransferTestCase {
protected:
    struct Ending {
        int exitCode = -1;
        std::string output;
    };

    RvgitLargeCloneSlowTest() {
        const char* number = std::getenv("RVGIT_TEST_MEGABYTES");
        const std::size_t size = number ? std::strtoul(number, nullptr, 10) : 48;
        const std::string path = initBareRepository("served/a.git");
        // Random bytes: to compress or compare them is of no use.
        for (const char* setting : {"core.compression", "pack.window"})
            git({"config", setting, "0"}, path);
        std::mt19937_64 random(size);
        for (std::size_t done = 0; done < size; done += 24) {
            std::string stream =
                "commit refs/heads/main\ncommitter A <a@b> 1577934245 +0000\ndata 0\n";
            if (done > 0)
                stream += "from refs/heads/main^0\n";
            for (std::size_t index = done; index < std::min(size, done + 24); ++index) {
                std::string bytes(megabyte, '\0');
                for (std::size_t at = 0; at < megabyte; at += sizeof(std::uint64_t)) {
                    const std::uint64_t value = random();
                    std::memcpy(&bytes[at], &value, sizeof value);
                }
                stream += "M 100644 inline file-" + std::to_string(index) + "\ndata " +
                          std::to_string(bytes.size()) + "\n" + bytes + "\n";
            }
            git({"fast-import", "--quiet"}, path, stream);
        }
    }

    /// At a terminal of its own. Ctrl-C is typed there as soon as so much has come.
    Ending rvgitAtTerminal(std::vector<std::string> words, int percentBeforeCtrlC) const {
        words.insert(words.begin(), RVGIT_CLIENT);
        std::vector<char*> arguments;
        for (std::string& word : words)
            arguments.push_back(word.data());
        arguments.push_back(nullptr);
        int terminal = -1;
        const pid_t child = ::forkpty(&terminal, nullptr, nullptr, nullptr);
        if (child == 0) {
            if (::chdir(scratchDirectory().c_str()) == 0)
                ::execv(RVGIT_CLIENT, arguments.data());
            ::_exit(127);
        }
        Ending ending;
        static const std::regex progress("Receiving objects: +([0-9]+)%");
        bool typed = false;
        char bytes[4096];
        for (ssize_t count; (count = ::read(terminal, bytes, sizeof bytes)) > 0;) {
            ending.output.append(bytes, static_cast<std::size_t>(count));
            const std::string tail = ending.output.substr(
                ending.output.size() - std::min<std::size_t>(ending.output.size(), 200));
            for (std::sregex_iterator match(tail.begin(), tail.end(), progress), end; match != end;
                 ++match)
                if (!typed && percentBeforeCtrlC > 0 &&
                    std::stoi((*match)[1]) >= percentBeforeCtrlC)
                    typed = ::write(terminal, "\x03", 1) == 1;
        }
        ::close(terminal);
        EXPECT_EQ(typed, percentBeforeCtrlC > 0) << ending.output;
        int status = 0;
        EXPECT_EQ(::waitpid(child, &status, 0), child);
        if (WIFEXITED(status))
            ending.exitCode = WEXITSTATUS(status);
        return ending;
    }
    /// What somebody sees at the end: progress lines are overwritten.
    [[nodiscard]] static std::string lastLines(const std::string& output) {
        return output.substr(output.rfind('%') == std::string::npos ? 0 : output.rfind('%'));
    }

    void expectWhole(const std::string& name) const {
        EXPECT_EQ(git({"rev-parse", "HEAD"}, name), git({"rev-parse", "main"}, servedPath()));
        EXPECT_EQ(git({"status", "--porcelain"}, name), "");
        // Every byte is looked at.
        const auto checked = runGit({"fsck", "--no-progress", "--strict"}, name);
        EXPECT_EQ(checked.exitCode, 0) << checked.standardError;
    }

    void expectCtrlCAndAnotherTry(Protocol protocol) {
        const std::string address = url(protocol);
        // Made by the clone: gone with it.
        Ending ending = rvgitAtTerminal({"clone", address, "new"}, 30);
        EXPECT_EQ(ending.exitCode, 130) << lastLines(ending.output);
        EXPECT_THAT(lastLines(ending.output), Not(HasSubstr("Cloned")));
        EXPECT_TRUE(launchedProcessesEnd());
        EXPECT_FALSE(fileExists("new"));

        // There before: there afterwards, and empty.
        makeDirectory("empty");
        ending = rvgitAtTerminal({"clone", address, "empty"}, 60);
        EXPECT_EQ(ending.exitCode, 130) << lastLines(ending.output);
        EXPECT_TRUE(launchedProcessesEnd());
        EXPECT_TRUE(std::filesystem::is_directory(scratchPath("empty")));
        EXPECT_TRUE(std::filesystem::is_empty(scratchPath("empty")));

        for (const char* name : {"new", "empty"}) {
            ending = rvgitAtTerminal({"clone", address, name}, 0);
            EXPECT_EQ(ending.exitCode, 0) << lastLines(ending.output);
            EXPECT_THAT(ending.output, HasSubstr("Receiving objects: 100%"));
            EXPECT_THAT(ending.output, EndsWith("Cloned into " + std::string(name) + "\r\n"));
            expectWhole(name);
        }
    }
};

TEST_F(RvgitLargeCloneSlowTest, OverSSH) {
    expectCtrlCAndAnotherTry(Protocol::SSH);
}

TEST_F(RvgitLargeCloneSlowTest, OverHTTPS) {
    expectCtrlCAndAnotherTry(Protocol::HTTPS);
}

}  // namespace
