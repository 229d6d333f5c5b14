# dtv_describe(PROGRAM): the program writes its manual page and its bash completion, both from the description of its
# command line. Install.cmake installs them.
function(dtv_describe program)
  if(DTV_PLATFORM_SDK)
    return() # programs of another platform may not run here
  endif()
  set(page ${CMAKE_BINARY_DIR}/share/man/man1/${program}.1)
  set(completion ${CMAKE_BINARY_DIR}/share/bash-completion/completions/${program})
  file(MAKE_DIRECTORY ${CMAKE_BINARY_DIR}/share/man/man1 ${CMAKE_BINARY_DIR}/share/bash-completion/completions)
  add_custom_command(OUTPUT ${page} ${completion}
    COMMAND ${program} --print-man > ${page}
    COMMAND ${program} --print-completion > ${completion}
    DEPENDS ${program} COMMENT "Describing ${program}" VERBATIM)
  add_custom_target(${program}_pages ALL DEPENDS ${page} ${completion})
  set_property(GLOBAL APPEND PROPERTY DTV_MANUAL_PAGES ${page})
  set_property(GLOBAL APPEND PROPERTY DTV_COMPLETIONS ${completion})
endfunction()
