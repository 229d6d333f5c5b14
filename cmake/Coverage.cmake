# Coverage counts what the tests run, by clang's own regions and branches: a branch is a condition in the source, and no
# edge that only an exception takes. The counters are relocated and atomic, so that processes share them in one file
# while they run. Nothing is lost when a process is killed or ends with _exit.
option(DTV_COVERAGE "Count executed lines and branches (clang only)" OFF)
if(DTV_COVERAGE)
  add_compile_options(-fprofile-instr-generate -fcoverage-mapping -fprofile-update=atomic
    "SHELL:-mllvm -runtime-counter-relocation")
  add_link_options(-fprofile-instr-generate)
endif()
