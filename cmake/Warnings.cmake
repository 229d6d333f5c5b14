# One warning level for every target of the project. Both compilers must build without warnings.
add_library(dtv_warnings INTERFACE)
target_compile_options(dtv_warnings INTERFACE -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Wnon-virtual-dtor)
if(CMAKE_CXX_COMPILER_ID MATCHES Clang)
  # Checks what locks/lock.h says of locks. Off is the warning that their types are not declared as locks for clang.
  target_compile_options(dtv_warnings INTERFACE
    -Wthread-safety -Wthread-safety-beta -Wno-thread-safety-attributes -DDTV_CHECK_LOCKS)
endif()
if(DTV_WERROR)
  target_compile_options(dtv_warnings INTERFACE -Werror)
endif()
