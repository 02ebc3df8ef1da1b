# What Debian wants of files that an ordinary installation leaves alone; run by CPack on each tree
# before it becomes a package.
foreach(component IN LISTS CPACK_COMPONENTS_ALL)
  set(tree ${CPACK_TEMPORARY_DIRECTORY}/${component})
  string(TOUPPER ${component} upper)
  set(documents ${tree}/usr/share/doc/${CPACK_DEBIAN_${upper}_PACKAGE_NAME})
  file(COPY_FILE ${CMAKE_CURRENT_LIST_DIR}/changelog ${documents}/changelog.Debian)
  file(CHMOD ${documents}/changelog.Debian
    PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)
  set(overrides ${CMAKE_CURRENT_LIST_DIR}/${CPACK_DEBIAN_${upper}_PACKAGE_NAME}.overrides)
  if(EXISTS ${overrides})
    set(place ${tree}/usr/share/lintian/overrides)
    file(MAKE_DIRECTORY ${place})
    file(COPY_FILE ${overrides} ${place}/${CPACK_DEBIAN_${upper}_PACKAGE_NAME})
    file(CHMOD ${place}/${CPACK_DEBIAN_${upper}_PACKAGE_NAME}
      PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)
  endif()
  # The compiler's name in each program helps nobody.
  file(GLOB programs ${tree}/usr/bin/tessarine-batch ${tree}/usr/lib/tessarine/tessarine*
    ${tree}/usr/lib/tessarine/*.so ${tree}/usr/lib/tessarine/glibc-hwcaps/*/*.so)
  execute_process(COMMAND strip --remove-section=.comment --remove-section=.note ${programs}
    COMMAND_ERROR_IS_FATAL ANY)
  file(GLOB packed ${documents}/changelog.Debian ${tree}/usr/share/man/man1/*.1)
  execute_process(COMMAND gzip -9nf ${packed} COMMAND_ERROR_IS_FATAL ANY)
endforeach()
