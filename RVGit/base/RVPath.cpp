#include "RVGit/base/RVPath.h"

#include <pwd.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <optional>
#include <vector>

namespace {

std::string_view withoutTrailingSlashes(std::string_view path) {
    while (path.size() > 1 && path.back() == '/')
        path.remove_suffix(1);
    return path;
}

/// The home of a user, or of the user of this process if the name is empty.
std::optional<std::string> homeDirectory(const std::string& userName) {
    if (holdsNUL(userName))
        return std::nullopt;
    if (userName.empty()) {
        const char* home = std::getenv("HOME");
        if (home && *home)
            return home;
    }
    std::vector<char> buffer(1024);
    passwd entry;
    passwd* found = nullptr;
    const auto lookUp = [&] {
        return userName.empty()
                   ? getpwuid_r(getuid(), &entry, buffer.data(), buffer.size(), &found)
                   : getpwnam_r(userName.c_str(), &entry, buffer.data(), buffer.size(), &found);
    };
    while (lookUp() == ERANGE)
        buffer.resize(buffer.size() * 2);
    if (!found)
        return std::nullopt;
    return entry.pw_dir;
}

}  // namespace

bool rvgit::isAbsolutePath(std::string_view path) {
    return path.starts_with('/');
}

std::string rvgit::pathByExpandingTilde(std::string_view path) {
    if (!path.starts_with('~'))
        return std::string(path);
    const auto end = std::min(path.find('/'), path.size());
    const auto home = homeDirectory(std::string(path.substr(1, end - 1)));
    if (!home)
        return std::string(path);
    return pathByAppendingComponent(*home, path.substr(end));
}

bool rvgit::isPlainRelativePath(std::string_view path) {
    for (std::size_t start = 0; start != path.npos;) {
        const std::size_t end = path.find('/', start);
        const std::string_view component = path.substr(start, end - start);
        if (component.empty() || component == "." || component == "..")
            return false;
        start = end == path.npos ? end : end + 1;
    }
    return !holdsNUL(path);
}

std::string rvgit::standardizedPath(std::string_view path) {
    std::string expanded = pathByExpandingTilde(path);
    if (expanded.empty())
        return expanded;
    const bool isAbsolute = isAbsolutePath(expanded);
    std::vector<std::string_view> components;
    const std::string_view text = expanded;
    for (std::size_t start = 0; start < text.size();) {
        const auto end = std::min(text.find('/', start), text.size());
        const auto component = text.substr(start, end - start);
        start = end + 1;
        if (component.empty() || component == ".")
            continue;
        const bool isParent = component == "..";
        if (isParent && !components.empty() && components.back() != "..")
            components.pop_back();
        else if (!isParent || !isAbsolute)
            components.push_back(component);
    }
    std::string result(isAbsolute ? "/" : "");
    for (const auto component : components) {
        if (!result.empty() && result.back() != '/')
            result += '/';
        result += component;
    }
    return result.empty() ? "." : result;
}

std::string rvgit::pathByAppendingComponent(std::string_view path, std::string_view component) {
    if (path.empty() || component.empty())
        return std::string(path.empty() ? component : path);
    std::string result(withoutTrailingSlashes(path));
    if (result.back() != '/')
        result += '/';
    result += component.substr(std::min(component.find_first_not_of('/'), component.size()));
    return result;
}

std::string rvgit::pathByDeletingLastComponent(std::string_view path) {
    path = withoutTrailingSlashes(path);
    const auto slash = path.rfind('/');
    if (slash == std::string_view::npos)
        return {};
    return std::string(withoutTrailingSlashes(path.substr(0, slash + 1)));
}

std::string rvgit::lastPathComponent(std::string_view path) {
    path = withoutTrailingSlashes(path);
    if (path == "/")
        return std::string(path);
    return std::string(path.substr(path.rfind('/') + 1));
}
