# Installs the three components and moves them to where the other tests use them.
include(${CMAKE_CURRENT_LIST_DIR}/steps.cmake)

set(first ${INSTALLATION}.first)
file(REMOVE_RECURSE ${first} ${INSTALLATION})
foreach(component runtime dev tools)
  run(${CMAKE_COMMAND} --install ${BUILD_DIRECTORY} --prefix ${first} --component ${component})
endforeach()
file(RENAME ${first} ${INSTALLATION})

expect_files(${INSTALLATION} include/k740/k740.h ${LIBRARY_DIRECTORY}/libk740.a ${LIBRARY_DIRECTORY}/libk740.so
  ${LIBRARY_DIRECTORY}/libk740.so.1 ${LIBRARY_DIRECTORY}/libk740.so.${VERSION}
  ${LIBRARY_DIRECTORY}/pkgconfig/k740.pc ${LIBRARY_DIRECTORY}/cmake/k740/k740Config.cmake
  bin/k740-sim bin/k740-wavmatch bin/k740demo)

file(GLOB_RECURSE descriptions ${INSTALLATION}/*.cmake ${INSTALLATION}/*.pc)
foreach(description IN LISTS descriptions)
  file(READ ${description} text)
  foreach(directory ${BUILD_DIRECTORY} ${first})
    string(FIND "${text}" ${directory} place)
    if(NOT place EQUAL -1)
      message(FATAL_ERROR "${description} names ${directory}")
    endif()
  endforeach()
endforeach()
