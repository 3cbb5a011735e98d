# The packages that cpack makes: Debian's, one for each component, and a tarball of everything.
set(CPACK_PACKAGE_NAME communications-service)
set(CPACK_PACKAGE_VENDOR "")
set(CPACK_PACKAGE_CONTACT "Communications Service Developers <maintainers@example.org>")
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_BINARY_DIR}/packages)
set(CPACK_GENERATOR DEB TGZ)
set(CPACK_STRIP_FILES ON)
set(CPACK_VERBATIM_VARIABLES ON)
set(CPACK_INSTALL_CMAKE_PROJECTS ${PROJECT_BINARY_DIR} ${PROJECT_NAME} ALL /)
set(CPACK_PRE_BUILD_SCRIPTS ${CMAKE_CURRENT_SOURCE_DIR}/finish_packages.cmake)
set(CPACK_FINISH_SOURCE ${PROJECT_SOURCE_DIR})
set(CPACK_FINISH_MANUALS ${CMAKE_INSTALL_MANDIR})

set(CPACK_COMPONENTS_ALL runtime development telephone)
if(TARGET python_client)
    list(APPEND CPACK_COMPONENTS_ALL python)
endif()
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_SOURCE communications-service)
set(CPACK_DEBIAN_PACKAGE_SECTION comm)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(same_version "(= ${PROJECT_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE})")

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME libcommunications-service${PROJECT_VERSION_MAJOR})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SHLIBDEPS ON)
# Every exported symbol has been there since the first release of this interface.
file(STRINGS ${PROJECT_SOURCE_DIR}/tests/abi/exported_symbols.txt symbols REGEX "^[^#]")
list(TRANSFORM symbols REPLACE "(.+)" " \\1@Base ${PROJECT_VERSION_MAJOR}.0.0\n")
list(JOIN symbols "" symbols)
file(CONFIGURE OUTPUT debian/symbols @ONLY CONTENT
    "libcommunications_service.so.${PROJECT_VERSION_MAJOR} ${CPACK_DEBIAN_RUNTIME_PACKAGE_NAME} #MINVER#\n${symbols}")
file(CONFIGURE OUTPUT debian/shlibs @ONLY CONTENT
    "libcommunications_service ${PROJECT_VERSION_MAJOR} ${CPACK_DEBIAN_RUNTIME_PACKAGE_NAME} (>= ${PROJECT_VERSION})\n")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA
    ${CMAKE_CURRENT_SOURCE_DIR}/debian/triggers
    ${CMAKE_CURRENT_BINARY_DIR}/debian/shlibs
    ${CMAKE_CURRENT_BINARY_DIR}/debian/symbols)
set(CPACK_DEBIAN_RUNTIME_DESCRIPTION
    "SIP communications service of a telephone - library
The communications service of a desk telephone's application framework. It
turns requests of applications into calls of the telephone's signalling, and
what happens to calls, lines and keys into events. A telephone's framework
loads it when it starts.")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libcommunications-service-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "${CPACK_DEBIAN_RUNTIME_PACKAGE_NAME} ${same_version}")
set(CPACK_DEBIAN_DEVELOPMENT_DESCRIPTION
    "SIP communications service of a telephone - development files
Headers of the service and of the platform that it requires, a default
platform to begin a port with, a client for C++, and what CMake and pkg-
config need to find them.")

set(CPACK_DEBIAN_TELEPHONE_PACKAGE_NAME telephone)
set(CPACK_DEBIAN_TELEPHONE_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_TELEPHONE_PACKAGE_DEPENDS "${CPACK_DEBIAN_RUNTIME_PACKAGE_NAME} ${same_version}")
set(CPACK_DEBIAN_TELEPHONE_PACKAGE_SUGGESTS "bash-completion, python3-telephone-client")
set(CPACK_DEBIAN_TELEPHONE_DESCRIPTION
    "SIP telephone for people, applications and tests
A telephone with lines, keys and lamps on the SIP communications service. It
has a console, a panel for browsers, a socket and HTTP for applications,
plays scripts in virtual time, and has an exchange of its own to call
without a network.")

set(CPACK_DEBIAN_PYTHON_PACKAGE_NAME python3-telephone-client)
set(CPACK_DEBIAN_PYTHON_PACKAGE_SECTION python)
set(CPACK_DEBIAN_PYTHON_PACKAGE_ARCHITECTURE all)
set(CPACK_DEBIAN_PYTHON_PACKAGE_DEPENDS "python3 (>= 3.9)")
set(CPACK_DEBIAN_PYTHON_PACKAGE_SUGGESTS "python3-pytest, telephone")
set(CPACK_DEBIAN_PYTHON_PACKAGE_CONTROL_EXTRA
    ${CMAKE_CURRENT_SOURCE_DIR}/debian/python/postinst ${CMAKE_CURRENT_SOURCE_DIR}/debian/python/prerm)
set(CPACK_DEBIAN_PYTHON_DESCRIPTION
    "SIP telephone - client for Python and plugin for pytest
Requests, events and the state of a running telephone for asyncio, over its
socket or HTTP, and fixtures that give each test a telephone of its own.")

include(CPack)
