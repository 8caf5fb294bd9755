# Builds the installed examples against the installed library, as their page tells.
include(${CMAKE_CURRENT_LIST_DIR}/steps.cmake)

set(build ${INSTALLATION}.examples)
file(REMOVE_RECURSE ${build})
run(${CMAKE_COMMAND} -G Ninja -S ${INSTALLATION}/share/doc/libk740-dev/examples -B ${build}
  -DCMAKE_C_COMPILER=${C_COMPILER} -DCMAKE_CXX_COMPILER=${CXX_COMPILER} -DCMAKE_PREFIX_PATH=${INSTALLATION})
run(${CMAKE_COMMAND} --build ${build})
expect_files(${build} broadcast_file monitor_zone)
