# Installs the packages below a directory and looks at what is there.
include(${CMAKE_CURRENT_LIST_DIR}/root.cmake)

file(REMOVE_RECURSE ${ROOT})
file(MAKE_DIRECTORY ${ROOT}/var/lib/dpkg/updates ${ROOT}/var/lib/dpkg/info)
file(TOUCH ${ROOT}/var/lib/dpkg/status ${ROOT}/var/lib/dpkg/available)
file(GLOB packages ${PACKAGES}/*.deb)
dpkg(--install ${packages})

foreach(package libk740-1 libk740-dev k740-tools)
  expect_files(${ROOT}/usr/share/doc/${package} copyright changelog.Debian.gz)
endforeach()
expect_files(${ROOT}/usr bin/k740-sim bin/k740-wavmatch bin/k740demo include/k740/k740.h
  ${LIBRARY_DIRECTORY}/libk740.a ${LIBRARY_DIRECTORY}/libk740.so ${LIBRARY_DIRECTORY}/libk740.so.1
  ${LIBRARY_DIRECTORY}/pkgconfig/k740.pc ${LIBRARY_DIRECTORY}/cmake/k740/k740Config.cmake
  share/man/man1/k740-sim.1.gz share/man/man1/k740-wavmatch.1.gz share/man/man1/k740demo.1.gz
  share/man/man3/K740_Initialize.3.gz share/man/man3/PTASKSTATUS.3.gz share/man/man7/k740.7.gz
  share/doc/libk740-dev/html/index.html share/k740/announcement.wav)

# what the packages need of others
foreach(package IN LISTS packages)
  run(dpkg-deb --field ${package} Package Depends)
  string(APPEND needs "${output}")
endforeach()
foreach(need "libk740-1\nDepends: libc6 \\(>= " "libk740-dev\nDepends: libk740-1 \\(= ${VERSION}-1\\)"
    "k740-tools\nDepends: libk740-1 \\(= ${VERSION}-1\\), .*libsndfile1")
  if(NOT needs MATCHES ${need})
    message(FATAL_ERROR "${need} is not in\n${needs}")
  endif()
endforeach()

# what other packages need of the library: every exported name, since the version in which it came
run(nm --dynamic --defined-only --format=just-symbols ${ROOT}/usr/${LIBRARY_DIRECTORY}/libk740.so)
string(REGEX MATCHALL "[^\n]+" exported "${output}")
file(GLOB symbols ${ROOT}/var/lib/dpkg/info/libk740-1*.symbols)
file(STRINGS ${symbols} listed REGEX "^ ")
list(TRANSFORM listed REPLACE "^ ([^@]+)@Base .*" "\\1")
list(SORT exported)
list(SORT listed)
if(NOT "${listed}" STREQUAL "${exported}")
  message(FATAL_ERROR "The package lists the symbols ${listed}; the library exports ${exported}")
endif()

# the loader finds the library
file(MAKE_DIRECTORY ${ROOT}/etc)
file(WRITE ${ROOT}/etc/ld.so.conf "/usr/${LIBRARY_DIRECTORY}\n")
run(${as_root} ldconfig -r ${ROOT})
run(ldconfig -p -C ${ROOT}/etc/ld.so.cache)
if(NOT output MATCHES "libk740.so.1 .*=> /usr/${LIBRARY_DIRECTORY}/libk740.so.1")
  message(FATAL_ERROR "ldconfig does not know the library:\n${output}")
endif()
