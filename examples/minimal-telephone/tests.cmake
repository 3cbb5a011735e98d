# The example in this tree, and built from installed files alone.
target_link_libraries(minimal_telephone PRIVATE project_warnings)
add_test(NAME examples.minimal_telephone
    COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/run.sh $<TARGET_FILE:minimal_telephone> $<TARGET_FILE:communications_service>)
set_tests_properties(examples.minimal_telephone PROPERTIES LABELS examples)
if(NOT SANITIZE AND NOT COVERAGE)
    add_test(NAME examples.minimal_telephone_installed
        COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/installed.sh ${PROJECT_BINARY_DIR} ${CMAKE_CXX_COMPILER})
    set_tests_properties(examples.minimal_telephone_installed PROPERTIES LABELS "examples;packages")
endif()
