#pragma once

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>

/// Ends a benchmark that has not done what it measures.
[[noreturn]] inline void fail(const std::string& what) {
    std::fprintf(stderr, "%s\n", what.c_str());
    std::exit(1);
}

/// A directory in the temporary one, for the life of the program.
class RVBenchDirectory {
public:
    explicit RVBenchDirectory(const std::string& name)
        : path_(std::filesystem::temp_directory_path() / (name + ".XXXXXX")) {
        if (!mkdtemp(path_.data()))
            fail("cannot make " + path_);
    }
    RVBenchDirectory(const RVBenchDirectory&) = delete;
    RVBenchDirectory& operator=(const RVBenchDirectory&) = delete;
    ~RVBenchDirectory() { std::filesystem::remove_all(path_); }

    [[nodiscard]] const std::string& path() const { return path_; }

private:
    std::string path_;
};

/// Feeds git fast-import.
class RVFastImport {
public:
    explicit RVFastImport(const std::string& repositoryPath)
        : stream_(popen(("git -C '" + repositoryPath + "' fast-import --quiet").c_str(), "w")) {
        if (!stream_)
            fail("cannot run git fast-import");
    }
    RVFastImport(const RVFastImport&) = delete;
    RVFastImport& operator=(const RVFastImport&) = delete;
    /// What was written counts from here on.
    ~RVFastImport() {
        if (pclose(stream_) != 0)
            fail("git fast-import failed");
    }

    [[nodiscard]] std::FILE* stream() const { return stream_; }

private:
    std::FILE* stream_;
};
