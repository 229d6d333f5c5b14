# Sanitizers apply to everything in the tree or to nothing: a half-instrumented process gives false reports.
if(DTV_SANITIZE)
  add_compile_options(-fsanitize=${DTV_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${DTV_SANITIZE})
endif()
if(DTV_BUILD_FUZZERS)
  add_compile_options(-fsanitize=fuzzer-no-link)
endif()
