# The test framework, and functions that declare tests.
# Debian has no GoogleTest library for a foreign processor, so cross builds compile its source package.
if(CMAKE_CROSSCOMPILING)
  set(INSTALL_GTEST OFF)
  add_subdirectory(/usr/src/googletest ${CMAKE_BINARY_DIR}/googletest EXCLUDE_FROM_ALL SYSTEM)
else()
  find_package(GTest REQUIRED)
endif()
include(GoogleTest)

# Test sources compile without optimisation, because compiling them takes longer than running them. The code under test
# is optimised.
set(DTV_TEST_OPTIONS -O0)

# Test programs are linked with mold where it is installed, in a third of the processor time. What ships is not: with mold a
# call into another library takes an instruction or two more.
include(CheckLinkerFlag)
set(DTV_TEST_LINKER)
if(NOT CMAKE_CROSSCOMPILING)
  check_linker_flag(CXX -fuse-ld=mold DTV_HAS_MOLD)
  if(DTV_HAS_MOLD)
    # It tidies up before it says that it has ended, so the processor time of a build is all of it.
    set(DTV_TEST_LINKER -fuse-ld=mold -Wl,--no-fork)
  endif()
endif()

# One precompiled header serves all test programs. The compiler accepts it only with identical options, so the library
# that owns it uses the options of a program (-fPIE).
add_library(dtv_test_headers OBJECT ${PROJECT_SOURCE_DIR}/tests/support/test_headers.cpp)
set_target_properties(dtv_test_headers PROPERTIES POSITION_INDEPENDENT_CODE OFF)
target_compile_options(dtv_test_headers PRIVATE -fPIE ${DTV_TEST_OPTIONS})
target_link_libraries(dtv_test_headers PRIVATE dtv_warnings GTest::gmock)
target_precompile_headers(dtv_test_headers PRIVATE
  <gmock/gmock.h> <gtest/gtest.h> <algorithm> <atomic> <chrono> <condition_variable> <cstdint> <filesystem> <fstream>
  <functional> <future> <map> <memory> <mutex> <set> <sstream> <string> <thread> <vector>)
if(CMAKE_CXX_COMPILER_ID MATCHES Clang)
  # Omit file times, so that a compiler cache can share the object between folders.
  target_compile_options(dtv_test_headers PRIVATE "SHELL:-Xclang -fno-pch-timestamp")
endif()

# dtv_add_long_test(NAME PRESET TEST): TEST of the program NAME runs in PRESET only. Its COST makes it start before the
# short tests. A TEST that is in none of the sources is an error.
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

# dtv_add_test(NAME SOURCES files... LIBRARIES targets... [LONG preset:test...]): one GoogleTest program. Each of its
# tests becomes a ctest test and so runs in a process of its own, because the library has process-wide objects.
# The label of a long test, for example unit-only-tsan, names its preset. CMakePresets.json excludes it from all others.
function(dtv_add_test name)
  cmake_parse_arguments(TEST "" "TIMEOUT" "SOURCES;LIBRARIES;LABELS;LONG" ${ARGN})
  add_executable(${name} ${TEST_SOURCES})
  target_link_libraries(${name} PRIVATE dtv_warnings GTest::gmock GTest::gtest_main ${TEST_LIBRARIES})
  target_compile_options(${name} PRIVATE ${DTV_TEST_OPTIONS})
  target_link_options(${name} PRIVATE ${DTV_TEST_LINKER})
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
  # A test with the web engine runs several busy processes.
  set(processors 1)
  if("browser" IN_LIST TEST_LABELS)
    set(processors 2)
  endif()
  gtest_discover_tests(${name} TEST_FILTER "${short}" DISCOVERY_TIMEOUT 60
    PROPERTIES TIMEOUT ${TEST_TIMEOUT} LABELS "${TEST_LABELS}" PROCESSORS ${processors})
endfunction()

# dtv_wrap(NAME symbols...): calls of these functions reach the test's __wrap_SYMBOL, which may call __real_SYMBOL.
function(dtv_wrap name)
  foreach(symbol ${ARGN})
    target_link_options(${name} PRIVATE LINKER:--wrap=${symbol})
  endforeach()
endfunction()

# dtv_wrap_time(NAME): lets the test program control time with wrapped_time.h.
function(dtv_wrap_time name)
  target_sources(${name} PRIVATE ${PROJECT_SOURCE_DIR}/tests/support/wrapped_time.cpp)
  dtv_wrap(${name} pthread_cond_timedwait pthread_cond_clockwait clock_gettime usleep)
endfunction()
