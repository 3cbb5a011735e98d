# How the tests of a folder are compiled.
include(${CMAKE_CURRENT_LIST_DIR}/Unity.cmake)

# In a unity build, a fixture in an unnamed namespace seems to come from a header.
if(CMAKE_CXX_COMPILER_ID STREQUAL GNU)
    add_compile_options(-Wno-subobject-linkage)
endif()
