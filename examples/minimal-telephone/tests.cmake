# The example in this tree.
target_link_libraries(minimal_telephone PRIVATE project_warnings)
set(library $<TARGET_FILE:communications_service>)
add_test(NAME examples.minimal_telephone
    COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/run.sh $<TARGET_FILE:minimal_telephone> ${library})
set_tests_properties(examples.minimal_telephone PROPERTIES LABELS examples)
