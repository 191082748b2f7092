# The Debian package: `cpack -G DEB` in a build configured with
# CMAKE_INSTALL_PREFIX=/usr, which scripts/package.sh does.
set(CPACK_PACKAGE_NAME zephyr-popup)
set(CPACK_PACKAGE_VENDOR "ZephyrPopup")
set(CPACK_PACKAGE_CONTACT "ZephyrPopup developers <zephyr-popup@localhost>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "hierarchical pick lists: library, editor and tools")
set(CPACK_PACKAGE_DESCRIPTION
  "ZephyrPopup reads and writes popups: named hierarchical pick lists with a\n\
title, question levels, companion data fields and a tree of items, kept as a\n\
small text template beside a dBase III table. The package holds the runtime\n\
and editor libraries with their headers, CMake package and pkg-config files,\n\
the zpopup command line tool, the zpopup-edit desktop editor, the editor\n\
widget's Qt Designer plugin and the documentation.")
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGING_INSTALL_PREFIX ${CMAKE_INSTALL_PREFIX})
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
# The editor needs a Qt platform plugin, which no library links to.
set(CPACK_DEBIAN_PACKAGE_DEPENDS "qt6-qpa-plugins")
set(CPACK_DEBIAN_PACKAGE_SUGGESTS "qt6-designer")
include(CPack)
