# Sanitizers and coverage watch everything that is compiled, except the test framework (tests/CMakeLists.txt).
if(KORVANE_SANITIZERS)
  add_compile_options(-fsanitize=${KORVANE_SANITIZERS} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${KORVANE_SANITIZERS})
endif()
if(KORVANE_COVERAGE)
  add_compile_options(-fprofile-instr-generate -fcoverage-mapping)
  add_link_options(-fprofile-instr-generate)
endif()
