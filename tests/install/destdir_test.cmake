# Stages the library for a package of another kind than ours.
include(${CMAKE_CURRENT_LIST_DIR}/steps.cmake)

set(ENV{DESTDIR} ${INSTALLATION}.destdir)
file(REMOVE_RECURSE $ENV{DESTDIR})
run(${CMAKE_COMMAND} --install ${BUILD_DIRECTORY} --prefix /opt/k740 --component runtime)
expect_files($ENV{DESTDIR} opt/k740/${LIBRARY_DIRECTORY}/libk740.so.1)
