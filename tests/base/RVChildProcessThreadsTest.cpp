#include "RVGit/base/RVChildProcess.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstddef>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <stdexcept>
#include <thread>

#include "tests/support/RVTestFiles.h"
#include "tests/support/RVTestProcess.h"

namespace {

using std::chrono::milliseconds;
using Clock = std::chrono::steady_clock;

RVChildProcess::Launch shell(const std::string& script) {
    RVChildProcess::Launch launch;
    launch.path = "/bin/sh";
    launch.arguments = {"-c", script};
    launch.environment = RVEnvironment{{"PATH", "/usr/bin:/bin"}};
    return launch;
}

// Prints "early" and ends; what it leaves behind sees that, and then runs the script. Nothing has
// to be launched within the grace.
RVChildProcess::Launch childOutlivedBy(const std::string& script) {
    RVChildProcess::Launch launch;
    launch.path = findTestProgram("perl");
    launch.arguments = {"-e", R"(
        my $end = time + 60;
        sub pause { select undef, undef, undef, 0.005; exit if time > $end }
        my $parent = $$;
        if (fork) {
            syswrite STDOUT, "early";
            exit 8;
        }
        pause while getppid == $parent;
        )" + script};
    return launch;
}

struct Result {
    int launchError;
    int exitCode;
    std::string output;
    std::string error;
};

Result run(const RVChildProcess::Launch& launch) {
    RVChildProcess process;
    const int launchError = process.run(launch);
    return {launchError, process.exitCode(), std::string(process.standardOutput().view()),
            std::string(process.standardError().view())};
}

std::size_t numberOfEntries(const std::string& directory) {
    const std::filesystem::directory_iterator entries(directory);
    return static_cast<std::size_t>(std::distance(begin(entries), end(entries)));
}

// Counted without opening one.
std::size_t numberOfDescriptors() {
    std::size_t count = 0;
    for (int number = 0; number < 1024; ++number)
        count += fcntl(number, F_GETFD) >= 0;
    return count;
}

// Gone, or dead and waiting for a parent elsewhere.
bool isRunning(pid_t pid) {
    std::ifstream status("/proc/" + std::to_string(pid) + "/stat");
    std::string line;
    if (!std::getline(status, line))
        return false;
    return line[line.rfind(')') + 2] != 'Z';
}

bool happensSoon(const std::function<bool()>& condition) {
    for (int attempt = 0; attempt < 1000; ++attempt) {
        if (condition())
            return true;
        std::this_thread::sleep_for(milliseconds(10));
    }
    return false;
}

bool endsSoon(pid_t pid) {
    return happensSoon([pid] { return !isRunning(pid); });
}

std::string makeTemporaryDirectory() {
    std::string path = std::filesystem::temp_directory_path() / "rvgit-test-XXXXXX";
    if (!mkdtemp(path.data()))
        throw std::runtime_error("No temporary directory");
    return path;
}

TEST(RVChildProcessThreadsTest, APipeIsEnlargedAlsoForAChildThatWritesLittleAtATime) {
    // It writes only to an empty pipe, so that no read ever finds it full, and looks at its size.
    const Result result = run(shell(
        R"(exec perl -e 'my $size = 0;
        for (1 .. 1000) {
            syswrite STDOUT, "x" x 16384;
            my $left = pack "i", 1;
            for (1 .. 100000) { ioctl STDOUT, 0x541B, $left; last unless unpack "i", $left; }
            $size = fcntl STDOUT, 1032, 0;
            last if $size > 65536;
        }
        print STDERR $size')"));
    EXPECT_EQ(result.exitCode, 0);
#ifdef RVGIT_PORTABLE
    EXPECT_EQ(result.error, "65536") << "a size that nobody can ask for elsewhere";
#else
    EXPECT_EQ(result.error, "1048576");
#endif
    EXPECT_EQ(result.output, std::string(result.output.size(), 'x'));
}

TEST(RVChildProcessThreadsTest, KeepsBothOutputsApartAndTheExitCode) {
    const Result result = run(shell("printf out; printf err >&2; exit 3"));
    EXPECT_EQ(result.launchError, 0);
    EXPECT_EQ(result.exitCode, 3);
    EXPECT_EQ(result.output, "out");
    EXPECT_EQ(result.error, "err");
}

TEST(RVChildProcessThreadsTest, PassesArgumentsAndEnvironmentUnchanged) {
    RVChildProcess::Launch launch = shell("printf '%s|' \"$@\"; printf %s \"$VALUE\"");
    launch.arguments.insert(launch.arguments.end(), {"sh", "", "a b", "new\nline", "\xff", "$x"});
    launch.environment.setValue("VALUE", "two\nlines=\xc3\xa4");
    EXPECT_EQ(run(launch).output, "|a b|new\nline|\xff|$x|two\nlines=\xc3\xa4");
}

TEST(RVChildProcessThreadsTest, GivesTheChildNothingOfItsOwnEnvironment) {
    setenv("RVGIT_TEST_LEAK", "1", 1);
    const Result result = run(shell("printf '%s' \"${RVGIT_TEST_LEAK-none}\""));
    unsetenv("RVGIT_TEST_LEAK");
    EXPECT_EQ(result.output, "none");
}

TEST(RVChildProcessThreadsTest, RunsInTheWorkingDirectory) {
    RVChildProcess::Launch launch = shell("pwd");
    launch.workingDirectory = "/usr";
    EXPECT_EQ(run(launch).output, "/usr\n");
}

TEST(RVChildProcessThreadsTest, ARelativePathIsThatOfThisProcessAndNotOfTheWorkingDirectory) {
    const std::string before = std::filesystem::current_path();
    RVChildProcess::Launch launch = shell("pwd");
    launch.path = "sh";
    launch.workingDirectory = "/";
    std::filesystem::current_path("/bin");
    EXPECT_EQ(run(launch).output, "/\n");
    std::filesystem::current_path("/");
    launch.workingDirectory = "/bin";
    EXPECT_EQ(run(launch).launchError, ENOENT);
    std::filesystem::current_path(before);
}

TEST(RVChildProcessThreadsTest, StandardInputIsEmptyUnlessGiven) {
    EXPECT_EQ(run(shell("wc -c")).output, "0\n");
}

TEST(RVChildProcessThreadsTest, FeedsGivenBytesAndClosesThePipe) {
    RVChildProcess::Launch launch = shell("cat");
    launch.standardInput = RVStandardInput::data(std::string("a\0b\xff\n", 5));
    EXPECT_EQ(run(launch).output, std::string("a\0b\xff\n", 5));
}

TEST(RVChildProcessThreadsTest, EmptyGivenInputIsEndOfFile) {
    RVChildProcess::Launch launch = shell("wc -c");
    launch.standardInput = RVStandardInput::data({});
    EXPECT_EQ(run(launch).output, "0\n");
}

TEST(RVChildProcessThreadsTest, ReadsAFileAsStandardInput) {
    RVChildProcess::Launch launch = shell("head -n 1");
    launch.standardInput = RVStandardInput::file("/proc/self/comm");
    EXPECT_FALSE(run(launch).output.empty());
}

TEST(RVChildProcessThreadsTest, ReadsAnOpenFileAsStandardInputFromWhereItStands) {
    const int file = ::open("/proc/self/comm", O_RDONLY | O_CLOEXEC);
    ASSERT_GE(file, 0);
    {
        RVChildProcess::Launch launch = shell("head -n 1");
        launch.standardInput = RVStandardInput::openFile(file);
        EXPECT_EQ(launch.standardInput.descriptor(), file);
        EXPECT_FALSE(run(launch).output.empty());
        EXPECT_GE(::fcntl(file, F_GETFD), 0);
    }
    EXPECT_EQ(::fcntl(file, F_GETFD), -1);
}

TEST(RVChildProcessThreadsTest, AnInputThatIsNoRegularFileIsALaunchFailure) {
    RVChildProcess::Launch launch = shell("exit 0");
    for (const auto& [path, code] : std::vector<std::pair<std::string, int>>{
             {"/proc/self/exe", ELOOP}, {"/tmp", EISDIR}, {"/dev/zero", EINVAL}}) {
        launch.standardInput = RVStandardInput::file(path);
        EXPECT_EQ(run(launch).launchError, code) << path;
    }
}

TEST(RVChildProcessThreadsTest, AMissingInputFileIsALaunchFailure) {
    RVChildProcess::Launch launch = shell("exit 0");
    launch.standardInput = RVStandardInput::file("/nonexistent/input");
    EXPECT_EQ(run(launch).launchError, ENOENT);
}

TEST(RVChildProcessThreadsTest, AChildThatWritesAllBeforeItReadsDoesNotDeadlock) {
    constexpr std::size_t size = 100'000'000;
    RVChildProcess::Launch launch = shell(
        "head -c 100000000 /dev/zero; head -c 100000000 /dev/zero >&2; wc -c | tr -d ' \\n' >&2");
    launch.standardInput = RVStandardInput::data(std::string(size, 'x'));
    RVChildProcess process;
    ASSERT_EQ(process.run(launch), 0);
    EXPECT_EQ(process.exitCode(), 0);
    EXPECT_EQ(process.standardOutput().size(), size);
    ASSERT_EQ(process.standardError().size(), size + 9);
    EXPECT_EQ(process.standardError().view().substr(size), "100000000");
}

TEST(RVChildProcessThreadsTest, AChildThatDoesNotReadItsInputReportsItsExitCode) {
    RVChildProcess::Launch launch = shell("exit 7");
    launch.standardInput = RVStandardInput::data(std::string(1'000'000, 'x'));
    for (int attempt = 0; attempt < 200; ++attempt) {
        const Result result = run(launch);
        ASSERT_EQ(result.launchError, 0);
        ASSERT_EQ(result.exitCode, 7);
    }
}

TEST(RVChildProcessThreadsTest, ABrokenPipeLeavesTheSignalSettingsOfTheProcessAlone) {
    struct sigaction before;
    sigaction(SIGPIPE, nullptr, &before);
    RVChildProcess::Launch launch = shell("exec <&-; sleep 0.1");
    launch.standardInput = RVStandardInput::data(std::string(1'000'000, 'x'));
    EXPECT_EQ(run(launch).exitCode, 0);
    struct sigaction after;
    sigaction(SIGPIPE, nullptr, &after);
    EXPECT_EQ(before.sa_handler, after.sa_handler);
    sigset_t signals;
    pthread_sigmask(SIG_BLOCK, nullptr, &signals);
    EXPECT_EQ(sigismember(&signals, SIGPIPE), 0);
    sigpending(&signals);
    EXPECT_EQ(sigismember(&signals, SIGPIPE), 0);
}

TEST(RVChildProcessThreadsTest, AReaderThatGoesAwayDoesNotStopTheDraining) {
    RVChildProcess::Launch launch = shell("exec <&-; head -c 1000000 /dev/zero; exit 4");
    launch.standardInput = RVStandardInput::data(std::string(1'000'000, 'x'));
    const Result result = run(launch);
    EXPECT_EQ(result.exitCode, 4);
    EXPECT_EQ(result.output.size(), 1'000'000u);
}

TEST(RVChildProcessThreadsTest, AGrandchildOnThePipesDelaysTheEndByAGraceOnly) {
    const Clock::time_point start = Clock::now();
    const Result result = run(shell("sleep 30 & echo $!; exit 5"));
    EXPECT_LT(Clock::now() - start, milliseconds(10'000));
    EXPECT_EQ(result.exitCode, 5);
    kill(std::stoi(result.output), SIGKILL);
}

TEST(RVChildProcessThreadsTest, ARunThatWasNotCancelledEndsNobodyElse) {
    // What is left behind must live to answer; a signal that is under way would not let it.
    const std::string directory = makeTemporaryDirectory();
    for (const char* redirection : {"", " >/dev/null 2>&1"}) {
        RVChildProcess::Launch launch =
            shell("(while [ ! -e question ]; do sleep 0.01; done; mv question answer)" +
                  std::string(redirection) + " & exit 5");
        launch.workingDirectory = directory;
        EXPECT_EQ(run(launch).exitCode, 5);
        std::ofstream(directory + "/question").close();
        EXPECT_TRUE(happensSoon([&] { return std::filesystem::exists(directory + "/answer"); }));
        std::filesystem::remove(directory + "/answer");
    }
    std::filesystem::remove_all(directory);
}

TEST(RVChildProcessThreadsTest, WhatAGrandchildWritesWithinTheGraceIsKept) {
    EXPECT_EQ(run(childOutlivedBy("pause; syswrite STDOUT, 'late'")).output, "earlylate");
}

TEST(RVChildProcessThreadsTest, AHandlerThatTakesLongerThanTheGraceLosesNothing) {
    RVChildProcess process;
    // The last word is written while the handler is still busy with the one before.
    const std::string directory = makeTemporaryDirectory();
    const std::string begun = directory + "/begun";
    const std::string written = directory + "/written";
    const auto launch =
        childOutlivedBy("syswrite STDOUT, 'one'; pause until -e '" + begun +
                        "'; syswrite STDOUT, 'two'; open FILE, '>', '" + written + "'");
    std::string seen;
    ASSERT_EQ(
        process.run(launch,
                    [&](std::string_view bytes) {
                        seen += bytes;
                        if (seen != "earlyone")
                            return;
                        std::ofstream(begun).close();
                        EXPECT_TRUE(happensSoon([&] { return std::filesystem::exists(written); }));
                        std::this_thread::sleep_for(2 * RVChildProcess::outputGrace);
                    }),
        0);
    EXPECT_EQ(process.standardOutput().view(), "earlyonetwo");
    EXPECT_EQ(seen, "earlyonetwo");
    std::filesystem::remove_all(directory);
}

TEST(RVChildProcessThreadsTest, AChildKilledBySignalNHasTheExitCode128PlusN) {
    EXPECT_EQ(run(shell("kill -9 $$")).exitCode, 128 + SIGKILL);
    EXPECT_EQ(run(shell("kill -15 $$")).exitCode, 128 + SIGTERM);
}

TEST(RVChildProcessThreadsTest, TheChildHasNoTerminalToAskOn) {
    EXPECT_EQ(run(shell("(: < /dev/tty) 2>/dev/null && echo asked || echo none")).output, "none\n");
}

TEST(RVChildProcessThreadsTest, TheChildSeesTheThreeStandardDescriptorsAlone) {
    const int leaked = open("/dev/null", O_RDONLY);
    // One that close-on-exec would not catch.
    const int high = fcntl(leaked, F_DUPFD, 200);
    RVChildProcess::Launch launch = shell("");
    launch.path = "/bin/ls";
    launch.arguments = {"/proc/self/fd"};
    // The fourth is the directory that ls itself reads.
    EXPECT_EQ(run(launch).output, "0\n1\n2\n3\n");
    close(leaked);
    close(high);
}

TEST(RVChildProcessThreadsTest, TheChildHasDefaultSignals) {
    struct sigaction ignore {};
    struct sigaction before;
    ignore.sa_handler = SIG_IGN;
    sigaction(SIGINT, &ignore, &before);
    sigset_t blocked;
    sigset_t previous;
    sigemptyset(&blocked);
    sigaddset(&blocked, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &blocked, &previous);
    const std::string output = run(shell("grep -E '^Sig(Blk|Ign)' /proc/self/status")).output;
    pthread_sigmask(SIG_SETMASK, &previous, nullptr);
    sigaction(SIGINT, &before, nullptr);
    // Signals 32 and 33 are the C library's own, which leaves them ignored.
    EXPECT_THAT(output, testing::MatchesRegex("SigBlk:\t0+\nSigIgn:\t0*(0|180000000)\n"));
}

TEST(RVChildProcessThreadsTest, WorksInAProcessWithoutStandardDescriptors) {
    EXPECT_EXIT(
        {
            close(0);
            close(1);
            close(2);
            RVChildProcess::Launch launch = shell("cat; printf err >&2");
            launch.standardInput = RVStandardInput::data("in");
            const Result result = run(launch);
            _exit(result.exitCode == 0 && result.output == "in" && result.error == "err" ? 0 : 1);
        },
        testing::ExitedWithCode(0), "");
}

TEST(RVChildProcessThreadsTest, LaunchFailuresGiveTheSystemsReason) {
    RVChildProcess::Launch launch = shell("exit 0");
    launch.path = "/nonexistent/git";
    EXPECT_EQ(run(launch).launchError, ENOENT);
    launch.path = "/etc/passwd";
    EXPECT_EQ(run(launch).launchError, EACCES);
    launch = shell("exit 0");
    launch.workingDirectory = "/nonexistent";
    EXPECT_EQ(run(launch).launchError, ENOENT);
    launch.workingDirectory = "/etc/passwd";
    EXPECT_EQ(run(launch).launchError, ENOTDIR);
}

TEST(RVChildProcessThreadsTest, NothingThatHoldsANULIsLaunched) {
    using namespace std::string_literals;
    const auto changed = [](const std::function<void(RVChildProcess::Launch&)>& change) {
        RVChildProcess::Launch launch = shell("exit 0");
        change(launch);
        return launch;
    };
    const std::vector<RVChildProcess::Launch> launches = {
        changed([](auto& launch) { launch.path = "/bin/sh\0x"s; }),
        changed([](auto& launch) { launch.arguments.push_back("notes\0yz"s); }),
        changed([](auto& launch) { launch.arguments.push_back("\0"s); }),
        changed([](auto& launch) { launch.environment.setValue("NAME", "value\0"s); }),
        changed([](auto& launch) { launch.environment.setValue("NAME\0x"s, "value"); }),
        changed([](auto& launch) { launch.workingDirectory = "/usr\0x"s; }),
        changed(
            [](auto& launch) { launch.standardInput = RVStandardInput::file("/dev/null\0x"s); }),
    };
    for (std::size_t index = 0; index < launches.size(); ++index)
        EXPECT_EQ(run(launches[index]).launchError, EINVAL) << index;
    // What is read from a pipe is not cut, and may hold anything.
    EXPECT_EQ(run(changed([](auto& launch) {
                  launch.standardInput = RVStandardInput::data("\0"s);
              })).launchError,
              0);
}

TEST(RVChildProcessThreadsTest, TerminateEndsTheChildAndWhatItStarted) {
    RVChildProcess process;
    std::string output;
    ASSERT_EQ(process.run(shell("sleep 60 & echo $!; wait"),
                          [&](std::string_view bytes) {
                              output += bytes;
                              process.terminate();
                          }),
              0);
    EXPECT_EQ(process.exitCode(), 128 + SIGTERM);
    EXPECT_TRUE(endsSoon(std::stoi(output)));
}

TEST(RVChildProcessThreadsTest, TerminateEndsADescendantThatIgnoresSIGTERM) {
    // The child itself obeys, at once; what it has started does not, and holds no pipe.
    RVChildProcess process;
    std::string output;
    ASSERT_EQ(process.run(shell("sh -c \"trap '' TERM; echo \\$\\$; exec >/dev/null 2>&1; "
                                "while :; do sleep 0.1; done\" & wait"),
                          [&](std::string_view bytes) {
                              output += bytes;
                              process.terminate();
                          }),
              0);
    EXPECT_EQ(process.exitCode(), 128 + SIGTERM);
    const pid_t descendant = std::stoi(output);
    EXPECT_TRUE(endsSoon(descendant));
    kill(descendant, SIGKILL);
}

TEST(RVChildProcessThreadsTest, TerminateIsHeardOnAnotherThread) {
    RVChildProcess process;
    std::thread canceller([&] {
        std::this_thread::sleep_for(milliseconds(50));
        process.terminate();
    });
    ASSERT_EQ(process.run(shell("sleep 60")), 0);
    canceller.join();
    EXPECT_EQ(process.exitCode(), 128 + SIGTERM);
}

TEST(RVChildProcessThreadsTest, TerminateBeforeTheLaunchEndsTheChildAtOnce) {
    RVChildProcess process;
    process.terminate();
    ASSERT_EQ(process.run(shell("sleep 60")), 0);
    EXPECT_EQ(process.exitCode(), 128 + SIGTERM);
}

TEST(RVChildProcessThreadsTest, AChildThatIgnoresSIGTERMIsKilled) {
    RVChildProcess process;
    std::string output;
    ASSERT_EQ(process.run(shell("trap '' TERM; sleep 60 & echo $!; while :; do sleep 1; done"),
                          [&](std::string_view bytes) {
                              output += bytes;
                              process.terminate();
                          }),
              0);
    EXPECT_EQ(process.exitCode(), 128 + SIGKILL);
    EXPECT_TRUE(endsSoon(std::stoi(output)));
}

TEST(RVChildProcessThreadsTest, TerminateAfterTheEndDoesNothing) {
    RVChildProcess process;
    ASSERT_EQ(process.run(shell("exit 0")), 0);
    process.terminate();
    EXPECT_EQ(process.exitCode(), 0);
}

TEST(RVChildProcessThreadsTest, AnExceptionOfAHandlerEndsTheChildAsTerminateDoesAndIsKept) {
    RVChildProcess process;
    int calls = 0;
    // The child cleans up behind itself, which SIGKILL would not let it do, and goes on to write.
    ASSERT_EQ(
        process.run(shell("trap 'echo cleaned; exit 5' TERM; echo $$; while :; do sleep 0.01; "
                          "done"),
                    [&](std::string_view) {
                        ++calls;
                        throw std::runtime_error("no");
                    }),
        0);
    EXPECT_EQ(calls, 1) << "a handler that has thrown is not called again";
    EXPECT_EQ(process.exitCode(), 5);
    EXPECT_THAT(std::string(process.standardOutput().view()), testing::EndsWith("cleaned\n"));
    ASSERT_TRUE(process.handlerException());
    EXPECT_THROW(std::rethrow_exception(process.handlerException()), std::runtime_error);
    EXPECT_FALSE(isRunning(std::stoi(std::string(process.standardOutput().view()))));
}

TEST(RVChildProcessThreadsTest, AnExceptionOfAHandlerEndsAChildThatIgnoresSIGTERM) {
    RVChildProcess process;
    ASSERT_EQ(process.run(shell("trap '' TERM; echo started >&2; while :; do sleep 0.1; done"), {},
                          [&](std::string_view) { throw std::runtime_error("no"); }),
              0);
    EXPECT_EQ(process.exitCode(), 128 + SIGKILL);
    EXPECT_TRUE(process.handlerException());
}

TEST(RVChildProcessThreadsTest, ARunWithoutAnExceptionKeepsNone) {
    RVChildProcess process;
    ASSERT_EQ(process.run(shell("echo out"), [](std::string_view) {}), 0);
    EXPECT_FALSE(process.handlerException());
}

TEST(RVChildProcessThreadsTest, HandlersReceiveTheBytesAsTheyArrive) {
    RVChildProcess process;
    const std::string directory = makeTemporaryDirectory();
    RVChildProcess::Launch launch =
        shell("printf one; " + waitingLoopForShell("[ ! -e seen ]") + "; printf two");
    launch.workingDirectory = directory;
    std::vector<std::string> chunks;
    ASSERT_EQ(process.run(launch,
                          [&](std::string_view bytes) {
                              chunks.emplace_back(bytes);
                              std::ofstream(directory + "/seen").close();
                          }),
              0);
    std::filesystem::remove_all(directory);
    EXPECT_THAT(chunks, testing::ElementsAre("one", "two"));
    EXPECT_EQ(process.standardOutput().view(), "onetwo");
}

TEST(RVChildProcessThreadsTest, OneLineOf50MegabytesAndNULBytesArriveWhole) {
    const Result result = run(shell("head -c 50000000 /dev/zero"));
    EXPECT_EQ(result.output, std::string(50'000'000, '\0'));
}

TEST(RVChildProcessThreadsTest, AnUnknownExitStatusIsNotSuccess) {
    EXPECT_EXIT(
        {
            signal(SIGCHLD, SIG_IGN);
            const Result result = run(shell("printf out"));
            _exit(result.exitCode == RVChildProcess::unknownExitCode && result.output == "out" ? 0
                                                                                               : 1);
        },
        testing::ExitedWithCode(0), "");
}

// The process has no descriptor for its children from here on; 0 where that can be had.
int denyDescriptorsOfProcesses() {
    // Loads the number of the call; another one than that goes through; ENOSYS.
    sock_filter instructions[] = {
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_pidfd_open, 0, 1),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | ENOSYS),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
    };
    const sock_fprog program = {static_cast<unsigned short>(std::size(instructions)), instructions};
    return prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0
               ? prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program)
               : -1;
}

TEST(RVChildProcessThreadsTest, WithoutADescriptorOfTheChildItsExitIsFoundAllTheSame) {
    EXPECT_EXIT(
        {
            if (denyDescriptorsOfProcesses() != 0 || syscall(SYS_pidfd_open, getpid(), 0) >= 0)
                _exit(2);
            // The end of the outputs is not that of the child, nor the other way round.
            const Result early = run(shell("exec >&- 2>&-; sleep 0.2; exit 7"));
            const Result late = run(childOutlivedBy("pause; syswrite STDOUT, 'late'"));
            const Result killed = run(shell("kill -9 $$"));
            RVChildProcess cancelled;
            std::thread canceller([&] {
                std::this_thread::sleep_for(milliseconds(50));
                cancelled.terminate();
            });
            const int launchError = cancelled.run(shell("exec >&- 2>&-; sleep 60"));
            canceller.join();
            _exit(early.exitCode == 7 && late.exitCode == 8 && late.output == "earlylate" &&
                          killed.exitCode == 128 + SIGKILL && launchError == 0 &&
                          cancelled.exitCode() == 128 + SIGTERM
                      ? 0
                      : 1);
        },
        testing::ExitedWithCode(0), "");
}

// With 23 to 0 descriptors to spare, in that order, since a sanitizer wants some of its own when it
// first sees a type; false where a run does neither, or leaves one behind.
bool runsOrFailsWithFewDescriptors() {
    int ran = 0;
    int refused = 0;
    const int firstFree = open("/dev/null", O_RDONLY);
    close(firstFree);
    const std::size_t descriptors = numberOfDescriptors();
    rlimit limit;
    limit.rlim_max = 1024;
    for (int spare = 23; spare >= 0; --spare) {
        limit.rlim_cur = static_cast<rlim_t>(firstFree + spare);
        setrlimit(RLIMIT_NOFILE, &limit);
        RVChildProcess::Launch launch = shell("cat; exit 3");
        launch.standardInput = RVStandardInput::data("text");
        const Result result = run(launch);
        limit.rlim_cur = limit.rlim_max;
        setrlimit(RLIMIT_NOFILE, &limit);
        refused += result.launchError == EMFILE;
        ran += result.launchError == 0 && result.exitCode == 3 && result.output == "text";
        if (ran + refused != 24 - spare || numberOfDescriptors() != descriptors)
            return false;
    }
    return ran > 0 && refused > 0;
}

TEST(RVChildProcessThreadsTest, WithFewDescriptorsLeftItRunsOrTellsThatThereAreNone) {
    EXPECT_EXIT(_exit(runsOrFailsWithFewDescriptors() ? 0 : 1), testing::ExitedWithCode(0), "");
}

// In the same way; false where a child runs of which an output is not read or that cannot be ended.
bool childrenThatRunWithFewDescriptorsAreWhole() {
    int ran = 0;
    const int firstFree = open("/dev/null", O_RDONLY);
    close(firstFree);
    rlimit limit;
    limit.rlim_max = 1024;
    for (int spare = 23; spare >= 0; --spare) {
        limit.rlim_cur = static_cast<rlim_t>(firstFree + spare);
        setrlimit(RLIMIT_NOFILE, &limit);
        // For a redirection the shell would want descriptors of its own.
        const Result read = run(shell("printf out; no-such-program; exit 3"));
        RVChildProcess ended;
        ended.terminate();
        const int launchError = ended.run(shell("sleep 60; exit 9"));
        limit.rlim_cur = limit.rlim_max;
        setrlimit(RLIMIT_NOFILE, &limit);
        const bool isWhole = read.exitCode == 3 && read.output == "out" &&
                             read.error.find("no-such-program") != std::string::npos;
        if ((read.launchError == 0 ? !isWhole : read.launchError != EMFILE) ||
            (launchError == 0 ? ended.exitCode() != 128 + SIGTERM : launchError != EMFILE))
            return false;
        ran += isWhole;
    }
    return ran > 0;
}

TEST(RVChildProcessThreadsTest, WithFewDescriptorsLeftAChildRunsWithAllThatItNeedsOrNotAtAll) {
    EXPECT_EXIT(_exit(childrenThatRunWithFewDescriptorsAreWhole() ? 0 : 1),
                testing::ExitedWithCode(0), "");
}

TEST(RVChildProcessThreadsTest, TwoThousandRunsLeaveNoDescriptorThreadOrZombie) {
    ASSERT_EQ(run(shell("exit 0")).exitCode, 0);
    const std::size_t descriptors = numberOfEntries("/proc/self/fd");
    const std::size_t threads = numberOfEntries("/proc/self/task");
    RVChildProcess::Launch launch = shell("");
    launch.path = "/bin/true";
    launch.standardInput = RVStandardInput::data("input");
    for (int count = 0; count < 2000; ++count)
        ASSERT_EQ(run(launch).exitCode, 0);
    EXPECT_EQ(numberOfEntries("/proc/self/fd"), descriptors);
    EXPECT_EQ(numberOfEntries("/proc/self/task"), threads);
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1);
    EXPECT_EQ(errno, ECHILD);
}

TEST(RVChildProcessThreadsTest, ManyThreadsRunChildrenAtOnce) {
    std::vector<std::thread> threads;
    std::atomic<int> right = 0;
    for (int number = 0; number < 16; ++number)
        threads.emplace_back([&right, number] {
            for (int count = 0; count < 20; ++count) {
                const std::string text = std::to_string(number) + "." + std::to_string(count);
                RVChildProcess::Launch launch = shell("cat; exit 9");
                launch.standardInput = RVStandardInput::data(text);
                const Result result = run(launch);
                right += result.exitCode == 9 && result.output == text;
            }
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(right, 320);
}

}  // namespace
