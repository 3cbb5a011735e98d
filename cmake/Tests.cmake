# How the tests of a folder are compiled. Most of that work is templates of the mocks and of the test framework, the same
# in each source: several sources together need a fifth of the time. -DCMAKE_UNITY_BUILD=OFF compiles each alone.
if(NOT DEFINED CMAKE_UNITY_BUILD)
    set(CMAKE_UNITY_BUILD ON)
endif()
set(CMAKE_UNITY_BUILD_BATCH_SIZE 9)

# Optimising a test takes longer than running it does.
add_compile_options(-O0)

# A test's class of an unnamed namespace then seems to stand in an included file.
if(CMAKE_CXX_COMPILER_ID STREQUAL GNU)
    add_compile_options(-Wno-subobject-linkage)
endif()
