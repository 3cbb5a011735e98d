# Options of a build, and settings of every build.
option(WARNINGS_AS_ERRORS "Make every warning an error" OFF)
option(BUILD_BENCHMARKS "Build bench/ (needs Google Benchmark)" OFF)
option(BUILD_FUZZERS "Build fuzz/ with libFuzzer (needs clang)" OFF)
option(COVERAGE "Count the lines and branches that run (gcov)" OFF)
set(SANITIZE "" CACHE STRING "Sanitizers, as -fsanitize takes them: address,undefined or thread")

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)

# Clones share cached objects: paths inside the tree are relative to it.
find_program(CCACHE ccache)
if(CCACHE)
    set(launcher ${CMAKE_COMMAND} -E env CCACHE_BASEDIR=${CMAKE_SOURCE_DIR} CCACHE_NOHASHDIR=1 ${CCACHE})
    set(CMAKE_CXX_COMPILER_LAUNCHER ${launcher})
    set(CMAKE_C_COMPILER_LAUNCHER ${launcher})
endif()

if(SANITIZE)
    add_compile_options(-fsanitize=${SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
    add_link_options(-fsanitize=${SANITIZE})
    # The framework does not know the classes that the library's factories return, and calls each factory as if it
    # returned their first base class: each such call would be reported.
    if(CMAKE_CXX_COMPILER_ID STREQUAL Clang AND SANITIZE MATCHES undefined)
        add_compile_options(-fno-sanitize=function)
    endif()
endif()
if(COVERAGE)
    add_compile_options(--coverage -fno-inline -fprofile-update=atomic)
    add_link_options(--coverage)
endif()
