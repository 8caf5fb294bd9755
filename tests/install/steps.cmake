# Steps that the tests of an installation share.

# run(COMMAND ARGUMENTS...): ends the test when the command fails; its output is in ${output}
function(run)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output)
  if(NOT result EQUAL 0)
    list(JOIN ARGN " " command)
    message(FATAL_ERROR "${command}: ${result}\n${output}")
  endif()
  set(output "${output}" PARENT_SCOPE)
endfunction()

# expect_host(PROGRAM KIND): the program runs, and needs the shared library if KIND is k740 but not if it is static
function(expect_host program kind)
  run(${program})
  run(readelf --dynamic ${program})
  string(FIND "${output}" "[libk740.so.1]" needed)
  if(kind STREQUAL "k740" AND needed EQUAL -1)
    message(FATAL_ERROR "${program} does not use the shared library")
  elseif(kind STREQUAL "static" AND NOT needed EQUAL -1)
    message(FATAL_ERROR "${program} uses the shared library")
  endif()
endfunction()

# expect_files(DIRECTORY PATHS...)
function(expect_files directory)
  foreach(path IN LISTS ARGN)
    if(NOT EXISTS ${directory}/${path})
      message(FATAL_ERROR "${directory}/${path} is missing")
    endif()
  endforeach()
endfunction()
