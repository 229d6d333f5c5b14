# Runs in cpack, after it made the package. Without dpkg-shlibdeps or file, cpack makes a package that depends on nothing,
# and only prints a warning. Such a package installs, but its programs do not start.
foreach(package ${CPACK_PACKAGE_FILES})
  execute_process(COMMAND dpkg-deb --field ${package} Depends OUTPUT_VARIABLE depends OUTPUT_STRIP_TRAILING_WHITESPACE)
  if(NOT depends)
    file(REMOVE ${package})
    message(FATAL_ERROR "${package} would depend on no other package; packing needs dpkg-shlibdeps (from dpkg-dev) and file")
  endif()
endforeach()
