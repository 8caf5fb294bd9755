# Builds the packages and lets lintian check them. Their tree starts with the objects of this one and their dates, so that
# ninja compiles what differs, if anything does.
include(${CMAKE_CURRENT_LIST_DIR}/../install/steps.cmake)

set(build ${PACKAGES}.build)
file(REMOVE_RECURSE ${build} ${PACKAGES})
file(MAKE_DIRECTORY ${build})
file(GLOB parts LIST_DIRECTORIES true ${BUILD_DIRECTORY}/*)
list(FILTER parts EXCLUDE REGEX "/(CMakeCache.txt|CMakeFiles|Testing|bench|tests|reference|[^/]*\\.cmake)$")
run(cp --archive ${parts} ${BUILD_DIRECTORY}/.ninja_log ${BUILD_DIRECTORY}/.ninja_deps ${build})

# with the compiler flags of this tree, not with the hardening
run(${SOURCES}/packaging/make ${build} ${PACKAGES} -DCMAKE_CXX_FLAGS=${FLAGS} -DK740_WERROR=ON
  -DCMAKE_C_COMPILER_LAUNCHER=${LAUNCHER} -DCMAKE_CXX_COMPILER_LAUNCHER=${LAUNCHER})
