#include "RVGit/submodules/RVGitSubmodulePathspec.h"

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <optional>

#include "RVGit/base/RVString.h"
#include "RVGit/command/RVGitCommandEnvironment.h"

namespace {

bool pathsAreLiteral() {
    constexpr char variable[] = "GIT_LITERAL_PATHSPECS";
    auto value = RVGitCommandEnvironment::sharedEnvironment().valueForEnvironmentVariable(variable);
    if (!value)
        if (const char* inherited = std::getenv(variable))
            value = inherited;
    const std::string text = lowercaseString(value.value_or(""));
    return !text.empty() && text != "0" && text != "false" && text != "no" && text != "off";
}

std::string pathspec(const std::string& path, bool isLiteral) {
    const bool isSpecial =
        path.starts_with(':') || path.find_first_of("*?[\\") != std::string::npos;
    return isSpecial && !isLiteral ? ":(literal)" + path : path;
}

}  // namespace

std::string rvgit::literalPathspec(const std::string& path) {
    return pathspec(path, pathsAreLiteral());
}

std::vector<std::string> rvgit::literalPathspecs(const std::vector<std::string>& paths) {
    std::vector<std::string> pathspecs;
    pathspecs.reserve(paths.size());
    std::transform(paths.begin(), paths.end(), std::back_inserter(pathspecs),
                   [isLiteral = pathsAreLiteral()](const std::string& path) {
                       return pathspec(path, isLiteral);
                   });
    return pathspecs;
}
