# How the tests of a folder are compiled.
include(${CMAKE_CURRENT_LIST_DIR}/Unity.cmake)

# Optimising a test takes longer than running it.
add_compile_options(-O0)

# In a unity build, a fixture in an unnamed namespace seems to come from a header.
if(CMAKE_CXX_COMPILER_ID STREQUAL GNU)
    add_compile_options(-Wno-subobject-linkage)
endif()
