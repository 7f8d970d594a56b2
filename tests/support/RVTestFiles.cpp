#include "tests/support/RVTestFiles.h"

#include <sys/stat.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <system_error>

namespace fs = std::filesystem;

std::string readTestFile(const std::string& path) {
    std::ifstream stream(path, std::ios::binary);
    std::string contents{std::istreambuf_iterator<char>(stream), {}};
    if (!stream) {
        throw std::system_error(errno, std::generic_category(), "cannot read " + path);
    }
    return contents;
}

void writeTestFile(const std::string& path, std::string_view contents, unsigned permissions) {
    fs::create_directories(fs::path(path).parent_path());
    if ((permissions & 0111) != 0) {
        // A program that is running cannot be written to, but another can take its place.
        fs::remove(path);
    }
    std::ofstream stream(path, std::ios::binary | std::ios::trunc);
    stream.write(contents.data(), static_cast<std::streamsize>(contents.size()));
    stream.close();
    if (!stream || chmod(path.c_str(), permissions) != 0) {
        throw std::system_error(errno, std::generic_category(), "cannot write " + path);
    }
}

void removeTestTree(const std::string& path) {
    std::error_code failure;
    fs::remove_all(path, failure);
    if (!failure) {
        return;
    }
    // A test may have left directories that cannot be listed; opened up from the top, each one
    // shows the next.
    fs::permissions(path, fs::perms::owner_all, fs::perm_options::add);
    for (auto entry = fs::recursive_directory_iterator(path);
         entry != fs::recursive_directory_iterator(); ++entry) {
        if (entry->is_directory() && !entry->is_symlink()) {
            fs::permissions(entry->path(), fs::perms::owner_all, fs::perm_options::add);
        }
    }
    fs::remove_all(path);
}

std::string quotedForShell(std::string_view text) {
    std::string quoted = "'";
    for (const char character : text) {
        if (character == '\'') {
            quoted += "'\\''";
        } else {
            quoted += character;
        }
    }
    return quoted + "'";
}

std::string waitingLoopForShell(std::string_view condition) {
    return "turns=0; while [ $turns -lt 3000 ] && " + std::string(condition) +
           "; do sleep 0.02 </dev/null >/dev/null 2>&1; turns=$((turns + 1)); done";
}
