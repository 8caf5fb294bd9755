# add_hosts(LANGUAGE): a host in C or CXX with the shared library, and one with the static library.
function(add_hosts language)
  set(suffix_C c)
  set(suffix_CXX cpp)
  foreach(library k740 static)
    set(host host_${language}_${library})
    add_executable(${host} ${CMAKE_CURRENT_FUNCTION_LIST_DIR}/host.${suffix_${language}})
    set_target_properties(${host} PROPERTIES
      C_STANDARD 99 C_STANDARD_REQUIRED ON C_EXTENSIONS OFF
      CXX_STANDARD 20 CXX_STANDARD_REQUIRED ON CXX_EXTENSIONS OFF)
    target_compile_options(${host} PRIVATE -Wall -Wextra -pedantic -Werror)
    target_link_libraries(${host} PRIVATE k740::${library})
  endforeach()
endfunction()
