#include "tests/submodules/RVGitSubmoduleTestCase.h"

#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "RVGit/submodules/RVGitSubmodule.h"
#include "RVGit/submodules/RVGitSubmoduleLoader.h"
#include "RVGit/submodules/RVGitSubmoduleManager.h"
#include "tests/support/RVTestFiles.h"

namespace fs = std::filesystem;

RVGitSubmoduleTestCase::RVGitSubmoduleTestCase()
    : manager_(RVGitSubmoduleManager::managerWithRepository(repository())),
      loader_(RVGitSubmoduleLoader::loaderWithRepository(repository())) {
    makeCommit("Begin");
    makeLibrary();
}

std::string RVGitSubmoduleTestCase::makeLibrary(std::string_view name) const {
    const std::string path = initRepository(name);
    commitFile(path, "lib.c", "int one;\n", "Begin the library");
    return path;
}

void RVGitSubmoduleTestCase::addSubmodule(const std::string& path, const std::string& name,
                                          const std::string& URL) const {
    std::vector<std::string> arguments = {"submodule", "--quiet", "add"};
    if (!name.empty())
        arguments.insert(arguments.end(), {"--name", name});
    arguments.insert(arguments.end(),
                     {"--", URL == "../library" ? scratchPath("library") : URL, path});
    git(arguments, repositoryPath());
    // A relative address would be resolved against the superproject's own, which it has not.
    gitInRepository({"commit", "--quiet", "-m", "Add a submodule"});
}

std::string RVGitSubmoduleTestCase::commitInSubmodule(const std::string& path) const {
    gitAt(path, {"commit", "--quiet", "--allow-empty", "-m", "More"});
    return gitAt(path, {"rev-parse", "HEAD"});
}

std::string RVGitSubmoduleTestCase::gitAt(const std::string& path,
                                          const std::vector<std::string>& arguments) const {
    return gitLine(arguments, pathInRepository(path));
}

void RVGitSubmoduleTestCase::declareSubmodule(const std::string& name, const std::string& path,
                                              const std::string& URL) const {
    gitInRepository({"config", "-f", ".gitmodules", "submodule." + name + ".path", path});
    gitInRepository({"config", "-f", ".gitmodules", "submodule." + name + ".url", URL});
}

std::map<std::string, std::string> RVGitSubmoduleTestCase::placesOf(const std::string& path,
                                                                    const std::string& name) const {
    std::map<std::string, std::string> places;
    const auto add = [&places](const std::string& key, std::string value) {
        while (value.ends_with('\n'))
            value.pop_back();
        if (!value.empty())
            places.emplace(key, std::move(value));
    };
    add("index", git({"--literal-pathspecs", "ls-files", "-s", "--", path}, repositoryPath()));
    const std::string section = "submodule." + name;
    add(".gitmodules",
        runGit({"config", "-f", ".gitmodules", "--get", section + ".path"}, repositoryPath())
            .standardOutput);
    add("config",
        runGit({"config", "--local", "--get", section + ".url"}, repositoryPath()).standardOutput);
    const fs::path directory = pathInRepository(path);
    if (fs::is_directory(directory))
        add("working tree", fs::is_empty(directory) ? "empty" : "filled");
    if (fs::is_regular_file(directory / ".git"))
        add("link", readTestFile((directory / ".git").string()));
    const fs::path gitDirectory = pathInRepository(".git/modules/" + name);
    if (fs::exists(gitDirectory / "HEAD"))
        add("git directory", "there");
    if (fs::exists(gitDirectory / "config"))
        add("core.worktree",
            runGit({"config", "-f", (gitDirectory / "config").string(), "core.worktree"})
                .standardOutput);
    return places;
}

std::map<std::string, std::string> RVGitSubmoduleTestCase::filesBelow(
    const std::string& path) const {
    std::map<std::string, std::string> files;
    if (!fs::exists(fs::symlink_status(path)))
        return files;
    for (const auto& entry : fs::recursive_directory_iterator(path)) {
        const std::string name = fs::relative(entry.path(), path).string();
        if (name.ends_with(".sample"))
            continue;
        if (entry.is_symlink())
            files[name] = "link to " + fs::read_symlink(entry.path()).string();
        else if (entry.path().filename() == "index")
            files[name] = "index";
        else if (entry.is_regular_file())
            files[name] = readTestFile(entry.path().string());
        else
            files[name] = "directory";
    }
    return files;
}

std::string RVGitSubmoduleTestCase::differences(const std::map<std::string, std::string>& before,
                                                const std::map<std::string, std::string>& after) {
    std::string text;
    for (const auto& [name, contents] : before) {
        const auto found = after.find(name);
        if (found == after.end())
            text += "removed: " + name + "\n";
        else if (found->second != contents)
            text += "changed: " + name + ": " + found->second + "\n";
    }
    for (const auto& entry : after)
        if (!before.contains(entry.first))
            text += "added: " + entry.first + "\n";
    return text;
}

std::shared_ptr<RVGitSubmodule> RVGitSubmoduleTestCase::submoduleAt(const std::string& path) const {
    std::optional<RVError> failure;
    const auto submodule = loader_->submoduleForPath(path, &failure);
    if (!submodule)
        ADD_FAILURE() << "no submodule " << path << ", code " << (failure ? failure->code() : 0);
    return submodule;
}

testing::AssertionResult RVGitSubmoduleTestCase::failedWith(bool result, std::int64_t code) const {
    if (result)
        return testing::AssertionFailure() << "it succeeded";
    if (!error)
        return testing::AssertionFailure() << "it failed without an error";
    if (error->code() != code)
        return testing::AssertionFailure()
               << "code " << error->code() << ": "
               << error->userInfoString("RVGitErrorOutputErrorKey").value_or("");
    return testing::AssertionSuccess();
}

testing::AssertionResult RVGitSubmoduleTestCase::succeeded(bool result) const {
    if (result)
        return testing::AssertionSuccess();
    auto failure = testing::AssertionFailure() << "it failed";
    if (error) {
        failure << " with code " << error->code();
        for (const auto& [key, value] : error->userInfo())
            if (value.string())
                failure << "\n  " << key << ": " << *value.string();
    }
    return failure;
}

RVGitSubmoduleTestCase::~RVGitSubmoduleTestCase() {
    user_.reset();
    std::error_code ignored;
    if (!protected_.empty())
        fs::permissions(pathInRepository(protected_), fs::perms(0755), ignored);
}

void RVGitSubmoduleTestCase::unlock(const std::string& file) const {
    fs::remove_all(pathInRepository(file + ".lock"));
}

void RVGitSubmoduleTestCase::protectDirectory(const std::string& path) {
    user_.reset();
    gitInRepository({"config", "--global", "--replace-all", "safe.directory", "*"});
    for (const auto& entry : fs::recursive_directory_iterator(scratchDirectory()))
        if (::lchown(entry.path().c_str(), RVUnprivilegedUser::nobody,
                     RVUnprivilegedUser::nobody) != 0 &&
            ::geteuid() == 0)
            ADD_FAILURE() << entry.path();
    if (::geteuid() == 0) {
        EXPECT_EQ(::chown(pathInRepository(path).c_str(), 0, 0), 0);
    }
    fs::permissions(pathInRepository(path), fs::perms(0555));
    protected_ = path;
    user_.emplace(scratchDirectory());
}

void RVGitSubmoduleTestCase::unprotect() {
    user_.reset();
    if (::geteuid() == 0) {
        EXPECT_EQ(::chown(pathInRepository(protected_).c_str(), RVUnprivilegedUser::nobody,
                          RVUnprivilegedUser::nobody),
                  0);
    }
    fs::permissions(pathInRepository(protected_), fs::perms(0755));
    user_.emplace(scratchDirectory());
}

void RVGitSubmoduleTestCase::fillDisk(std::size_t bytesLeft) const {
    std::ofstream filler(scratchPath("filler"), std::ios::binary);
    const std::string block(4096, 'x');
    while (filler.write(block.data(), static_cast<std::streamsize>(block.size())).flush()) {
    }
    filler.close();
    const auto size = fs::file_size(scratchPath("filler"));
    fs::resize_file(scratchPath("filler"), size - std::min<std::uintmax_t>(size, bytesLeft));
}

void RVGitSubmoduleTestCase::makeRoom() const {
    fs::remove(scratchPath("filler"));
}
