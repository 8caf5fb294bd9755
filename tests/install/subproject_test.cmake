# Builds a project of hosts that contains the library's sources, unoptimised.
include(${CMAKE_CURRENT_LIST_DIR}/steps.cmake)

set(build ${INSTALLATION}.subproject)
file(REMOVE_RECURSE ${build})
run(${CMAKE_COMMAND} -G Ninja -S ${CONSUMERS}/subproject -B ${build} -DK740_SOURCES=${SOURCES}
  -DCMAKE_C_COMPILER=${C_COMPILER} -DCMAKE_CXX_COMPILER=${CXX_COMPILER} -DCMAKE_CXX_FLAGS=-O0
  -DCMAKE_CXX_COMPILER_LAUNCHER=${COMPILER_LAUNCHER})
run(${CMAKE_COMMAND} --build ${build})
foreach(language C CXX)
  foreach(library k740 static)
    expect_host(${build}/out/host_${language}_${library} ${library})
  endforeach()
endforeach()

run(${CMAKE_COMMAND} --install ${build} --prefix ${build}/prefix)
if(EXISTS ${build}/prefix)
  message(FATAL_ERROR "The library was installed with the project that contains it")
endif()
