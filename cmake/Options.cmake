# What a build of this project can be asked for, and the defaults that hold everywhere.
option(WARNINGS_AS_ERRORS "Make every warning an error (continuous integration)" OFF)
option(BUILD_BENCHMARKS "Build bench/ (needs Google Benchmark)" OFF)
option(BUILD_FUZZERS "Build fuzz/ with libFuzzer (needs clang)" OFF)
option(COVERAGE "Count the lines and branches that run (gcov)" OFF)
set(SANITIZE "" CACHE STRING "Sanitizers, as -fsanitize takes them: address,undefined or thread")

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)

# A clone finds in the cache what another one compiled: paths inside the tree count relative to it.
find_program(CCACHE ccache)
if(CCACHE)
    set(launcher ${CMAKE_COMMAND} -E env CCACHE_BASEDIR=${CMAKE_SOURCE_DIR} CCACHE_NOHASHDIR=1 ${CCACHE})
    set(CMAKE_CXX_COMPILER_LAUNCHER ${launcher})
    set(CMAKE_C_COMPILER_LAUNCHER ${launcher})
endif()

if(SANITIZE)
    add_compile_options(-fsanitize=${SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
    add_link_options(-fsanitize=${SANITIZE})
    # The factories return the library's own classes, and a framework that does not know them calls each as if it
    # returned the base that stands first: each such call would be a report.
    if(CMAKE_CXX_COMPILER_ID STREQUAL Clang AND SANITIZE MATCHES undefined)
        add_compile_options(-fno-sanitize=function)
    endif()
endif()
# What libFuzzer is told about the way an input takes; for src/ and telephone/.
set(FUZZING_FEEDBACK "")
if(BUILD_FUZZERS)
    set(FUZZING_FEEDBACK -fsanitize=fuzzer-no-link)
endif()
if(COVERAGE)
    add_compile_options(--coverage -fno-inline -fprofile-update=atomic)
    add_link_options(--coverage)
endif()
