// The running spreadsheet program: a LibreOffice Calc that listens on a
// named pipe, reached over UNO. It is never started here; a user makes it
// listen once (`zpopup calc-setup`).
#ifndef ZEPHYR_EXCEL_RUNNING_CALC_H_
#define ZEPHYR_EXCEL_RUNNING_CALC_H_

#include <memory>
#include <string>

#include "zephyr/excel/calc_pipe.h"
#include "zephyr/excel/excel_export.h"
#include "zephyr/excel/workbook.h"
#include "zephyr/runtime/popup_class.h"

namespace zephyr::excel {

// The name the program shows in messages.
inline constexpr const char* kCalcName = "LibreOffice Calc";

// Opens the spreadsheet document the running Calc shows (its current one,
// else the first open spreadsheet) as a workbook whose active sheet is the
// one its window shows. Raises WorkbookError: kNoProgram when nothing
// listens on the pipe, kCannotOpen when Calc has no document open,
// kNotWorksheet when the current document is no spreadsheet.
std::unique_ptr<Workbook> OpenRunningCalc(const std::string& pipe = CalcPipeName());

// The running Calc as the place an import reads from.
SheetSource RunningCalc(const std::string& pipe = CalcPipeName());

// Exports the popup to a new sheet of the spreadsheet document the running
// Calc shows: the rows a workbook export writes, in one call, on a sheet
// named after the title as far as sheet names allow (numbered when the name
// is taken), which is then made active. Raises WorkbookError as
// OpenRunningCalc does; the sheet's name is in `sheet_name`.
ExportReport ExportToRunningCalc(PopupClass& popup, std::string* sheet_name = nullptr,
                                 const std::string& pipe = CalcPipeName());

}  // namespace zephyr::excel

#endif  // ZEPHYR_EXCEL_RUNNING_CALC_H_
