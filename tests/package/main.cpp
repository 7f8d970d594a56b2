#include <iostream>

#include "RVGit/RVGit.h"

#if __has_include(<unicode/utypes.h>) && defined(U_ICU_VERSION)
#error "A public header drags in ICU"
#endif
#if defined(LIBPLIST_H)
#error "A public header drags in libplist"
#endif

int main() {
    RVChildProcess process;
    RVChildProcess::Launch launch{.path = "/bin/echo", .arguments = {"installed"}};
    if (process.run(launch) != 0 || process.exitCode() != 0) {
        return 1;
    }
    std::cout << process.standardOutput().view();
}
