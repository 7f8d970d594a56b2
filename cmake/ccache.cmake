# Compiles through ccache where it is installed. With paths taken relative to the source tree, one
# clone profits from what another has compiled.
find_program(CCACHE ccache)
if(CCACHE AND PROJECT_IS_TOP_LEVEL)
    set(CMAKE_CXX_COMPILER_LAUNCHER ${CMAKE_COMMAND} -E env
        CCACHE_BASEDIR=${PROJECT_SOURCE_DIR} CCACHE_NOHASHDIR=1
        # The precompiled header is known by its contents only with these.
        CCACHE_SLOPPINESS=pch_defines,time_macros
        ${CCACHE})
    add_compile_options(
        $<$<CXX_COMPILER_ID:GNU>:-fpch-preprocess>
        "$<$<CXX_COMPILER_ID:Clang>:SHELL:-Xclang -fno-pch-timestamp>")
endif()
