# Run by cpack between installation and packing: adds what Debian wants in each package, and sets the time of every file
# to SOURCE_DATE_EPOCH, so that the same files make the same package.
set(epoch $ENV{SOURCE_DATE_EPOCH})
if(NOT epoch)
    message(FATAL_ERROR "set SOURCE_DATE_EPOCH, as scripts/package does")
endif()

function(run)
    execute_process(COMMAND ${ARGN} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

function(finish_debian_package component)
    string(TOUPPER ${component} upper)
    set(root ${CPACK_TEMPORARY_DIRECTORY}/${component}/usr)
    set(documentation ${root}/share/doc/${CPACK_DEBIAN_${upper}_PACKAGE_NAME})
    file(COPY ${CPACK_FINISH_SOURCE}/packaging/debian/copyright DESTINATION ${documentation})
    execute_process(
        COMMAND ${CPACK_FINISH_SOURCE}/packaging/debian/changelog.py ${CPACK_FINISH_SOURCE}/CHANGELOG.md
                ${CPACK_PACKAGE_VERSION} ${CPACK_DEBIAN_PACKAGE_RELEASE} ${CPACK_PACKAGE_CONTACT}
        OUTPUT_FILE ${documentation}/changelog.Debian COMMAND_ERROR_IS_FATAL ANY)
    file(GLOB manuals ${root}/${CPACK_FINISH_MANUALS}/man*/*)
    run(gzip -9n ${documentation}/changelog.Debian ${manuals})
endfunction()

if(CPACK_GENERATOR STREQUAL DEB)
    foreach(component IN LISTS CPACK_COMPONENTS_ALL)
        finish_debian_package(${component})
    endforeach()
endif()
run(chmod -R u=rwX,go=rX ${CPACK_TEMPORARY_DIRECTORY})
run(find ${CPACK_TEMPORARY_DIRECTORY} -exec touch --no-dereference --date=@${epoch} {} +)
