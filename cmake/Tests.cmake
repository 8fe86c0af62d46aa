# Tests register themselves from the files on disk: a folder calls one of these and
# whatever *_test.cpp it holds is in the run.

# unit_tests(paraset LINKS frameutil_static) builds tests/unit/paraset/*_test.cpp as
# unit_paraset, one ctest entry.
function(unit_tests name)
  gtest_program(unit_${name} LABEL unit ${ARGN})
endfunction()

# gtest_program(name LABEL label LINKS libs...) builds every *_test.cpp of the
# current folder into one program with one ctest entry.
function(gtest_program name)
  cmake_parse_arguments(T "" "LABEL;TIMEOUT" "LINKS" ${ARGN})
  if(NOT T_TIMEOUT)
    set(T_TIMEOUT 120)
  endif()
  file(GLOB sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*_test.cpp)
  add_executable(${name} ${sources})
  target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR}/tests)
  # Most of what is compiled is tests, whose own speed matters to nobody.
  target_compile_options(${name} PRIVATE $<$<CONFIG:RelWithDebInfo>:-O1 -g1>)
  target_link_libraries(${name} PRIVATE
    project_flags ${T_LINKS} GTest::gmock GTest::gtest GTest::gtest_main)
  add_test(NAME ${name} COMMAND ${name})
  set_tests_properties(${name} PROPERTIES TIMEOUT ${T_TIMEOUT} LABELS ${T_LABEL})
endfunction()

# Makes every pooled block of a test program come from operator new, as in a build with a
# sanitizer, for tests that let the n-th allocation fail.
function(take_blocks_from_heap name)
  set(blocks ${PROJECT_SOURCE_DIR}/kelp/src/memory/blocks.cpp)
  target_sources(${name} PRIVATE ${blocks})
  target_compile_definitions(${name} PRIVATE KELP_BLOCKS_FROM_HEAP)
endfunction()

# fuzz_target(record LINKS frameutil_static), from fuzz/record/: target.cpp and corpus/. In
# every build it replays its corpus as a test; with FRAMEUTIL_LIBFUZZER it is a libFuzzer
# program.
function(fuzz_target name)
  cmake_parse_arguments(F "" "" "LINKS" ${ARGN})
  set(folder ${CMAKE_CURRENT_SOURCE_DIR})
  add_executable(fuzz_${name} ${folder}/target.cpp)
  target_include_directories(fuzz_${name} PRIVATE ${PROJECT_SOURCE_DIR}/fuzz)
  target_link_libraries(fuzz_${name} PRIVATE project_flags ${F_LINKS})
  if(FRAMEUTIL_LIBFUZZER)
    target_link_options(fuzz_${name} PRIVATE -fsanitize=fuzzer)
  else()
    target_sources(fuzz_${name} PRIVATE ${PROJECT_SOURCE_DIR}/fuzz/replay.cpp)
    add_test(NAME fuzz_${name} COMMAND fuzz_${name} ${folder}/corpus)
    set_tests_properties(fuzz_${name} PROPERTIES TIMEOUT 60 LABELS fuzz)
  endif()
endfunction()
