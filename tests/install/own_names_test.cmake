# The static library shows its interface alone, and works in a host that has the names of its inside.
include(${CMAKE_CURRENT_LIST_DIR}/steps.cmake)

set(library ${INSTALLATION}/${LIBRARY_DIRECTORY}/libk740.a)
run(${NM} --extern-only --defined-only --format=just-symbols --quiet ${library})
string(REGEX MATCHALL "[^\n]+" names "${output}")
list(FILTER names EXCLUDE REGEX "^(K740_[A-Za-z]+|k740\\.o:)$")
if(names)
  message(FATAL_ERROR "These can be seen: ${names}")
endif()
run(readelf --section-groups --wide ${library})
if(output MATCHES COMDAT)
  message(FATAL_ERROR "A linker may take groups of a host for these:\n${output}")
endif()

set(host ${INSTALLATION}.own_names)
file(REMOVE_RECURSE ${host})
file(MAKE_DIRECTORY ${host})
run(${CXX_COMPILER} -std=c++20 -Wall -Wextra -pedantic -Werror -I${INSTALLATION}/include ${CONSUMERS}/own_names.cpp
  ${library} -pthread -o ${host}/host)
run(${CMAKE_COMMAND} -E chdir ${host} ${INSTALLATION}/bin/k740-sim --zcu 33@192.168.1.33 -- ./host)
