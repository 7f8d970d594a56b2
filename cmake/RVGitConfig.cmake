# find_package(RVGit) gives RVGit::RVGit: the shared library if BUILD_SHARED_LIBS is on, else the
# static one. find_package(RVGit COMPONENTS shared) or (RVGit COMPONENTS static) names the kind.
include(CMakeFindDependencyMacro)
find_dependency(Threads)

set(RVGit_kind static)
if(RVGit_FIND_COMPONENTS)
    set(RVGit_kind ${RVGit_FIND_COMPONENTS})
elseif(BUILD_SHARED_LIBS)
    set(RVGit_kind shared)
endif()

if(NOT RVGit_kind MATCHES "^(static|shared)$")
    set(RVGit_FOUND FALSE)
    set(RVGit_NOT_FOUND_MESSAGE "RVGit has the components \"shared\" and \"static\", one at a time")
    return()
endif()
if(RVGit_kind STREQUAL "static")
    find_dependency(ICU COMPONENTS uc i18n)
    find_dependency(PkgConfig)
    pkg_check_modules(PLIST REQUIRED IMPORTED_TARGET libplist-2.0)
endif()
include(${CMAKE_CURRENT_LIST_DIR}/RVGit-${RVGit_kind}.cmake)
