# add_python_test(NAME FILE LABEL): a test of pytest, with the Python client and its plugin from the build. Nothing in
# builds without a telephone, and with sanitizers, which would not see more of it than its own tests do.
function(add_python_test name file label)
    if(NOT TARGET telephone OR NOT TARGET python_client OR SANITIZE)
        return()
    endif()
    # The interpreter that sees Debian's modules.
    find_program(DEBIAN_PYTHON3 python3 PATHS /usr/bin NO_DEFAULT_PATH REQUIRED)
    get_target_property(package python_client BINARY_DIR)
    set(cache ${CMAKE_BINARY_DIR}/mypy)
    add_test(NAME ${name}
        COMMAND ${DEBIAN_PYTHON3} -m pytest -q -p no:cacheprovider ${CMAKE_CURRENT_SOURCE_DIR}/${file}
        WORKING_DIRECTORY ${CMAKE_CURRENT_SOURCE_DIR})
    set_tests_properties(${name} PROPERTIES
        LABELS ${label}
        TIMEOUT 120
        ENVIRONMENT "TELEPHONE=$<TARGET_FILE:telephone>;TELEPHONE_CHECK=events;PYTHONPATH=${package};PYTHONDONTWRITEBYTECODE=1;MYPY_CACHE_DIR=${cache}")
endfunction()
