# Two Debian packages of one build: the window needs the runner's package, which holds the helper
# program and the shared rooms, and a server needs no window.
file(STRINGS ${CMAKE_CURRENT_LIST_DIR}/changelog newest LIMIT_COUNT 1)
if(NOT newest MATCHES "^tessarine \\(([^-)]+)-([^-)]+)\\)" OR
   NOT CMAKE_MATCH_1 STREQUAL PROJECT_VERSION)
  message(FATAL_ERROR "packaging/debian/changelog begins with '${newest}'; expected an entry for "
    "version ${PROJECT_VERSION}")
endif()
set(CPACK_DEBIAN_PACKAGE_RELEASE ${CMAKE_MATCH_2})

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME tessarine)
set(CPACK_PACKAGE_VENDOR "The Tessarine maintainers")
set(CPACK_PACKAGE_CONTACT "The Tessarine maintainers <maintainers@tessarine.example>")
set(CPACK_PACKAGE_HOMEPAGE_URL https://tessarine.example/)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_VERBATIM_VARIABLES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_COMPONENTS_ALL runner)
if(TESSARINE_WINDOW)
  list(APPEND CPACK_COMPONENTS_ALL window)
endif()
set(CPACK_PRE_BUILD_SCRIPTS ${CMAKE_CURRENT_LIST_DIR}/finish.cmake)
set(CPACK_POST_BUILD_SCRIPTS ${CMAKE_CURRENT_LIST_DIR}/without_ldconfig.cmake)

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SOURCE tessarine)
set(CPACK_DEBIAN_PACKAGE_SECTION graphics)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
# Libraries are asked for what they are made of. Our own lie in a folder that only we look into.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR}/${TESSARINE_LIBRARY_FOLDER})

set(CPACK_DEBIAN_RUNNER_PACKAGE_NAME tessarine-batch)
set(CPACK_DEBIAN_RUNNER_DESCRIPTION
  "apply image functions to many pictures, without a window
Tessarine applies one chain of image functions to many pictures in one pass.
It reads some forty kinds of picture file and writes eighteen kinds, numbered
by their place. Picture files are read and written in a sandbox, so that a
damaged one costs itself and no other.
.
This package contains the program for scripts and servers, tessarine-batch.")

# tessarine-array is for machines that have it.
set(CPACK_DEBIAN_RUNNER_PACKAGE_SUGGESTS slurm-client)

set(CPACK_DEBIAN_WINDOW_PACKAGE_NAME tessarine)
set(CPACK_DEBIAN_WINDOW_PACKAGE_DEPENDS "tessarine-batch (= ${PROJECT_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE})")
# Folders, pages and results are opened in the desktop's own programs.
set(CPACK_DEBIAN_WINDOW_PACKAGE_RECOMMENDS xdg-utils)
set(CPACK_DEBIAN_WINDOW_PACKAGE_CONTROL_EXTRA ${CMAKE_CURRENT_LIST_DIR}/postrm)
set(CPACK_DEBIAN_WINDOW_DESCRIPTION
  "batch image processor with a live preview
Tessarine applies one chain of image functions to many pictures in one pass.
It reads some forty kinds of picture file and writes eighteen kinds, numbered
by their place. Picture files are read and written in a sandbox, so that a
damaged one costs itself and no other.
.
This package contains the window, in which pictures are chosen and functions
put together under a live preview.")

include(CPack)
