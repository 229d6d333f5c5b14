# Links with mold where it is installed: a program of the tests in a third of the processor time.
include(CheckLinkerFlag)

if(NOT CMAKE_CROSSCOMPILING)
  check_linker_flag(CXX -fuse-ld=mold DTV_HAS_MOLD)
  if(DTV_HAS_MOLD)
    # It tidies up before it says that it has ended, so the processor time of a build is all of it.
    add_link_options(-fuse-ld=mold -Wl,--no-fork)
  endif()
endif()
