# k740_add_tests(NAME SOURCES... LIBRARIES...): one GoogleTest executable, each of its tests a ctest test of its own,
# so that every test runs in a process of its own. SLOW: for tests that wait for minutes; they start first and may take
# five of them.
find_package(GTest REQUIRED)
include(GoogleTest)

# The tests' own code takes its time in compiling, so it is not optimised; the behaviour sanitizer, which doubles that
# time, watches the libraries alone. The thread sanitizer needs some optimisation to be fast enough.
if(K740_SANITIZE MATCHES undefined)
  set(K740_TEST_OPTIONS -O0 -fno-sanitize=undefined)
elseif(NOT K740_SANITIZE)
  set(K740_TEST_OPTIONS -O0)
endif()

function(k740_add_tests name)
  cmake_parse_arguments(ARG "SLOW" "" "SOURCES;LIBRARIES" ${ARGN})
  set(properties TIMEOUT 60)
  if(ARG_SLOW)
    set(properties TIMEOUT 300 COST 1000)
  endif()
  add_executable(${name} ${ARG_SOURCES})
  target_link_libraries(${name} PRIVATE ${ARG_LIBRARIES} k740_test_main GTest::gtest GTest::gmock k740_compile)
  target_compile_options(${name} PRIVATE ${K740_TEST_OPTIONS})
  gtest_discover_tests(${name} DISCOVERY_TIMEOUT 60 PROPERTIES ${properties})
endfunction()
