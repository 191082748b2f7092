# The running spreadsheet program (LibreOffice Calc) over UNO, built only
# where LibreOffice's SDK is installed (libreoffice-dev, libreoffice-dev-common,
# ure): the C++ headers of the office types it uses are made by cppumaker.
set(zephyr_office_program /usr/lib/libreoffice/program)
find_program(ZEPHYR_CPPUMAKER cppumaker PATHS /usr/lib/libreoffice/sdk/bin NO_DEFAULT_PATH)
find_path(ZEPHYR_UNO_INCLUDE_DIR cppuhelper/bootstrap.hxx PATHS /usr/include/libreoffice)
find_file(ZEPHYR_UNO_TYPES types.rdb PATHS ${zephyr_office_program} NO_DEFAULT_PATH)
find_file(ZEPHYR_UNO_OFFICE_TYPES offapi.rdb PATHS ${zephyr_office_program}/types NO_DEFAULT_PATH)
find_library(ZEPHYR_UNO_CPPU uno_cppu PATHS /usr/lib/libreoffice/sdk/lib NO_DEFAULT_PATH)
find_library(ZEPHYR_UNO_CPPUHELPER uno_cppuhelpergcc3 PATHS /usr/lib/libreoffice/sdk/lib
  NO_DEFAULT_PATH)
find_library(ZEPHYR_UNO_SAL uno_sal PATHS /usr/lib/libreoffice/sdk/lib NO_DEFAULT_PATH)
foreach(part ZEPHYR_CPPUMAKER ZEPHYR_UNO_INCLUDE_DIR ZEPHYR_UNO_TYPES ZEPHYR_UNO_OFFICE_TYPES
    ZEPHYR_UNO_CPPU ZEPHYR_UNO_CPPUHELPER ZEPHYR_UNO_SAL)
  if(NOT ${part})
    message(STATUS "ZephyrPopup: no LibreOffice SDK (${part} not found), so imports and exports "
      "use workbook files only")
    return()
  endif()
endforeach()
message(STATUS "ZephyrPopup: the running LibreOffice Calc is reached over UNO")

set(zephyr_uno_types
  com.sun.star.beans.XPropertySet
  com.sun.star.bridge.UnoUrlResolver
  com.sun.star.connection.NoConnectException
  com.sun.star.container.XEnumerationAccess
  com.sun.star.container.XIndexAccess
  com.sun.star.container.XNamed
  com.sun.star.frame.Desktop
  com.sun.star.frame.XComponentLoader
  com.sun.star.frame.XController
  com.sun.star.frame.XDesktop2
  com.sun.star.frame.XModel
  com.sun.star.sheet.FormulaResult
  com.sun.star.sheet.XCalculatable
  com.sun.star.sheet.XCellRangeAddressable
  com.sun.star.sheet.XCellRangeData
  com.sun.star.sheet.XCellRangesQuery
  com.sun.star.sheet.XSheetCellCursor
  com.sun.star.sheet.XSheetCellRanges
  com.sun.star.sheet.XSpreadsheet
  com.sun.star.sheet.XSpreadsheetDocument
  com.sun.star.sheet.XSpreadsheets
  com.sun.star.sheet.XSpreadsheetView
  com.sun.star.sheet.XUniqueCellFormatRangesSupplier
  com.sun.star.sheet.XUsedAreaCursor
  com.sun.star.table.XCell
  com.sun.star.uno.DeploymentException
  com.sun.star.uno.XComponentContext
  com.sun.star.util.XCloseable
  com.sun.star.util.XNumberFormats
  com.sun.star.util.XNumberFormatsSupplier)
set(zephyr_uno_gen ${CMAKE_CURRENT_BINARY_DIR}/uno)
list(TRANSFORM zephyr_uno_types PREPEND -T OUTPUT_VARIABLE zephyr_uno_type_options)
add_custom_command(OUTPUT ${zephyr_uno_gen}/made
  COMMAND ${CMAKE_COMMAND} -E rm -rf ${zephyr_uno_gen}
  COMMAND ${CMAKE_COMMAND} -E make_directory ${zephyr_uno_gen}
  COMMAND ${ZEPHYR_CPPUMAKER} -Gc -O${zephyr_uno_gen} ${zephyr_uno_type_options}
    ${ZEPHYR_UNO_TYPES} ${ZEPHYR_UNO_OFFICE_TYPES}
  COMMAND ${CMAKE_COMMAND} -E touch ${zephyr_uno_gen}/made
  COMMENT "C++ headers of the office types")
add_custom_target(zephyr_uno_headers DEPENDS ${zephyr_uno_gen}/made)

# What a target needs to speak UNO: the headers, the definitions and the
# libraries, found where the office keeps them.
add_library(zephyr_uno INTERFACE)
add_dependencies(zephyr_uno zephyr_uno_headers)
target_include_directories(zephyr_uno SYSTEM INTERFACE ${ZEPHYR_UNO_INCLUDE_DIR} ${zephyr_uno_gen})
target_compile_definitions(zephyr_uno INTERFACE LINUX UNX CPPU_ENV=gcc3
  ZEPHYR_URE_BOOTSTRAP="vnd.sun.star.pathname:${zephyr_office_program}/fundamentalrc")
target_link_libraries(zephyr_uno INTERFACE ${ZEPHYR_UNO_CPPUHELPER} ${ZEPHYR_UNO_CPPU}
  ${ZEPHYR_UNO_SAL} "-Wl,-rpath-link,${zephyr_office_program}")
# The bridge makes the vtables of the office's remote objects at run time,
# which the sanitizer's type check cannot know: it is off where UNO is used.
if(ZEPHYR_SANITIZE)
  target_compile_options(zephyr_uno INTERFACE -fno-sanitize=vptr)
endif()
# The office's libraries find theirs beside them: whatever links them directly
# loads them from there.
target_link_options(zephyr_uno INTERFACE "$<BUILD_INTERFACE:-Wl,-rpath,${zephyr_office_program}>")

add_library(zephyr_calc ${CMAKE_CURRENT_SOURCE_DIR}/calc/src/running_calc.cpp)
add_dependencies(zephyr_calc zephyr_uno_headers)
target_include_directories(zephyr_calc PUBLIC ${CMAKE_CURRENT_SOURCE_DIR}/calc/include
  PRIVATE ${CMAKE_CURRENT_SOURCE_DIR}/src)
target_link_libraries(zephyr_calc PUBLIC zephyr_excel PRIVATE zephyr_uno)
# The office's libraries find theirs beside them: they are loaded from there.
set(ZEPHYR_OFFICE_PROGRAM_DIR ${zephyr_office_program} CACHE INTERNAL "where the office keeps its libraries")
set_target_properties(zephyr_calc PROPERTIES BUILD_RPATH ${zephyr_office_program})
