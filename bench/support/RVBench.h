#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <vector>

class RVBenchTable;

/// The frame of a benchmark program. A whole one:
///
///     int main(int argc, char** argv) {
///         RVBench bench(argc, argv);
///         RVBenchTable table(bench, "history");
///         table.add("bare", [&] { return runBare({"git", "log"}, path).outputBytes; });
///         table.add("library", [&] { return listHistory(path); });
///         table.run(11);
///         table.bound("library", "bare", 1.10);
///         table.boundPeakMemory("library", 2.5 * bytesPrinted);
///         return bench.finish();
///     }
///
/// Peaks of memory and counted instructions come from a process of their own: the same program,
/// called with "--case TABLE/CASE", which runs that one case once. In such a process run() runs the
/// case and exits, so what stands before run() should be cheap, and stand in the cases if not.
///
/// Options: --repository PATH, --rounds N, or --once alone: one round, to see that it runs,
/// whatever it measures. The system's and the user's configuration of git are left out of the
/// process's environment.
class RVBench {
public:
    RVBench(int argc, char** argv);

    /// The repository named by --repository or RVGIT_BENCH_REPOSITORY, else the one that is made
    /// of the shape of a real history (on first use; it stays in the build tree).
    [[nodiscard]] const std::string& repositoryPath();
    /// The exit code of the program: 1 if a bound has been missed.
    [[nodiscard]] int finish() const;

private:
    friend class RVBenchTable;
    std::optional<std::string> repositoryPath_;
    std::optional<int> rounds_;
    std::optional<std::string> onlyCase_;
    bool missed_ = false;
    bool judges_ = true;
};

/// Cases that are run in turn, round by round, so that whatever else the machine does falls on all
/// of them alike.
class RVBenchTable {
public:
    /// Gives a figure of what has been done (bytes, commits, rows): shown in the table, and proof
    /// that the cases do the same work.
    using Case = std::function<std::size_t()>;

    RVBenchTable(RVBench& bench, std::string name);
    void add(std::string name, Case run);

    /// Runs every case once untimed, then all of them in turn, `rounds` times (--rounds beats
    /// that), and prints medians, and ratios to the first case.
    void run(int rounds);

    // After run().

    [[nodiscard]] double medianSeconds(const std::string& name) const;
    /// The median of the ratios round by round.
    [[nodiscard]] double ratio(const std::string& name, const std::string& base) const;
    /// The most memory that the case has held, in a process of its own, children not counted.
    [[nodiscard]] std::size_t peakMemory(const std::string& name) const;
    /// The instructions of the case, children not counted, as callgrind counts them; absent where
    /// valgrind is not installed. About fifty times slower than the case.
    [[nodiscard]] std::optional<std::size_t> instructions(const std::string& name) const;

    // Print the figure beside what it may be at most; a miss makes the program fail.

    void bound(const std::string& name, const std::string& base, double most);
    void boundPeakMemory(const std::string& name, double mostBytes);
    /// Any other figure.
    void bound(const std::string& text, double value, double most);

private:
    struct Entry {
        std::string name;
        Case run;
        std::vector<double> seconds;
        std::size_t result = 0;
    };

    [[nodiscard]] const Entry& entry(const std::string& name) const;
    void print(int rounds) const;

    RVBench& bench_;
    std::string name_;
    std::vector<Entry> entries_;
};
