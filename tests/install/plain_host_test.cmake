# Builds a C host without any help but the compiler's options.
include(${CMAKE_CURRENT_LIST_DIR}/steps.cmake)

set(sanitize "")
if(SANITIZE)
  set(sanitize -fsanitize=${SANITIZE})
endif()
set(libraries ${INSTALLATION}/${LIBRARY_DIRECTORY})
run(${C_COMPILER} -std=c99 -pedantic -Wall -Wextra -Werror ${sanitize} -I${INSTALLATION}/include ${CONSUMERS}/host.c
  -L${libraries} -lk740 -Wl,-rpath,${libraries} -o ${INSTALLATION}.host)
expect_host(${INSTALLATION}.host k740)
