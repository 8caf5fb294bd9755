# A directory in which dpkg and ldconfig work as if it were the root of a system.
include(${CMAKE_CURRENT_LIST_DIR}/../install/steps.cmake)

execute_process(COMMAND id -u OUTPUT_VARIABLE user OUTPUT_STRIP_TRAILING_WHITESPACE)
set(as_root "")
if(NOT user EQUAL 0)
  set(as_root unshare --map-root-user)
endif()

# dpkg(ARGUMENTS...): nothing of this system's own dpkg is touched or asked, and what it leaves out is installed
function(dpkg)
  run(${as_root} dpkg --root=${ROOT} --log=${ROOT}.log --force-depends --path-include=/usr/share/* ${ARGN})
  set(output "${output}" PARENT_SCOPE)
endfunction()

# list_installed(VARIABLE): every file and directory of the packages, as paths from the root
function(list_installed variable)
  file(GLOB_RECURSE found LIST_DIRECTORIES true RELATIVE ${ROOT} ${ROOT}/usr/*)
  set(${variable} ${found} PARENT_SCOPE)
endfunction()
