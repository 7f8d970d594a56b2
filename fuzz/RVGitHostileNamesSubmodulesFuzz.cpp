// The operations on submodules are given names, paths and addresses that nobody chose well, as they
// come from a caller, and as they stand in a stranger's ".gitmodules".

#include <memory>
#include <string>
#include <vector>

#include "RVGit/base/RVNeverDestroyed.h"
#include "RVGit/repository/RVGitRepository.h"
#include "RVGit/submodules/RVGitSubmodule.h"
#include "RVGit/submodules/RVGitSubmoduleCommand.h"
#include "RVGit/submodules/RVGitSubmoduleConfig.h"
#include "RVGit/submodules/RVGitSubmoduleConfigLoader.h"
#include "RVGit/submodules/RVGitSubmoduleConfigManager.h"
#include "RVGit/submodules/RVGitSubmoduleHelper.h"
#include "RVGit/submodules/RVGitSubmoduleLoader.h"
#include "RVGit/submodules/RVGitSubmoduleManager.h"
#include "fuzz/support/RVHostileSandbox.h"

namespace {

using Sandbox = RVHostileSandbox;
using Text = std::string;
using Operation = Sandbox::Operation;
using Repository = std::shared_ptr<RVGitRepository>;

Text quoted(const Text& text) {
    Text result = "\"";
    for (const char c : text) {
        if (c == '"' || c == '\\')
            result += '\\';
        if (c == '\n')
            result += "\\n";
        else
            result += c;
    }
    return result + '"';
}

/// A submodule of that name and path as a stranger's repository records it, and one beside it that
/// is checked out.
void record(const Sandbox& sandbox, const Text& name, const Text& path, const Text& URL) {
    sandbox.write(".gitmodules", "[submodule " + quoted(name) + "]\n\tpath = " + quoted(path) +
                                     "\n\turl = " + quoted(URL) +
                                     "\n[submodule \"plain\"]\n\tpath = plain\n\turl = "
                                     "../remote.git\n");
    if (!sandbox.isReal())
        return;
    Text entries = "160000 " + sandbox.hash(1) + "\tplain" + Text(1, '\0');
    if (path.find('\0') == Text::npos)
        entries += "160000 " + sandbox.hash(1) + '\t' + path + '\0';
    (void)sandbox.git({"update-index", "-z", "--index-info"}, sandbox.tree(), entries);
    (void)sandbox.git({"add", ".gitmodules"});
}

Operation plain(void (*run)(const Repository&, const Text& a, const Text& b)) {
    return {[run](const Sandbox& sandbox, const Text& a, const Text& b) {
        record(sandbox, "plain", "plain", "../remote.git");
        run(sandbox.repository(), a, b);
    }};
}
/// The texts are name and path.
Operation recorded(void (*run)(const Repository&, const Text& a, const Text& b)) {
    return {[run](const Sandbox& sandbox, const Text& a, const Text& b) {
                record(sandbox, a, b, "../remote.git");
                run(sandbox.repository(), a, b);
            },
            Sandbox::RealOnly};
}
/// The texts are path and address.
Operation addressed(void (*run)(const Repository&, const Text& a, const Text& b)) {
    return {[run](const Sandbox& sandbox, const Text& a, const Text& b) {
                record(sandbox, "name", a, b);
                run(sandbox.repository(), a, b);
            },
            Sandbox::RealOnly};
}

constexpr unsigned updateOptions = RVGitSubmoduleUpdateOptionInitialize |
                                   RVGitSubmoduleUpdateOptionRecursive |
                                   RVGitSubmoduleUpdateOptionForce;
constexpr unsigned removeOptions =
    RVGitSubmoduleRemoveOptionForce | RVGitSubmoduleRemoveOptionRemoveGitDirectory;

const std::vector<Operation>& operations() {
    static const RVNeverDestroyed<std::vector<Operation>> list = {
        plain([](auto& r, auto& a, auto& b) {
            use(r->submoduleManager()->canAddSubmoduleAtPath(b));
            use(r->submoduleManager()->addSubmoduleWithURL(a, b, 0));
        }),
        plain([](auto& r, auto& a, auto&) {
            use(r->submoduleManager()->addSubmoduleWithURL("../remote.git", a,
                                                           RVGitSubmoduleAddOptionForce));
        }),
        plain([](auto& r, auto& a, auto&) {
            use(r->submoduleManager()->removeSubmoduleAtPath(a, removeOptions));
        }),
        plain([](auto& r, auto& a, auto& b) {
            use(r->submoduleManager()->updateSubmoduleAtPath("plain", updateOptions));
            use(r->submoduleManager()->moveSubmoduleWithPath("plain", a));
            use(r->submoduleManager()->moveSubmoduleWithPath(a, b));
        }),
        plain([](auto& r, auto& a, auto& b) {
            use(r->submoduleManager()->updateSubmoduleAtPath("plain", updateOptions));
            use(r->submoduleManager()->relocateSubmoduleWithPath("plain", a));
            use(r->submoduleManager()->relocateSubmoduleWithPath(a, b));
        }),
        plain([](auto& r, auto& a, auto& b) {
            use(r->submoduleManager()->updateSubmoduleAtPath("plain", updateOptions));
            use(r->submoduleManager()->renameSubmoduleWithName("plain", a));
            use(r->submoduleManager()->renameSubmoduleWithName(a, b));
        }),
        plain([](auto& r, auto& a, auto& b) {
            use(r->submoduleManager()->updateSubmoduleAtPath("plain", updateOptions));
            use(r->submoduleManager()->renameSubmoduleKeepingLinksWithName("plain", a));
            use(r->submoduleManager()->renameSubmoduleKeepingLinksWithName(a, b));
        }),
        plain([](auto& r, auto& a, auto& b) {
            use(r->submoduleManager()->updateSubmoduleAtPaths({a, b}, updateOptions));
            use(r->submoduleManager()->initSubmodulesAtPaths({a, b}));
            use(r->submoduleManager()->synchronizeURLForSubmoduleAtPath(a));
            use(r->submoduleManager()->submoduleContainsUncommittedWork(b));
        }),
        plain([](auto& r, auto& a, auto& b) {
            for (const auto& manager :
                 {RVGitSubmoduleConfigManager::defaultManagerWithRepository(r),
                  RVGitSubmoduleConfigManager::localConfigManagerWithRepository(r)}) {
                use(manager->setPath(a, b));
                use(manager->setURL(a, b));
                use(manager->setBranch(a, b));
                use(manager->setUpdateStrategy(RVGitSubmoduleUpdateStrategyMerge, b));
                use(manager->unsetURLForSubmoduleWithName(b));
                use(manager->renameConfigSectionForSubmoduleWithName(b, a));
                use(manager->renameConfigSectionForSubmoduleWithName("plain", b));
                use(manager->removeConfigSectionForSubmoduleWithName(b));
            }
        }),
        plain([](auto& r, auto& a, auto& b) {
            use(r->submoduleLoader()->submoduleForName(a));
            use(r->submoduleLoader()->submoduleForPath(b));
            use(r->submoduleLoader()->loadSubmoduleStatusForSubmodulePaths({a, b}));
            use(r->submoduleLoader()->loadGitSubmoduleStatusForSubmodulePaths({{a}}));
            use(r->submoduleLoader()->dirtySubmodulePathsForSubmodulePaths({a, b}));
        }),
        recorded([](auto& r, auto&, auto&) {
            if (const auto all = r->submoduleLoader()->allSubmodules())
                for (const auto& submodule : *all) {
                    use(submodule->layoutFormat());
                    use(submodule->submoduleRepository());
                    use(submodule->commit());
                    use(submodule->originRemote());
                    use(submodule->updatedCommitsAhead());
                    use(submodule->numberOfDirtyChanges());
                    use(RVGitSubmoduleHelper::absoluteGitDirectoryPathForSubmodule(*submodule, r));
                }
        }),
        recorded([](auto& r, auto&, auto& b) {
            use(r->submoduleManager()->updateAllSubmodulesWithOptions(updateOptions));
            use(r->submoduleManager()->removeSubmoduleAtPath(b, removeOptions));
        }),
        recorded([](auto& r, auto&, auto& b) {
            use(r->submoduleManager()->removeSubmoduleAtPath(
                b, removeOptions | RVGitSubmoduleRemoveOptionKeepWorkingTree));
        }),
        recorded([](auto& r, auto&, auto& b) {
            use(r->submoduleManager()->updateSubmoduleAtPath(b, updateOptions));
            use(r->submoduleManager()->moveSubmoduleWithPath(b, "folder/moved"));
        }),
        recorded([](auto& r, auto&, auto& b) {
            use(r->submoduleManager()->updateSubmoduleAtPath(b, updateOptions));
            use(r->submoduleManager()->relocateSubmoduleWithPath(b, "folder/moved"));
            use(r->submoduleManager()->submoduleContainsUncommittedWork("folder/moved"));
        }),
        recorded([](auto& r, auto& a, auto& b) {
            use(r->submoduleManager()->updateSubmoduleAtPath(b, updateOptions));
            use(r->submoduleManager()->renameSubmoduleWithName(a, "folder/renamed"));
            use(r->submoduleManager()->removeSubmoduleAtPath(b, removeOptions));
        }),
        recorded([](auto& r, auto& a, auto& b) {
            use(r->submoduleManager()->updateSubmoduleAtPath(b, updateOptions));
            use(r->submoduleManager()->renameSubmoduleKeepingLinksWithName(a, "folder/renamed"));
        }),
        addressed([](auto& r, auto& a, auto&) {
            use(r->submoduleManager()->initAllSubmodules());
            use(r->submoduleManager()->synchronizeAllSubmoduleURLs());
            use(r->submoduleManager()->updateSubmoduleAtPath(a, updateOptions));
        }),
        addressed([](auto& r, auto& a, auto&) {
            use(r->submoduleManager()->updateAllSubmodulesWithOptions(updateOptions));
            use(r->submoduleManager()->submoduleContainsUncommittedWork(a));
            use(r->submoduleManager()->removeSubmoduleAtPath(a, 0));
        }),
    };
    return *list;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    return runInSandbox(operations(), data, size);
}
