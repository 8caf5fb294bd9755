# Debian packages of the three components, made by CPack: libk740-1, libk740-dev and k740-tools.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME k740)
set(CPACK_PACKAGE_CONTACT "K740 developers <k740@localhost.invalid>")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_COMPONENTS_ALL runtime dev tools)
set(CPACK_STRIP_FILES ON)
set(CPACK_POST_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/packaging/trigger_instead_of_scripts.cmake)
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "") # every package has its own
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
set(debian_version ${PROJECT_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE})

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME libk740-${PROJECT_VERSION_MAJOR})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA
  ${PROJECT_SOURCE_DIR}/packaging/shlibs ${PROJECT_SOURCE_DIR}/packaging/symbols
  ${PROJECT_SOURCE_DIR}/packaging/triggers)
set(CPACK_COMPONENT_RUNTIME_DESCRIPTION
"Control of a public-address and voice-alarm installation
Registers the devices of an IP public-address installation, broadcasts audio to
its zones, sets volumes, switches voice alarm, monitors zones and holds
intercom calls. This package has the shared library.")

set(CPACK_DEBIAN_DEV_PACKAGE_NAME libk740-dev)
set(CPACK_DEBIAN_DEV_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEV_PACKAGE_DEPENDS "${CPACK_DEBIAN_RUNTIME_PACKAGE_NAME} (= ${debian_version})")
set(CPACK_COMPONENT_DEV_DESCRIPTION
"Control of a public-address and voice-alarm installation (development)
Registers the devices of an IP public-address installation, broadcasts audio to
its zones, sets volumes, switches voice alarm, monitors zones and holds
intercom calls. This package has the header, the static library, what CMake and
pkg-config need, the manual pages, the reference and examples.")

set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME k740-tools)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION sound)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR})
set(CPACK_DEBIAN_TOOLS_PACKAGE_DEPENDS "${CPACK_DEBIAN_RUNTIME_PACKAGE_NAME} (= ${debian_version})")
set(CPACK_COMPONENT_TOOLS_DESCRIPTION
"Simulator of a public-address and voice-alarm installation
Plays the devices that the K740 control library drives, so that a host program
can be tried without hardware, in a private network. With a sample host and a
program that compares recordings.")

# What Debian wants of every package, and nobody else: installed with its component only
string(TIMESTAMP K740_CHANGELOG_DATE "%a, %d %b %Y %H:%M:%S +0000" UTC) # that of SOURCE_DATE_EPOCH where it is set
foreach(component runtime dev tools)
  string(TOUPPER ${component} upper)
  set(K740_PACKAGE ${CPACK_DEBIAN_${upper}_PACKAGE_NAME})
  set(directory ${PROJECT_BINARY_DIR}/packaging/${K740_PACKAGE})
  configure_file(${PROJECT_SOURCE_DIR}/packaging/changelog.in ${directory}/changelog.Debian @ONLY)
  configure_file(${PROJECT_SOURCE_DIR}/packaging/copyright ${directory}/copyright COPYONLY)
  execute_process(COMMAND gzip -9nf ${directory}/changelog.Debian COMMAND_ERROR_IS_FATAL ANY)
  install(FILES ${directory}/copyright ${directory}/changelog.Debian.gz
    DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/doc/${K740_PACKAGE} COMPONENT ${component} EXCLUDE_FROM_ALL)
endforeach()

include(CPack)
