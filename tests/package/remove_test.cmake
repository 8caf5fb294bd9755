# Removes the packages again.
include(${CMAKE_CURRENT_LIST_DIR}/root.cmake)

list_installed(installed)
if(NOT installed)
  message(FATAL_ERROR "Nothing is installed in ${ROOT}")
endif()
dpkg(--purge k740-tools libk740-dev libk740-1)
list_installed(left)
if(left)
  message(FATAL_ERROR "These are left: ${left}")
endif()
