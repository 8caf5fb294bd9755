# Installs the library and builds the examples on their own against what is there.
function(run)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output)
  if(NOT result EQUAL 0)
    message(FATAL_ERROR "${ARGN}: ${result}\n${output}")
  endif()
endfunction()

file(REMOVE_RECURSE ${DIRECTORY})
foreach(component runtime dev)
  run(${CMAKE_COMMAND} --install ${BUILD_DIRECTORY} --prefix ${DIRECTORY}/prefix --component ${component})
endforeach()
run(${CMAKE_COMMAND} -S ${SOURCES} -B ${DIRECTORY}/build -DCMAKE_PREFIX_PATH=${DIRECTORY}/prefix
  -DCMAKE_C_COMPILER=${C_COMPILER} -DCMAKE_CXX_COMPILER=${CXX_COMPILER}
  -DCMAKE_C_FLAGS=-Werror -DCMAKE_CXX_FLAGS=-Werror)
run(${CMAKE_COMMAND} --build ${DIRECTORY}/build)

# Started without arguments it prints its usage and opens no socket, so that it may run anywhere.
execute_process(COMMAND ${DIRECTORY}/build/broadcast_file RESULT_VARIABLE result ERROR_VARIABLE output)
if(NOT result EQUAL 1 OR NOT output MATCHES "^usage: broadcast_file ")
  message(FATAL_ERROR "broadcast_file: ${result}\n${output}")
endif()
