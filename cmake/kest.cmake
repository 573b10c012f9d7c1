# The few helpers that make a new source or test file cost one line.

# kest_flags: what every target of this project is compiled with.
add_library(kest_flags INTERFACE)
target_compile_options(kest_flags INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Werror)
# The same bytes from every build: no path of the building machine goes into the files.
target_compile_options(kest_flags INTERFACE -ffile-prefix-map=${PROJECT_SOURCE_DIR}=.)
if(KEST_SYMBOLS)
  # Symbols also name the folder that the compiler ran in: in them all paths begin at the top of the sources.
  target_compile_options(kest_flags INTERFACE -ffile-prefix-map=${CMAKE_BINARY_DIR}=.)
endif()
if(KEST_SANITIZE)
  add_compile_options(-fsanitize=${KEST_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${KEST_SANITIZE})
endif()
# The tests count too: their copies of the inline functions of src/ are the ones that run.
if(KEST_COVERAGE AND WIN32)
  target_compile_options(kest_flags INTERFACE --coverage)
  add_link_options(--coverage)
elseif(KEST_COVERAGE)
  # An outcome is what one counter has more than another: none may lose a count to another thread.
  target_compile_options(kest_flags INTERFACE -fprofile-instr-generate -fcoverage-mapping -fprofile-update=atomic)
  add_link_options(-fprofile-instr-generate)
endif()
if(WIN32 AND CMAKE_SIZEOF_VOID_P EQUAL 4)
  # Hosts built by other compilers call with a stack aligned to 4 bytes only.
  target_compile_options(kest_flags INTERFACE -mstackrealign)
endif()

# kest_layer(<name> USES <layers...> FILES <sources...>): one folder of src/ as the static library kest_<name>.
function(kest_layer name)
  cmake_parse_arguments(LAYER "" "" "USES;FILES" ${ARGN})
  add_library(kest_${name} STATIC ${LAYER_FILES})
  target_include_directories(kest_${name} PUBLIC ${PROJECT_SOURCE_DIR}/src)
  target_compile_options(kest_${name} PRIVATE -ffunction-sections -fdata-sections $<$<BOOL:${KEST_SYMBOLS}>:-g>)
  list(TRANSFORM LAYER_USES PREPEND kest_)
  target_link_libraries(kest_${name} PUBLIC ${LAYER_USES} PRIVATE kest_flags)
endfunction()

# kest_test_flags: what a GoogleTest program uses. It is compiled more often than it runs: the code under test is
# optimised as it ships, that of the tests hardly.
add_library(kest_test_flags INTERFACE)
target_link_libraries(kest_test_flags INTERFACE gmock_main kest_flags)
target_compile_options(kest_test_flags INTERFACE $<$<CONFIG:Release>:-O1>)

# kest_test(<name> [USES <libraries...>] [ENVIRONMENT <NAME=value...>] FILES <sources...>): one GoogleTest program, run
# whole by ctest (under Wine when cross-compiled).
function(kest_test name)
  cmake_parse_arguments(TEST "" "" "USES;FILES;ENVIRONMENT" ${ARGN})
  add_executable(${name} ${TEST_FILES})
  target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR}/tests)
  target_compile_definitions(${name} PRIVATE KEST_VECTORS="${PROJECT_SOURCE_DIR}/tests/vectors")
  target_link_libraries(${name} PRIVATE ${TEST_USES} kest_test_flags)
  target_precompile_headers(${name} REUSE_FROM kest_test_headers)
  add_test(NAME ${name} COMMAND ${name})
  set_tests_properties(${name} PROPERTIES TIMEOUT 900 ENVIRONMENT "${TEST_ENVIRONMENT}")
endfunction()

# kest_fuzz(<name> [USES <libraries...>] FILES <sources...>): one fuzz target, the program fuzz_<name>. With KEST_FUZZ it
# is a libFuzzer program, which scripts/fuzz runs; otherwise it replays tests/fuzz/corpus/<name> and is run by ctest.
function(kest_fuzz name)
  cmake_parse_arguments(FUZZ "" "" "USES;FILES" ${ARGN})
  set(corpus ${PROJECT_SOURCE_DIR}/tests/fuzz/corpus/${name})
  if(NOT KEST_FUZZ)
    kest_test(fuzz_${name} USES ${FUZZ_USES} FILES ${FUZZ_FILES} ${PROJECT_SOURCE_DIR}/tests/fuzz/replay.cpp)
    target_compile_definitions(fuzz_${name} PRIVATE KEST_CORPUS="${corpus}")
    return()
  endif()
  add_executable(fuzz_${name} ${FUZZ_FILES} ${PROJECT_SOURCE_DIR}/tests/fuzz/fuzzer.cpp)
  target_include_directories(fuzz_${name} PRIVATE ${PROJECT_SOURCE_DIR}/tests)
  target_compile_definitions(fuzz_${name} PRIVATE KEST_VECTORS="${PROJECT_SOURCE_DIR}/tests/vectors")
  target_link_libraries(fuzz_${name} PRIVATE ${FUZZ_USES} gmock kest_flags)
  target_link_options(fuzz_${name} PRIVATE -fsanitize=fuzzer)
  add_dependencies(fuzzers fuzz_${name})
endfunction()
