#pragma once

#include <sys/types.h>
#include <unistd.h>

#include <filesystem>
#include <string>

/// Another user than root, to whom something is forbidden, while it lives.
class RVUnprivilegedUser {
public:
    static constexpr uid_t nobody = 65534;

    /// The directory of the test is opened to that user.
    explicit RVUnprivilegedUser(const std::string& directory) {
        if (!wasRoot_)
            return;
        const std::filesystem::path end = std::filesystem::temp_directory_path();
        for (std::filesystem::path path = directory; path != end && path.has_relative_path();
             path = path.parent_path())
            std::filesystem::permissions(path, std::filesystem::perms(0055),
                                         std::filesystem::perm_options::add);
        // The real one, too: a shell would go back to it.
        changed_ = ::setresuid(nobody, nobody, 0) == 0;
    }
    ~RVUnprivilegedUser() {
        if (changed_)
            (void)!::setresuid(0, 0, 0);
    }
    RVUnprivilegedUser(const RVUnprivilegedUser&) = delete;
    RVUnprivilegedUser& operator=(const RVUnprivilegedUser&) = delete;

    [[nodiscard]] bool isEffective() const { return !wasRoot_ || changed_; }

private:
    bool wasRoot_ = ::geteuid() == 0;
    bool changed_ = false;
};
