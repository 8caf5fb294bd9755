# Builds hosts with the options that pkg-config tells.
include(${CMAKE_CURRENT_LIST_DIR}/steps.cmake)

set(compile_C ${C_COMPILER} -std=c99 ${CONSUMERS}/host.c)
set(compile_CXX ${CXX_COMPILER} -std=c++20 ${CONSUMERS}/host.cpp)
set(compile ${compile_${LANGUAGE}} -Wall -Wextra -pedantic -Werror)
set(libraries ${INSTALLATION}/${LIBRARY_DIRECTORY})
set(ENV{PKG_CONFIG_PATH} ${libraries}/pkgconfig)
set(host ${INSTALLATION}.pkg_config.${LANGUAGE})

run(pkg-config --modversion k740)
if(NOT output MATCHES "^${VERSION}\n$")
  message(FATAL_ERROR "The version is ${output}")
endif()

run(pkg-config --cflags --libs k740)
separate_arguments(options UNIX_COMMAND "${output}")
run(${compile} ${options} -Wl,-rpath,${libraries} -o ${host}.k740)
expect_host(${host}.k740 k740)

run(pkg-config --static --cflags --libs k740)
separate_arguments(options UNIX_COMMAND "${output}")
run(${compile} -static ${options} -o ${host}.static)
expect_host(${host}.static static)
