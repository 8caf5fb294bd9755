# Run by CPack after it has made the packages. CPack gives every package with a shared library maintainer scripts that
# call ldconfig; Debian's policy (8.1.1) wants the trigger, which the package has too, instead.
foreach(package IN LISTS CPACK_PACKAGE_FILES)
  get_filename_component(name ${package} NAME)
  if(NOT name MATCHES "^libk740-[0-9]")
    continue()
  endif()
  set(unpacked ${CPACK_TEMPORARY_DIRECTORY}/unpacked)
  execute_process(COMMAND dpkg-deb --raw-extract ${package} ${unpacked} COMMAND_ERROR_IS_FATAL ANY)
  file(REMOVE ${unpacked}/DEBIAN/postinst ${unpacked}/DEBIAN/postrm)
  execute_process(COMMAND dpkg-deb --root-owner-group -Zxz --build ${unpacked} ${package}
    OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
  file(REMOVE_RECURSE ${unpacked})
endforeach()
