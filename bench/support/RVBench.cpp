#include "bench/support/RVBench.h"

#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <stdexcept>
#include <string_view>

#include "bench/support/RVBenchHistory.h"

namespace {

double median(std::vector<double> values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

std::size_t highWaterMark() {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.starts_with("VmHWM:")) {
            return std::stoull(line.substr(6)) * 1024;
        }
    }
    throw std::runtime_error("the kernel tells no VmHWM");
}

std::string quoted(const std::string& word) {
    return "'" + word + "'";
}

/// This program again, with one case alone, or with none where the name is empty.
std::string commandForCase(const std::string& caseName, const std::string& repositoryPath) {
    char path[4096];
    const ssize_t length = readlink("/proc/self/exe", path, sizeof path);
    return quoted(std::string(path, static_cast<std::size_t>(std::max<ssize_t>(length, 0)))) +
           " --case " + quoted(caseName) +
           (repositoryPath.empty() ? "" : " --repository " + quoted(repositoryPath));
}

/// The number behind the last `marker` in what the command prints.
std::optional<std::size_t> numberPrinted(const std::string& command, std::string_view marker) {
    std::FILE* const output = popen(command.c_str(), "r");
    if (output == nullptr) {
        throw std::runtime_error("cannot run " + command);
    }
    std::string text;
    char buffer[4096];
    for (std::size_t count = 0; (count = std::fread(buffer, 1, sizeof buffer, output)) > 0;) {
        text.append(buffer, count);
    }
    const int status = pclose(output);
    const std::size_t position = text.rfind(marker);
    if (status != 0 || position == std::string::npos) {
        return std::nullopt;
    }
    return std::stoull(text.substr(position + marker.size()));
}

}  // namespace

RVBench::RVBench(int argc, char** argv) {
    setenv("GIT_CONFIG_NOSYSTEM", "1", 1);
    setenv("GIT_CONFIG_GLOBAL", "/dev/null", 1);
    if (const char* path = std::getenv("RVGIT_BENCH_REPOSITORY")) {
        repositoryPath_ = path;
    }
    if (argc > 1 && std::string_view(argv[1]) == "--once") {
        rounds_ = 1;
        judges_ = false;
        return;
    }
    for (int index = 1; index + 1 < argc; index += 2) {
        const std::string_view option = argv[index];
        const char* value = argv[index + 1];
        if (option == "--repository") {
            repositoryPath_ = value;
        } else if (option == "--rounds") {
            rounds_ = std::atoi(value);
        } else if (option == "--case") {
            onlyCase_ = value;
        }
    }
}

const std::string& RVBench::repositoryPath() {
    if (!repositoryPath_) {
        repositoryPath_ = makeHistoryRepository();
    }
    return *repositoryPath_;
}

int RVBench::finish() const {
    return missed_ && judges_ ? 1 : 0;
}

RVBenchTable::RVBenchTable(RVBench& bench, std::string name)
    : bench_(bench), name_(std::move(name)) {}

void RVBenchTable::add(std::string name, Case run) {
    entries_.push_back({std::move(name), std::move(run), {}, 0});
}

void RVBenchTable::run(int rounds) {
    rounds = std::max(1, bench_.rounds_.value_or(rounds));
    if (bench_.onlyCase_) {
        for (const Entry& entry : entries_) {
            if (*bench_.onlyCase_ == name_ + "/" + entry.name) {
                entry.run();
                std::printf("VmHWM %zu\n", highWaterMark());
                std::exit(0);
            }
        }
        if (bench_.onlyCase_->empty()) {
            std::exit(0);
        }
        return;
    }
    for (Entry& entry : entries_) {
        entry.result = entry.run();
    }
    for (int round = 0; round < rounds; ++round) {
        for (Entry& entry : entries_) {
            const auto start = std::chrono::steady_clock::now();
            entry.run();
            entry.seconds.push_back(
                std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
        }
    }
    print(rounds);
}

void RVBenchTable::print(int rounds) const {
    std::printf("\n%s, %d rounds\n%-36s %12s %12s %9s %14s\n", name_.c_str(), rounds, "case",
                "median ms", "least ms", "ratio", "result");
    for (const Entry& entry : entries_) {
        std::printf("%-36s %12.3f %12.3f %9.3f %14zu\n", entry.name.c_str(),
                    1000 * median(entry.seconds),
                    1000 * *std::min_element(entry.seconds.begin(), entry.seconds.end()),
                    ratio(entry.name, entries_.front().name), entry.result);
    }
    std::fflush(stdout);
}

const RVBenchTable::Entry& RVBenchTable::entry(const std::string& name) const {
    for (const Entry& entry : entries_) {
        if (entry.name == name) {
            return entry;
        }
    }
    throw std::invalid_argument("no case is named " + name);
}

double RVBenchTable::medianSeconds(const std::string& name) const {
    const Entry& wanted = entry(name);
    return wanted.seconds.empty() ? 0 : median(wanted.seconds);
}

double RVBenchTable::ratio(const std::string& name, const std::string& base) const {
    const std::vector<double>& numerators = entry(name).seconds;
    const std::vector<double>& denominators = entry(base).seconds;
    std::vector<double> ratios;
    for (std::size_t round = 0; round < numerators.size(); ++round) {
        ratios.push_back(numerators[round] / denominators[round]);
    }
    return ratios.empty() ? 0 : median(ratios);
}

std::size_t RVBenchTable::peakMemory(const std::string& name) const {
    if (bench_.onlyCase_) {
        return 0;
    }
    const std::string command =
        commandForCase(name_ + "/" + entry(name).name, bench_.repositoryPath_.value_or(""));
    const std::optional<std::size_t> peak = numberPrinted(command, "VmHWM ");
    if (!peak) {
        throw std::runtime_error("failed: " + command);
    }
    return *peak;
}

std::optional<std::size_t> RVBenchTable::instructions(const std::string& name) const {
    if (bench_.onlyCase_ || std::system("command -v valgrind >/dev/null") != 0) {
        return std::nullopt;
    }
    const auto count = [&](const std::string& caseName) {
        return numberPrinted("valgrind --tool=callgrind --callgrind-out-file=/dev/null " +
                                 commandForCase(caseName, bench_.repositoryPath_.value_or("")) +
                                 " 2>&1",
                             "Collected : ");
    };
    const std::optional<std::size_t> whole = count(name_ + "/" + entry(name).name);
    const std::optional<std::size_t> start = count("");
    if (!whole || !start) {
        return std::nullopt;
    }
    return *whole - std::min(*whole, *start);
}

void RVBenchTable::bound(const std::string& name, const std::string& base, double most) {
    bound(name + " / " + base, ratio(name, base), most);
}

void RVBenchTable::boundPeakMemory(const std::string& name, double mostBytes) {
    constexpr double mebibyte = 1024.0 * 1024.0;
    bound(name + ", peak memory in MiB", static_cast<double>(peakMemory(name)) / mebibyte,
          mostBytes / mebibyte);
}

void RVBenchTable::bound(const std::string& text, double value, double most) {
    if (bench_.onlyCase_) {
        return;
    }
    const bool missed = value > most;
    bench_.missed_ = bench_.missed_ || missed;
    std::printf("%-50s %9.3f, at most %9.3f: %s\n", text.c_str(), value, most,
                missed ? "MISSED" : "kept");
    std::fflush(stdout);
}
