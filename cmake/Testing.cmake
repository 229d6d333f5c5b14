# dtv_add_test(NAME sources... LIBRARIES targets...): one GoogleTest program; every test in it becomes a ctest test of
# its own and so runs in a process of its own, which the library's process-wide objects need.
# Where no GoogleTest is installed for the target it is built from the sources that Debian has of it.
if(CMAKE_CROSSCOMPILING)
  set(INSTALL_GTEST OFF)
  add_subdirectory(/usr/src/googletest ${CMAKE_BINARY_DIR}/googletest EXCLUDE_FROM_ALL SYSTEM)
else()
  find_package(GTest REQUIRED)
endif()
include(GoogleTest)

function(dtv_add_test name)
  cmake_parse_arguments(TEST "" "TIMEOUT" "SOURCES;LIBRARIES;LABELS" ${ARGN})
  add_executable(${name} ${TEST_SOURCES})
  target_link_libraries(${name} PRIVATE dtv_warnings GTest::gmock GTest::gtest_main ${TEST_LIBRARIES})
  if(NOT TEST_TIMEOUT)
    set(TEST_TIMEOUT 300)
  endif()
  gtest_discover_tests(${name} DISCOVERY_TIMEOUT 60
    PROPERTIES TIMEOUT ${TEST_TIMEOUT} LABELS "${TEST_LABELS}")
endfunction()

# dtv_wrap_time(NAME): the test program uses wrapped_time.h; what it calls goes through wrapped_time.cpp.
function(dtv_wrap_time name)
  target_sources(${name} PRIVATE ${PROJECT_SOURCE_DIR}/tests/support/wrapped_time.cpp)
  foreach(wrapped pthread_cond_timedwait pthread_cond_clockwait clock_gettime usleep)
    target_link_options(${name} PRIVATE LINKER:--wrap=${wrapped})
  endforeach()
endfunction()
