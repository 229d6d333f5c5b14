# dtv_split_debug(TARGET): moves the debug information to a file beside the library. Debuggers find it by the library's
# debug link. Sanitizer builds keep it in the library, because their reports name source lines.
function(dtv_split_debug target)
  if(DTV_SANITIZE OR DTV_COVERAGE)
    return()
  endif()
  set(file $<TARGET_FILE:${target}>)
  add_custom_command(TARGET ${target} POST_BUILD
    COMMAND ${CMAKE_OBJCOPY} --only-keep-debug ${file} ${file}.debug
    COMMAND ${CMAKE_OBJCOPY} --strip-debug --add-gnu-debuglink=${file}.debug ${file}
    BYPRODUCTS ${CMAKE_LIBRARY_OUTPUT_DIRECTORY}/lib${target}.so.debug
    VERBATIM)
endfunction()
