# telephone_stack: the SIP stack (libre, librem), linked statically, with the functions of StackFunctions.def replaced.
#
# For each NAME of the list, the linker sends all calls of NAME to our_NAME, and the stack's object gets a second name for
# the function replaced, stack_NAME. The linker's own --wrap would leave out the calls from within the source file that
# defines NAME, such as those of sip_request in sip_drequestf.
find_package(PkgConfig REQUIRED)
pkg_check_modules(STACK REQUIRED libre librem)
pkg_check_modules(STACK_NEEDS REQUIRED IMPORTED_TARGET libssl libcrypto zlib)
find_library(LIBRE_ARCHIVE NAMES libre.a HINTS ${STACK_LIBDIR} REQUIRED)
find_library(LIBREM_ARCHIVE NAMES librem.a HINTS ${STACK_LIBDIR} REQUIRED)

set(list ${CMAKE_CURRENT_SOURCE_DIR}/StackFunctions.def)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${list})
file(STRINGS ${list} replaced REGEX "^STACK_FUNCTION")
list(TRANSFORM replaced REPLACE "^STACK_FUNCTION\\((.+)\\)$" "\\1")

set(object ${CMAKE_CURRENT_BINARY_DIR}/stack.o)
add_custom_command(OUTPUT ${object}
    COMMAND ${CMAKE_COMMAND} "-DNAMES=${replaced}" -DARCHIVE=${LIBRE_ARCHIVE} -DOBJECT=${object} -DLINKER=${CMAKE_LINKER}
            -DOBJDUMP=${CMAKE_OBJDUMP} -DOBJCOPY=${CMAKE_OBJCOPY} -P ${CMAKE_CURRENT_SOURCE_DIR}/NameStackFunctions.cmake
    DEPENDS ${LIBRE_ARCHIVE} NameStackFunctions.cmake
    COMMENT "Naming the functions of the SIP stack that are replaced"
    VERBATIM)

add_library(telephone_stack STATIC ${object})
set_source_files_properties(${object} PROPERTIES EXTERNAL_OBJECT ON GENERATED ON)
set_target_properties(telephone_stack PROPERTIES LINKER_LANGUAGE C)
target_include_directories(telephone_stack SYSTEM INTERFACE ${STACK_INCLUDE_DIRS})
# The configuration with which the stack's headers were packaged.
target_compile_definitions(telephone_stack INTERFACE HAVE_INTTYPES_H HAVE_STDBOOL_H HAVE_INET6 USE_OPENSSL)
target_link_libraries(telephone_stack INTERFACE ${LIBREM_ARCHIVE} PkgConfig::STACK_NEEDS m)
# Without --undefined the linker might leave the file out that defines them all.
list(TRANSFORM replaced REPLACE "(.+)" "LINKER:--undefined=our_\\1,--defsym=\\1=our_\\1" OUTPUT_VARIABLE replacements)
target_link_options(telephone_stack INTERFACE ${replacements})
