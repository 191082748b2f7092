# Desktop integration of the editor (its menu entry, the popup file type, the
# icon in the hicolor theme, the AppStream description) and the programs'
# manual pages.

if(TARGET zpopup-edit)
  set(zephyr_packaging ${PROJECT_SOURCE_DIR}/packaging)
  install(FILES ${zephyr_packaging}/zpopup-edit.desktop
    DESTINATION ${CMAKE_INSTALL_DATADIR}/applications)
  install(FILES ${zephyr_packaging}/zephyr-popup.xml
    DESTINATION ${CMAKE_INSTALL_DATADIR}/mime/packages)
  install(FILES ${zephyr_packaging}/io.github.zephyrpopup.Editor.metainfo.xml
    DESTINATION ${CMAKE_INSTALL_DATADIR}/metainfo)
  install(FILES ${zephyr_packaging}/zpopup-edit.svg
    DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/scalable/apps)
  foreach(size 16 22 24 32 48 64 128 256)
    install(FILES ${zephyr_packaging}/icons/zpopup-edit-${size}.png
      DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/${size}x${size}/apps
      RENAME zpopup-edit.png)
  endforeach()
endif()

install(FILES ${PROJECT_SOURCE_DIR}/README.md DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/zephyr-popup)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/docs/ DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/zephyr-popup)

install(FILES ${PROJECT_SOURCE_DIR}/packaging/zpopup.bash-completion
  DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions RENAME zpopup)

# Manual pages, made from the programs' own --help texts so that they agree.
find_package(Python3 COMPONENTS Interpreter)
if(NOT Python3_Interpreter_FOUND)
  message(STATUS "ZephyrPopup: no Python 3 interpreter, so no manual pages")
  return()
endif()
set(zephyr_man_pages "")
function(zephyr_man_page program summary)
  set(page ${PROJECT_BINARY_DIR}/man/${program}.1)
  add_custom_command(OUTPUT ${page}
    COMMAND ${CMAKE_COMMAND} -E make_directory ${PROJECT_BINARY_DIR}/man
    COMMAND ${Python3_EXECUTABLE} ${PROJECT_SOURCE_DIR}/scripts/make-man.py
      $<TARGET_FILE:${program}> ${page} ${summary} ${ARGN}
    DEPENDS ${program} ${PROJECT_SOURCE_DIR}/scripts/make-man.py
    COMMENT "Manual page of ${program}")
  set(zephyr_man_pages ${zephyr_man_pages} ${page} PARENT_SCOPE)
  install(FILES ${page} DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
endfunction()
zephyr_man_page(zpopup "read, check, create, import and export popups" --commands)
if(TARGET zpopup-edit)
  zephyr_man_page(zpopup-edit "edit a popup, its design and its items, in a window")
endif()
add_custom_target(zephyr_man_pages ALL DEPENDS ${zephyr_man_pages})
