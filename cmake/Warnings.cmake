# One warning level for every target of the project. Both compilers must build without warnings.
add_library(dtv_warnings INTERFACE)
target_compile_options(dtv_warnings INTERFACE -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Wnon-virtual-dtor)
if(DTV_WERROR)
  target_compile_options(dtv_warnings INTERFACE -Werror)
endif()
