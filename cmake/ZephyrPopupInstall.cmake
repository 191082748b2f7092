# Installation: the libraries with their public headers, the programs, the
# Qt Designer plugin, the CMake package ZephyrPopup (imported targets
# ZephyrPopup::runtime, ::excel, ::editor and what they link) and the
# pkg-config modules zephyr-popup and zephyr-popup-editor. Included last, when
# every target exists.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

set(ZEPHYR_PACKAGE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/ZephyrPopup)

# Dependents before their dependencies: the order static linking needs.
set(zephyr_core_libraries zephyr_excel zephyr_workbook zephyr_runtime zephyr_table zephyr_support)
if(TARGET zephyr_calc)
  list(PREPEND zephyr_core_libraries zephyr_calc)
endif()
set(zephyr_editor_libraries)
foreach(target zephyr_editor zephyr_editor_models zephyr_platform)
  if(TARGET ${target})
    list(APPEND zephyr_editor_libraries ${target})
  endif()
endforeach()
set(zephyr_programs zpopup zephyr-debug)
if(TARGET zpopup-edit)
  list(APPEND zephyr_programs zpopup-edit)
endif()

# The pkg-config modules behind the PkgConfig:: targets the libraries link.
set(zephyr_pkg_module_DBUS dbus-1)
set(zephyr_pkg_module_LIBZIP libzip)
set(zephyr_pkg_module_EXPAT expat)
set(zephyr_pkg_module_XLSXWRITER xlsxwriter)

# A shared zephyr_excel carries the code of the static zephyr_workbook, so an
# installed excel needs neither the archive nor libzip and expat.
set(zephyr_exported_core ${zephyr_core_libraries})
get_target_property(zephyr_excel_type zephyr_excel TYPE)
if(zephyr_excel_type STREQUAL "SHARED_LIBRARY")
  get_target_property(links zephyr_excel INTERFACE_LINK_LIBRARIES)
  list(TRANSFORM links REPLACE "^zephyr_workbook$" "$<BUILD_INTERFACE:zephyr_workbook>")
  set_property(TARGET zephyr_excel PROPERTY INTERFACE_LINK_LIBRARIES "${links}")
  set_property(TARGET zephyr_workbook PROPERTY POSITION_INDEPENDENT_CODE ON)
  list(REMOVE_ITEM zephyr_exported_core zephyr_workbook)
endif()

# Include folders in the source or build tree hold for the build tree only;
# installed targets get the include folder from install(TARGETS ... INCLUDES).
function(zephyr_build_tree_includes target)
  get_target_property(dirs ${target} INTERFACE_INCLUDE_DIRECTORIES)
  if(NOT dirs)
    return()
  endif()
  set(result)
  foreach(dir IN LISTS dirs)
    if(NOT dir MATCHES "^\\$<")
      cmake_path(IS_PREFIX PROJECT_SOURCE_DIR "${dir}" NORMALIZE in_source)
      cmake_path(IS_PREFIX PROJECT_BINARY_DIR "${dir}" NORMALIZE in_build)
      if(in_source OR in_build)
        set(dir "$<BUILD_INTERFACE:${dir}>")
      endif()
    endif()
    list(APPEND result "${dir}")
  endforeach()
  set_property(TARGET ${target} PROPERTY INTERFACE_INCLUDE_DIRECTORIES "${result}")
endfunction()

# Collects from a link property of the targets the PkgConfig:: prefixes and
# the Qt components they name; PUBLIC_ONLY skips $<LINK_ONLY:...> entries.
function(zephyr_scan_links out_pkg out_qt property)
  cmake_parse_arguments(PARSE_ARGV 3 arg "PUBLIC_ONLY" "" "TARGETS")
  set(pkg)
  set(qt)
  foreach(target IN LISTS arg_TARGETS)
    get_target_property(links ${target} ${property})
    foreach(link IN LISTS links)
      if(arg_PUBLIC_ONLY AND link MATCHES "^\\$<LINK_ONLY:")
        continue()
      endif()
      if(link MATCHES "PkgConfig::([A-Za-z0-9_]+)")
        if(NOT DEFINED zephyr_pkg_module_${CMAKE_MATCH_1})
          message(FATAL_ERROR "${target} links PkgConfig::${CMAKE_MATCH_1}: add its module "
                              "as zephyr_pkg_module_${CMAKE_MATCH_1} in ${CMAKE_CURRENT_LIST_FILE}")
        endif()
        list(APPEND pkg ${CMAKE_MATCH_1})
      elseif(link MATCHES "Qt6?::([A-Za-z0-9_]+)")
        list(APPEND qt ${CMAKE_MATCH_1})
      endif()
    endforeach()
  endforeach()
  list(REMOVE_DUPLICATES pkg)
  list(REMOVE_DUPLICATES qt)
  set(${out_pkg} ${pkg} PARENT_SCOPE)
  set(${out_qt} ${qt} PARENT_SCOPE)
endfunction()

# PREFIX=module pairs for the package configuration.
function(zephyr_pkg_pairs out)
  set(pairs)
  foreach(prefix IN LISTS ARGN)
    list(APPEND pairs "${prefix}=${zephyr_pkg_module_${prefix}}")
  endforeach()
  set(${out} "${pairs}" PARENT_SCOPE)
endfunction()

function(zephyr_pkg_modules out)
  set(modules)
  foreach(prefix IN LISTS ARGN)
    list(APPEND modules ${zephyr_pkg_module_${prefix}})
  endforeach()
  list(JOIN modules " " modules)
  set(${out} "${modules}" PARENT_SCOPE)
endfunction()

function(zephyr_link_flags out)
  set(flags)
  foreach(target IN LISTS ARGN)
    get_target_property(name ${target} OUTPUT_NAME)
    if(NOT name)
      set(name ${target})
    endif()
    list(APPEND flags -l${name})
  endforeach()
  list(JOIN flags " " flags)
  set(${out} "${flags}" PARENT_SCOPE)
endfunction()

# --- Libraries and headers ---------------------------------------------------
file(RELATIVE_PATH zephyr_lib_from_bin ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_LIBDIR})
set(zephyr_header_dirs)
foreach(target IN LISTS zephyr_exported_core zephyr_editor_libraries)
  string(REGEX REPLACE "^zephyr_" "" name ${target})
  set_target_properties(${target} PROPERTIES
    EXPORT_NAME ${name}
    VERSION ${PROJECT_VERSION}
    SOVERSION ${PROJECT_VERSION_MAJOR}
    POSITION_INDEPENDENT_CODE ON
    INSTALL_RPATH "$ORIGIN")
  zephyr_build_tree_includes(${target})
  # For projects that add this one as a subdirectory.
  add_library(ZephyrPopup::${name} ALIAS ${target})
  get_target_property(source_dir ${target} SOURCE_DIR)
  if(IS_DIRECTORY ${source_dir}/include)
    list(APPEND zephyr_header_dirs ${source_dir}/include)
  endif()
endforeach()
list(REMOVE_DUPLICATES zephyr_header_dirs)
if(TARGET zephyr_calc)
  list(APPEND zephyr_header_dirs ${PROJECT_SOURCE_DIR}/excel/calc/include)
  # The office's libraries find theirs beside them: they are loaded from there.
  set_property(TARGET zephyr_calc APPEND PROPERTY INSTALL_RPATH ${ZEPHYR_OFFICE_PROGRAM_DIR})
endif()
foreach(dir IN LISTS zephyr_header_dirs)
  install(DIRECTORY ${dir}/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} FILES_MATCHING PATTERN "*.h")
endforeach()

install(TARGETS ${zephyr_exported_core} EXPORT ZephyrPopupTargets
  INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(EXPORT ZephyrPopupTargets NAMESPACE ZephyrPopup:: DESTINATION ${ZEPHYR_PACKAGE_DIR})
# The editor's targets go to a file of their own, loaded only with Qt.
if(zephyr_editor_libraries)
  install(TARGETS ${zephyr_editor_libraries} EXPORT ZephyrPopupEditorTargets
    INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
  install(EXPORT ZephyrPopupEditorTargets NAMESPACE ZephyrPopup::
    DESTINATION ${ZEPHYR_PACKAGE_DIR})
endif()

set_target_properties(${zephyr_programs} PROPERTIES INSTALL_RPATH "$ORIGIN/${zephyr_lib_from_bin}")
install(TARGETS ${zephyr_programs})

# --- Qt Designer plugin ------------------------------------------------------
# In Qt's own plugin layout under the library folder: installed into Qt's
# prefix it is where Designer looks; from any other prefix Designer finds it
# with QT_PLUGIN_PATH=<prefix>/<libdir>/qt6/plugins.
if(TARGET zephyr_designer_plugin)
  set(zephyr_designer_dir ${CMAKE_INSTALL_LIBDIR}/qt6/plugins/designer)
  file(RELATIVE_PATH zephyr_lib_from_designer ${CMAKE_INSTALL_FULL_LIBDIR}/qt6/plugins/designer
    ${CMAKE_INSTALL_FULL_LIBDIR})
  set_target_properties(zephyr_designer_plugin PROPERTIES
    INSTALL_RPATH "$ORIGIN/${zephyr_lib_from_designer}")
  # A static editor is linked into the module, the workbook archive with it.
  set_property(TARGET zephyr_workbook PROPERTY POSITION_INDEPENDENT_CODE ON)
  install(TARGETS zephyr_designer_plugin LIBRARY DESTINATION ${zephyr_designer_dir})
endif()

# --- CMake package -----------------------------------------------------------
zephyr_scan_links(core_pkg core_qt INTERFACE_LINK_LIBRARIES TARGETS ${zephyr_exported_core})
zephyr_pkg_pairs(ZEPHYR_CONFIG_CORE_PKG ${core_pkg})
set(ZEPHYR_CONFIG_EDITOR_PKG)
set(ZEPHYR_CONFIG_QT_COMPONENTS)
set(ZEPHYR_CONFIG_QT_VERSION)
set(ZEPHYR_CONFIG_WITH_EDITOR FALSE)
if(zephyr_editor_libraries)
  set(ZEPHYR_CONFIG_WITH_EDITOR TRUE)
  zephyr_scan_links(editor_pkg editor_qt INTERFACE_LINK_LIBRARIES
    TARGETS ${zephyr_editor_libraries})
  zephyr_pkg_pairs(ZEPHYR_CONFIG_EDITOR_PKG ${editor_pkg})
  list(JOIN editor_qt " " ZEPHYR_CONFIG_QT_COMPONENTS)
  set(ZEPHYR_CONFIG_QT_VERSION ${Qt6_VERSION_MAJOR}.${Qt6_VERSION_MINOR})
endif()
configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/ZephyrPopupConfig.cmake.in
  ${CMAKE_CURRENT_BINARY_DIR}/ZephyrPopupConfig.cmake
  INSTALL_DESTINATION ${ZEPHYR_PACKAGE_DIR})
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/ZephyrPopupConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/ZephyrPopupConfig.cmake
  ${CMAKE_CURRENT_BINARY_DIR}/ZephyrPopupConfigVersion.cmake
  DESTINATION ${ZEPHYR_PACKAGE_DIR})

# --- pkg-config --------------------------------------------------------------
# The prefix is found from the .pc file's own folder, so that an install
# under any --prefix or DESTDIR stays usable.
if(IS_ABSOLUTE "${CMAKE_INSTALL_LIBDIR}")
  message(FATAL_ERROR "CMAKE_INSTALL_LIBDIR must be relative to the prefix")
endif()
string(REGEX REPLACE "[^/]+" ".." ZEPHYR_PC_PREFIX "${CMAKE_INSTALL_LIBDIR}/pkgconfig")
set(ZEPHYR_PC_PREFIX "\${pcfiledir}/${ZEPHYR_PC_PREFIX}")
# Static libraries need their dependencies on every link line; shared ones
# only on a `pkg-config --static` one.
function(zephyr_pc_private out target)
  get_target_property(type ${target} TYPE)
  if(type STREQUAL "SHARED_LIBRARY")
    set(${out} "Requires.private" PARENT_SCOPE)
  else()
    set(${out} "Requires" PARENT_SCOPE)
  endif()
endfunction()

zephyr_scan_links(core_pkg core_qt LINK_LIBRARIES TARGETS ${zephyr_core_libraries})
zephyr_pkg_modules(modules ${core_pkg})
zephyr_pc_private(private zephyr_excel)
set(ZEPHYR_PC_REQUIRES "")
if(modules)
  set(ZEPHYR_PC_REQUIRES "${private}: ${modules}")
endif()
zephyr_link_flags(ZEPHYR_PC_LIBS ${zephyr_exported_core})
configure_file(${CMAKE_CURRENT_LIST_DIR}/zephyr-popup.pc.in ${CMAKE_CURRENT_BINARY_DIR}/zephyr-popup.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/zephyr-popup.pc
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

if(zephyr_editor_libraries)
  zephyr_scan_links(public_pkg public_qt INTERFACE_LINK_LIBRARIES PUBLIC_ONLY
    TARGETS ${zephyr_editor_libraries})
  zephyr_scan_links(all_pkg all_qt LINK_LIBRARIES TARGETS ${zephyr_editor_libraries})
  foreach(item IN LISTS public_pkg)
    list(REMOVE_ITEM all_pkg ${item})
  endforeach()
  foreach(item IN LISTS public_qt)
    list(REMOVE_ITEM all_qt ${item})
  endforeach()
  zephyr_pkg_modules(public_modules ${public_pkg})
  zephyr_pkg_modules(private_modules ${all_pkg})
  list(TRANSFORM public_qt PREPEND Qt6)
  list(TRANSFORM all_qt PREPEND Qt6)
  list(JOIN public_qt " " public_qt)
  list(JOIN all_qt " " all_qt)
  string(STRIP "zephyr-popup ${public_qt} ${public_modules}" requires)
  string(STRIP "${all_qt} ${private_modules}" private_requires)
  zephyr_pc_private(private ${zephyr_editor_libraries})
  if(private STREQUAL "Requires")
    string(STRIP "${requires} ${private_requires}" requires)
    set(private_requires "")
  endif()
  set(ZEPHYR_PC_REQUIRES "Requires: ${requires}")
  if(private_requires)
    string(APPEND ZEPHYR_PC_REQUIRES "\nRequires.private: ${private_requires}")
  endif()
  zephyr_link_flags(ZEPHYR_PC_LIBS ${zephyr_editor_libraries})
  configure_file(${CMAKE_CURRENT_LIST_DIR}/zephyr-popup-editor.pc.in
    ${CMAKE_CURRENT_BINARY_DIR}/zephyr-popup-editor.pc @ONLY)
  install(FILES ${CMAKE_CURRENT_BINARY_DIR}/zephyr-popup-editor.pc
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
endif()
