#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <string>

#include "RVGit/base/RVFileManager.h"
#include "RVGit/base/RVString.h"
#include "RVGit/repository/RVGitRepository.h"
#include "RVGit/worktree/RVGitIgnores.h"

namespace {

/// A directory for the process, removed at its end.
class Directory {
public:
    Directory() : path_(RVFileManager::createTemporaryDirectory().value_or("")) {
        if (path_.empty())
            std::abort();
    }
    ~Directory() { (void)RVFileManager::removeItemAtPath(path_); }
    Directory(const Directory&) = delete;
    Directory& operator=(const Directory&) = delete;

    [[nodiscard]] const std::string& path() const { return path_; }

private:
    std::string path_;
};

}  // namespace

// The bytes are an ignore file. It is readable exactly if it is UTF-8; written again it is the same
// but for a newline at its end, and reads the same.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const Directory directory;
    static const RVGitIgnores ignores(
        std::make_shared<RVGitRepository>(directory.path(), std::nullopt),
        directory.path() + "/.gitignore");
    const std::string contents(reinterpret_cast<const char*>(data), size);
    std::ofstream(ignores.filePath(), std::ios::binary) << contents;

    const auto lines = ignores.readIgnorePatterns();
    if (lines.has_value() != isValidUTF8(contents))
        std::abort();
    if (!lines)
        return 0;
    const auto patterns = ignores.allIgnorePatterns();
    if (!patterns)
        std::abort();
    for (const std::string& pattern : *patterns)
        if (pattern.empty() || pattern.front() == '#' ||
            pattern != stringByTrimmingWhitespaceAndNewline(pattern))
            std::abort();

    if (!ignores.writeIgnorePatterns(*lines))
        std::abort();
    const std::string expected = contents.ends_with('\n') ? contents : contents + "\n";
    if (RVFileManager::contentsOfFileAtPath(ignores.filePath()) != expected)
        std::abort();
    if (!lines->empty() && ignores.readIgnorePatterns() != lines)
        std::abort();
    return 0;
}
