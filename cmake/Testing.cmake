# The tests' framework, and how tests are declared.
# Where no GoogleTest is installed for the target it is built from the sources that Debian has of it.
if(CMAKE_CROSSCOMPILING)
  set(INSTALL_GTEST OFF)
  add_subdirectory(/usr/src/googletest ${CMAKE_BINARY_DIR}/googletest EXCLUDE_FROM_ALL SYSTEM)
else()
  find_package(GTest REQUIRED)
endif()
include(GoogleTest)

# Tests are compiled far more often than they run long, so their own sources are not optimised. What they link is.
set(DTV_TEST_OPTIONS -O0)

# The headers that nearly every test includes are compiled once for all test programs. The compiler takes them only where
# the options are the same, so the library that owns them has those of a program (-fPIE), and not of a library.
add_library(dtv_test_headers OBJECT ${PROJECT_SOURCE_DIR}/tests/support/test_headers.cpp)
set_target_properties(dtv_test_headers PROPERTIES POSITION_INDEPENDENT_CODE OFF)
target_compile_options(dtv_test_headers PRIVATE -fPIE ${DTV_TEST_OPTIONS})
target_link_libraries(dtv_test_headers PRIVATE dtv_warnings GTest::gmock)
target_precompile_headers(dtv_test_headers PRIVATE
  <gmock/gmock.h> <gtest/gtest.h> <algorithm> <atomic> <chrono> <condition_variable> <cstdint> <filesystem> <fstream>
  <functional> <future> <map> <memory> <mutex> <set> <sstream> <string> <thread> <vector>)
if(CMAKE_CXX_COMPILER_ID MATCHES Clang)
  # Without the time of the files in it: a compiler cache gives the same object to another folder.
  target_compile_options(dtv_test_headers PRIVATE "SHELL:-Xclang -fno-pch-timestamp")
endif()

# dtv_add_long_test(NAME PRESET TEST): TEST of the program NAME runs in PRESET alone. Its cost makes it start before the
# short tests. A test that none of the sources has is an error: it would run nowhere, or everywhere.
function(dtv_add_long_test name preset test)
  string(REPLACE "." ",[ \n]*" pattern ${test})
  set(found FALSE)
  foreach(source ${TEST_SOURCES})
    if(EXISTS ${CMAKE_CURRENT_SOURCE_DIR}/${source})
      file(READ ${CMAKE_CURRENT_SOURCE_DIR}/${source} text)
      if(text MATCHES "\\(${pattern}\\)")
        set(found TRUE)
      endif()
    endif()
  endforeach()
  if(NOT found)
    message(FATAL_ERROR "${name}: no source has the long test ${test}")
  endif()
  gtest_discover_tests(${name} TEST_FILTER ${test} DISCOVERY_TIMEOUT 60
    PROPERTIES TIMEOUT ${TEST_TIMEOUT} LABELS "${TEST_LABELS}-only-${preset}" COST 100)
endfunction()

# dtv_add_test(NAME SOURCES files... LIBRARIES targets... [LONG preset:test...]): one GoogleTest program; every test in
# it becomes a ctest test of its own and so runs in a process of its own, which the library's process-wide objects need.
# The label of a long test, like unit-only-tsan, names the one preset that it runs in; CMakePresets.json leaves it out of
# the others.
function(dtv_add_test name)
  cmake_parse_arguments(TEST "" "TIMEOUT" "SOURCES;LIBRARIES;LABELS;LONG" ${ARGN})
  add_executable(${name} ${TEST_SOURCES})
  target_link_libraries(${name} PRIVATE dtv_warnings GTest::gmock GTest::gtest_main ${TEST_LIBRARIES})
  target_compile_options(${name} PRIVATE ${DTV_TEST_OPTIONS})
  target_precompile_headers(${name} REUSE_FROM dtv_test_headers)
  if(NOT TEST_TIMEOUT)
    set(TEST_TIMEOUT 300)
  endif()
  set(short "*-")
  foreach(long ${TEST_LONG})
    string(REPLACE ":" ";" preset_and_test ${long})
    dtv_add_long_test(${name} ${preset_and_test})
    list(GET preset_and_test 1 test)
    string(APPEND short "${test}:")
  endforeach()
  gtest_discover_tests(${name} TEST_FILTER "${short}" DISCOVERY_TIMEOUT 60
    PROPERTIES TIMEOUT ${TEST_TIMEOUT} LABELS "${TEST_LABELS}")
endfunction()

# dtv_wrap_time(NAME): the test program uses wrapped_time.h; what it calls goes through wrapped_time.cpp.
function(dtv_wrap_time name)
  target_sources(${name} PRIVATE ${PROJECT_SOURCE_DIR}/tests/support/wrapped_time.cpp)
  foreach(wrapped pthread_cond_timedwait pthread_cond_clockwait clock_gettime usleep)
    target_link_options(${name} PRIVATE LINKER:--wrap=${wrapped})
  endforeach()
endfunction()
