# The import from and export to workbooks, over the workbook readers.
pkg_check_modules(XLSXWRITER REQUIRED IMPORTED_TARGET xlsxwriter)

add_library(zephyr_excel
  ${CMAKE_CURRENT_SOURCE_DIR}/src/calc_pipe.cpp
  ${CMAKE_CURRENT_SOURCE_DIR}/src/excel_array.cpp
  ${CMAKE_CURRENT_SOURCE_DIR}/src/excel_export.cpp
  ${CMAKE_CURRENT_SOURCE_DIR}/src/excel_import.cpp
  ${CMAKE_CURRENT_SOURCE_DIR}/src/import_builders.cpp
  ${CMAKE_CURRENT_SOURCE_DIR}/src/import_sheet.cpp
  ${CMAKE_CURRENT_SOURCE_DIR}/src/import_tree.cpp
  ${CMAKE_CURRENT_SOURCE_DIR}/src/popup_redesign.cpp
  ${CMAKE_CURRENT_SOURCE_DIR}/src/sheet_rules.cpp
  ${CMAKE_CURRENT_SOURCE_DIR}/src/sheet_scans.cpp
)
target_include_directories(zephyr_excel PUBLIC ${CMAKE_CURRENT_SOURCE_DIR}/include
  # The runtime's internal item access, which building items from a sheet needs.
  PRIVATE ${PROJECT_SOURCE_DIR}/runtime/src)
target_link_libraries(zephyr_excel PUBLIC zephyr_runtime zephyr_workbook PRIVATE PkgConfig::XLSXWRITER)

include(${CMAKE_CURRENT_SOURCE_DIR}/calc/calc.cmake)
