// Opens a popup and prints its title, then optionally exports it to a
// workbook: the smallest host of the runtime and excel libraries.
//   runtime_host FOLDER/NAME [--export WORKBOOK.xlsx]
#include <filesystem>
#include <iostream>
#include <string>

#include "zephyr/excel/excel_export.h"
#include "zephyr/runtime/popup_class.h"
#include "zephyr/support/errors.h"

int main(int argc, char** argv) {
  const bool exporting = argc == 4 && std::string(argv[2]) == "--export";
  if (argc != 2 && !exporting) {
    std::cerr << "usage: runtime_host FOLDER/NAME [--export WORKBOOK.xlsx]\n";
    return 2;
  }
  const std::filesystem::path name(argv[1]);
  try {
    zephyr::PopupClass popup;
    popup.PopupPath(name.parent_path().string());
    popup.DataSource(name.filename().string());
    popup.OpenPopup();
    std::cout << popup.Title() << "\n";
    if (exporting) {
      const auto report = zephyr::excel::ExportToWorkbook(popup, argv[3]);
      std::cout << report.rows_written << " rows exported\n";
    }
  } catch (const zephyr::Error& error) {
    std::cerr << "runtime_host: " << error.Description() << "\n";
    return 1;
  }
  return 0;
}
