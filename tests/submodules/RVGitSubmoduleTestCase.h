#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "RVGit/base/RVError.h"
#include "tests/support/RVGitRepositoryTestCase.h"
#include "tests/support/RVUnprivilegedUser.h"

class RVGitSubmodule;
class RVGitSubmoduleLoader;
class RVGitSubmoduleManager;

/// Base of tests of submodules. The superproject is repository(), with one commit.
class RVGitSubmoduleTestCase : public RVGitRepositoryTestCase {
protected:
    RVGitSubmoduleTestCase();
    ~RVGitSubmoduleTestCase() override;

    /// A repository of that name beside the superproject, with one commit; returns its path.
    std::string makeLibrary(std::string_view name = "library") const;
    /// Adds and commits a submodule of the library with the real git; its name is the path unless
    /// given.
    void addSubmodule(const std::string& path, const std::string& name = {},
                      const std::string& URL = "../library") const;
    /// A commit in the submodule's working tree; returns its hash.
    std::string commitInSubmodule(const std::string& path) const;
    /// The real git in a directory of the superproject.
    std::string gitAt(const std::string& path, const std::vector<std::string>& arguments) const;
    /// An entry in ".gitmodules" and nothing else.
    void declareSubmodule(const std::string& name, const std::string& path,
                          const std::string& URL = "../library") const;
    void stageAll() const { gitInRepository({"add", "-A"}); }

    [[nodiscard]] std::string pathInRepository(std::string_view path) const {
        return repositoryPath() + "/" + std::string(path);
    }
    [[nodiscard]] bool existsInRepository(std::string_view path) const {
        return fileExists(pathInRepository(path));
    }
    /// The four places that a submodule is in: "index", ".gitmodules", "config" (the superproject's
    /// own), "working tree", "link" (the ".git" file), "git directory" and "core.worktree"; those
    /// that do not have it are left out.
    [[nodiscard]] std::map<std::string, std::string> placesOf(const std::string& path,
                                                              const std::string& name) const;
    /// Every file below a directory with its contents, for a comparison; of an index, which git
    /// writes anew when it only looks, that it is there.
    [[nodiscard]] std::map<std::string, std::string> filesBelow(const std::string& path) const;
    /// A line for each file that differs; empty if none does.
    [[nodiscard]] static std::string differences(const std::map<std::string, std::string>& before,
                                                 const std::map<std::string, std::string>& after);

    [[nodiscard]] std::shared_ptr<RVGitSubmodule> submoduleAt(const std::string& path) const;
    [[nodiscard]] RVGitSubmoduleManager& manager() const { return *manager_; }
    [[nodiscard]] RVGitSubmoduleLoader& loader() const { return *loader_; }

    /// Where an operation is to leave its error; checked by failsWith().
    std::optional<RVError> error;
    /// Whether the operation, having given `result`, failed with the code.
    [[nodiscard]] testing::AssertionResult failedWith(bool result, std::int64_t code) const;
    [[nodiscard]] testing::AssertionResult succeeded(bool result) const;

    // What makes a step fail.

    /// Holds git's lock on a file of the superproject.
    void lock(const std::string& file) const { writeFile("repository/" + file + ".lock", ""); }
    void unlock(const std::string& file) const;
    /// Goes on as a user to whom all that the test has made belongs, but for that directory of the
    /// superproject, which he may not write in.
    void protectDirectory(const std::string& path);
    void unprotect();
    /// Leaves so many bytes free, or none, on a small disk.
    void fillDisk(std::size_t bytesLeft = 0) const;
    void makeRoom() const;

private:
    std::shared_ptr<RVGitSubmoduleManager> manager_;
    std::shared_ptr<RVGitSubmoduleLoader> loader_;
    std::optional<RVUnprivilegedUser> user_;
    std::string protected_;
};

/// With one submodule, "lib", whose name is "name".
class RVGitOneSubmoduleTestCase : public RVGitSubmoduleTestCase {
protected:
    RVGitOneSubmoduleTestCase() { addSubmodule("lib", "name"); }

    [[nodiscard]] std::map<std::string, std::string> places(
        const std::string& path = "lib", const std::string& name = "name") const {
        return placesOf(path, name);
    }
};
