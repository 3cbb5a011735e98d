# Makes one object of the stack's archive, in which each function NAME of NAMES has a second name, stack_NAME. Used by
# Stack.cmake with cmake -P; ARCHIVE, OBJECT, LINKER, OBJDUMP and OBJCOPY are paths.
set(whole ${OBJECT}.whole)
execute_process(COMMAND ${LINKER} -r --whole-archive ${ARCHIVE} -o ${whole} COMMAND_ERROR_IS_FATAL ANY)
execute_process(COMMAND ${OBJDUMP} -t ${whole} OUTPUT_VARIABLE symbols COMMAND_ERROR_IS_FATAL ANY)
foreach(name IN LISTS NAMES)
    # Such as: 000000000003e4c0 g     F .text  000000000000008c rand_u32
    if(NOT symbols MATCHES "\n([0-9a-f]+) g +F ([.a-z]+)[ \t][^\n]* ${name}\n")
        message(FATAL_ERROR "${ARCHIVE} defines no function ${name}")
    endif()
    list(APPEND second_names --add-symbol stack_${name}=${CMAKE_MATCH_2}:0x${CMAKE_MATCH_1},global,function)
endforeach()
execute_process(COMMAND ${OBJCOPY} ${second_names} ${whole} ${OBJECT} COMMAND_ERROR_IS_FATAL ANY)
file(REMOVE ${whole})
