# Installs the library with its headers, CMake package and pkg-config file; on a desktop also the host platform, the
# service and the tools. `cpack` makes a Debian package of the same files.
include(CMakePackageConfigHelpers)

# Programs look for the library in ../lib, so the folder must not differ between distributions.
set(CMAKE_INSTALL_LIBDIR lib)
set(library_headers ${PROJECT_SOURCE_DIR}/src/platform_support/browserdvbapi/include)

install(TARGETS browserdvbapi LIBRARY DESTINATION lib)
# A browser cannot compile the singleton template, because it has no platform headers.
install(DIRECTORY ${library_headers}/ DESTINATION include/browserdvbapi PATTERN singleton.h EXCLUDE)
if(NOT DTV_SANITIZE AND NOT DTV_COVERAGE)
  install(FILES $<TARGET_FILE:browserdvbapi>.debug DESTINATION lib/.debug)
endif()
foreach(file browserdvbapi.pc browserdvbapiConfig.cmake)
  configure_file(${CMAKE_CURRENT_LIST_DIR}/${file}.in ${CMAKE_BINARY_DIR}/install/${file} @ONLY)
endforeach()
write_basic_package_version_file(${CMAKE_BINARY_DIR}/install/browserdvbapiConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_BINARY_DIR}/install/browserdvbapi.pc DESTINATION lib/pkgconfig)
install(FILES ${CMAKE_BINARY_DIR}/install/browserdvbapiConfig.cmake
  ${CMAKE_BINARY_DIR}/install/browserdvbapiConfigVersion.cmake DESTINATION lib/cmake/browserdvbapi)

# For the browser's engineers: the guide and the examples that it uses.
install(FILES ${PROJECT_SOURCE_DIR}/docs/browser-guide.md DESTINATION share/doc/browserdvbapi)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/examples/ DESTINATION share/doc/browserdvbapi/examples)

if(DTV_PLATFORM_SDK)
  if(DTV_BUILD_SHELL)
    install(TARGETS dvbshell RUNTIME DESTINATION bin)
  endif()
  return()
endif()

install(TARGETS dtvplatform LIBRARY DESTINATION lib)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/platform/include/ ${PROJECT_SOURCE_DIR}/platform/idiom/
  DESTINATION include/dtvplatform)
set(programs dtvserviced dvbshell dtvctl dtvmon tsmake)
# Built with it, because CMake adds the current folder to the one that it replaces when it installs.
set_target_properties(${programs} PROPERTIES BUILD_WITH_INSTALL_RPATH ON INSTALL_RPATH "$ORIGIN/../lib")
install(TARGETS ${programs} RUNTIME DESTINATION bin)
get_property(pages GLOBAL PROPERTY DTV_MANUAL_PAGES)
get_property(completions GLOBAL PROPERTY DTV_COMPLETIONS)
install(FILES ${pages} DESTINATION share/man/man1)
install(FILES ${completions} DESTINATION share/bash-completion/completions)
# All that is installed, without the tests.
add_custom_target(product DEPENDS ${pages} ${completions})
add_dependencies(product browserdvbapi dtvplatform ${programs} bus_dissector sample_broadcast)
install(FILES ${CMAKE_BINARY_DIR}/share/dtv/dtvbus.lua ${CMAKE_BINARY_DIR}/share/dtv/sample.ts DESTINATION share/dtv)
# The documents keep their places, so that their links work.
install(FILES ${PROJECT_SOURCE_DIR}/README.md ${PROJECT_SOURCE_DIR}/CHANGELOG.md DESTINATION share/doc/browserdvbapi)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/docs DESTINATION share/doc/browserdvbapi)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME browserdvbapi)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_CONTACT "The browserdvbapi developers <browserdvbapi@localhost>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "Broadcast access for HbbTV browsers: desktop kit")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION "The library that an HbbTV browser loads, a desktop platform for it, a
reference DTV service over transport stream files, a browser host for the
command line, a broadcast generator, and the headers.")
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_LIBRARY_OUTPUT_DIRECTORY})
set(CPACK_DEBIAN_PACKAGE_SUGGESTS libboost-dev)
set(CPACK_POST_BUILD_SCRIPTS ${CMAKE_CURRENT_LIST_DIR}/CheckPackage.cmake)
include(CPack)
