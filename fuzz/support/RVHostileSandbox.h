#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

class RVGitRepository;

/// Where whole operations of the library are given names that nobody chose well. A git that writes
/// down how it was called stands in the place of the real one, and hands over to it where that is
/// wanted. After each operation it is looked whether
/// - a text that came from the input stood where git looks for options, and was one;
/// - git was given an option that the library does not know;
/// - a text came to stand in a command that a shell runs;
/// - a program was run that the texts name, or an editor, a pager, a helper was opened;
/// - anything but the repository was made, changed or removed.
/// Each of them ends the process with a word of what was found.
///
/// Around the repository lie:
///     bin/             the git, and a trap by the name of "pwned", with and without the mark
///     home/            with the user's configuration
///     canary/          files and folders whose names the texts can guess
///     place/tree       the repository, fresh for each input
///     place/remote.git what "origin" names; "origin/main" and "origin/other" are fetched
///     place/out        where what is cloned or packed may go
/// all of it below several folders, so that a few "../" do not lead out.
class RVHostileSandbox {
public:
    /// At the end of each text, so that what came from the input is known again.
    static constexpr std::string_view mark = "Zq7";

    /// Called once with the path of the repository, which is made anew as it leaves it; runs the
    /// real git by git().
    using Fill = std::function<void(const RVHostileSandbox&, const std::string& tree)>;

    explicit RVHostileSandbox(const Fill& fill);
    ~RVHostileSandbox();
    RVHostileSandbox(const RVHostileSandbox&) = delete;
    RVHostileSandbox& operator=(const RVHostileSandbox&) = delete;

    [[nodiscard]] const std::shared_ptr<RVGitRepository>& repository() const { return repository_; }
    [[nodiscard]] std::string tree() const { return root_ + "/place/tree"; }
    [[nodiscard]] std::string out() const { return root_ + "/place/out"; }
    /// A hash of 40 digits: HEAD's, and those of its first parents.
    [[nodiscard]] const std::string& hash(std::size_t generation) const {
        return hashes_.at(generation);
    }

    /// The real git, without the library: its output without the newline at the end.
    std::string git(const std::vector<std::string>& arguments, const std::string& directory,
                    const std::optional<std::string>& standardInput = std::nullopt) const;
    std::string git(const std::vector<std::string>& arguments) const {
        return git(arguments, tree());
    }
    /// Three versions of a file in the index; with the real git alone.
    void makeConflict(const std::string& path) const;
    /// Puts bytes into a file of the repository, unless its path leads out of it.
    void write(std::string_view pathInTree, std::string_view bytes) const;
    /// The text as the last component of a path.
    [[nodiscard]] static std::string component(std::string text);
    /// Whether git hands over to the real one.
    [[nodiscard]] bool isReal() const { return real_; }

    enum Flags : unsigned {
        /// Never the real git: it would wait for a server.
        IdleOnly = 1,
        /// Never an idle git: there is nothing to be seen with it.
        RealOnly = 2,
        /// The remote may change.
        Pushes = 4,
        /// Something may come to be in place/out.
        Makes = 8,
    };
    struct Operation {
        std::function<void(const RVHostileSandbox&, const std::string& a, const std::string& b)>
            run;
        unsigned flags = 0;
    };
    /// The first byte chooses the operation, the lowest bit of the second the real git; the others
    /// are one text, or two with a newline in between.
    void runOne(const std::vector<Operation>& operations, const std::uint8_t* data,
                std::size_t size);

private:
    using Texts = std::array<std::string, 2>;
    using Snapshot = std::map<std::string, std::string>;

    void makeFreshCopy() const;
    [[nodiscard]] Snapshot snapshot(unsigned flags) const;
    void checkCalls(const Texts& texts) const;
    void checkCall(const std::vector<std::string>& arguments, const Texts& texts) const;

    std::string base_;
    std::string root_;
    std::string realGit_;
    bool real_ = false;
    std::vector<std::string> hashes_;
    std::shared_ptr<RVGitRepository> repository_;
};

/// For a result that says nothing to a fuzz target.
template <typename Result>
void use(const Result&) {}

/// What a fuzz target does with one input, in a repository that nothing was added to.
inline int runInSandbox(const std::vector<RVHostileSandbox::Operation>& operations,
                        const std::uint8_t* data, std::size_t size) {
    static RVHostileSandbox sandbox([](const RVHostileSandbox&, const std::string&) {});
    sandbox.runOne(operations, data, size);
    return 0;
}
