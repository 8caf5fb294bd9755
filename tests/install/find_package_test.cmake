# Builds a project of hosts that finds the installation with find_package.
include(${CMAKE_CURRENT_LIST_DIR}/steps.cmake)

set(build ${INSTALLATION}.find_package.${LANGUAGE})
file(REMOVE_RECURSE ${build})
run(${CMAKE_COMMAND} -G Ninja -S ${CONSUMERS}/find_package -B ${build} -DLANGUAGE=${LANGUAGE}
  -DCMAKE_C_COMPILER=${C_COMPILER} -DCMAKE_CXX_COMPILER=${CXX_COMPILER} -DCMAKE_PREFIX_PATH=${INSTALLATION})
run(${CMAKE_COMMAND} --build ${build})
foreach(library k740 static)
  expect_host(${build}/host_${LANGUAGE}_${library} ${library})
endforeach()
