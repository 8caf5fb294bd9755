# k740_add_tests(NAME SOURCES... LIBRARIES...): one GoogleTest executable, each of its tests a ctest test of its own,
# so that every test runs in a process of its own.
find_package(GTest REQUIRED)
include(GoogleTest)

function(k740_add_tests name)
  cmake_parse_arguments(ARG "" "TIMEOUT" "SOURCES;LIBRARIES" ${ARGN})
  if(NOT ARG_TIMEOUT)
    set(ARG_TIMEOUT 60)
  endif()
  add_executable(${name} ${ARG_SOURCES})
  target_link_libraries(${name} PRIVATE ${ARG_LIBRARIES} k740_test_main GTest::gtest GTest::gmock k740_compile)
  gtest_discover_tests(${name} DISCOVERY_TIMEOUT 60 PROPERTIES TIMEOUT ${ARG_TIMEOUT})
endfunction()
