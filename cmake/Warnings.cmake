# The warnings enabled for our own targets, which are clean under g++ 12 and clang 14.
add_library(project_warnings INTERFACE)
target_compile_options(project_warnings INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wnon-virtual-dtor -Wold-style-cast
    $<$<BOOL:${WARNINGS_AS_ERRORS}>:-Werror>)
