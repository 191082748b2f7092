#include "exchange_commands.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <optional>

#include "cli_prompts.h"
#include "codepage_report.h"
#include "file_error.h"
#include "options.h"
#include "popup_name.h"
#include "terminal_progress.h"
#include "usage_error.h"
#include "zephyr/excel/excel_export.h"
#include "zephyr/excel/excel_import.h"
#ifdef ZEPHYR_WITH_CALC
#include "zephyr/excel/running_calc.h"
#endif
#include "zephyr/support/codepage.h"
#include "zephyr/support/variant.h"

namespace zephyr::cli {

const char* const kImportUsage =
    "usage: zpopup import WORKBOOK POPUP [--levels N] [--structure popup|sheet] [--strict]\n"
    "                     [--force]\n"
    "       zpopup import --calc POPUP [...]\n\n"
    "Imports the active sheet of WORKBOOK (.xlsx, .ods or .csv; - reads it from\n"
    "standard input) into POPUP, creating the popup when it does not exist, and\n"
    "saves it. --calc reads the sheet shown in the running LibreOffice Calc instead\n"
    "(see 'zpopup calc-setup'). Row 1 names the levels and fields; column 1 holds the keys of "
    "every\n"
    "row or of none. --levels gives the level count of a sheet without keys;\n"
    "--structure answers whether the popup keeps its own levels and fields (popup)\n"
    "or takes the sheet's (sheet) when they differ. Without them zpopup asks on the\n"
    "terminal, or exits 1. Keeping the popup's structure keeps all its questions\n"
    "and fields: the sheet's level columns fill its top levels, its companion\n"
    "columns its fields in order, and columns beyond them add levels and fields\n"
    "named by their headings. Fields widen to their longest value; a value over\n"
    "254 characters stops the import. Text the code page cannot hold is named on\n"
    "standard error; --strict refuses to save it. When another program saves the\n"
    "popup while the import runs, nothing is saved and zpopup exits 1; --force\n"
    "saves over it.\n";

const char* const kExportUsage =
    "usage: zpopup export POPUP WORKBOOK [--verbose]\n"
    "       zpopup export POPUP --calc [--verbose]\n\n"
    "Writes the popup to a new workbook that 'zpopup import' reads back: a heading\n"
    "row and one row per leaf with its key. WORKBOOK ends in .xlsx or .csv (UTF-8);\n"
    "- writes CSV to standard output. Items that cannot come back as they are\n"
    "(leaves above the deepest level, parents with companion values) are counted,\n"
    "listed with --verbose, and make the command exit 1; everything else is written.\n"
    "--calc writes the rows to a new sheet of the document open in the running\n"
    "LibreOffice Calc instead, and shows it (see 'zpopup calc-setup').\n";

namespace {

// The running LibreOffice Calc, where this build can reach it.
excel::SheetSource RunningCalcSource() {
#ifdef ZEPHYR_WITH_CALC
  return excel::RunningCalc();
#else
  throw UsageError{"--calc: this zpopup was built without LibreOffice's SDK"};
#endif
}

// Writes the popup to a new sheet in the running Calc; `written` names it.
excel::ExportReport ExportToCalc(PopupClass& popup, std::string& written) {
#ifdef ZEPHYR_WITH_CALC
  std::string sheet;
  try {
    excel::ExportReport report = excel::ExportToRunningCalc(popup, &sheet);
    written = "the sheet '" + sheet + "' in " + excel::kCalcName;
    return report;
  } catch (const excel::WorkbookError& error) {
    throw FileError{excel::kCalcName, error.reason()};
  }
#else
  (void)popup;
  (void)written;
  throw UsageError{"--calc: this zpopup was built without LibreOffice's SDK"};
#endif
}

// Standard input saved to a file the workbook readers can open: an archive
// as .xlsx (the readers tell .ods apart by content), anything else as .csv.
class StdinWorkbook {
 public:
  StdinWorkbook() {
    std::string bytes((std::istreambuf_iterator<char>(std::cin)), std::istreambuf_iterator<char>());
    char folder[] = "/tmp/zpopup-XXXXXX";
    if (!::mkdtemp(folder)) throw FileError{"-", std::strerror(errno)};
    folder_ = folder;
    path_ = folder_ + (bytes.starts_with("PK") ? "/stdin.xlsx" : "/stdin.csv");
    std::ofstream(path_, std::ios::binary) << bytes;
  }
  ~StdinWorkbook() {
    std::error_code ignored;
    std::filesystem::remove_all(folder_, ignored);
  }
  const std::string& Path() const { return path_; }

 private:
  std::string folder_;
  std::string path_;
};

int ExitCode(excel::ImportOutcome outcome) {
  switch (outcome) {
    case excel::ImportOutcome::kImported:
      return kSuccess;
    case excel::ImportOutcome::kRuleFailed:
    case excel::ImportOutcome::kCancelled:
      return kProblemsFound;
    default:
      return kUsageError;
  }
}

}  // namespace

int Import(const Arguments& args) {
  ParsedOptions options(args, {{"--levels", true},
                               {"--structure", true},
                               {"--strict", false},
                               {"--calc", false},
                               {"--force", false}});
  std::optional<int> levels;
  if (auto value = options.Value("--levels")) {
    double count = 0;
    if (!ParseNumber(*value, &count) || count < 1 || count > 99 ||
        count != static_cast<int>(count)) {
      throw UsageError{"--levels takes a whole number from 1 to 99, not '" + *value + "'"};
    }
    levels = static_cast<int>(count);
  }
  std::optional<MessageAnswer> structure;
  if (auto value = options.Value("--structure")) {
    if (*value != "popup" && *value != "sheet") {
      throw UsageError{"--structure takes popup or sheet, not '" + *value + "'"};
    }
    structure = *value == "popup" ? MessageAnswer::kYes : MessageAnswer::kNo;
  }
  const bool from_calc = options.Has("--calc");
  if (options.Positional().size() != (from_calc ? 1u : 2u)) {
    throw UsageError{from_calc ? "import --calc takes a POPUP"
                               : "import takes a WORKBOOK and a POPUP"};
  }
  const std::string workbook_argument = from_calc ? "--calc" : options.Positional()[0];

  PopupName name = ParsePopup(options.Positional().back());
  RequireWritableFolder(name.folder);
  std::optional<StdinWorkbook> from_stdin;
  if (workbook_argument == "-") from_stdin.emplace();
  excel::SheetSource source =
      excel::SheetSource::File(from_stdin ? from_stdin->Path() : workbook_argument);
  if (from_calc) source = RunningCalcSource();

  PopupClass popup;
  auto progress = std::make_shared<TerminalProgress>();
  popup.SetProgress(progress);
  name.Apply(popup);
  int64_t replaced = 0;
  if (name.Exists()) {
    OpenPopupFiles(popup, name, *progress);
    replaced = CountItemsInTree(*popup.PopupItems());
  } else {
    structure = MessageAnswer::kNo;  // a new popup takes the sheet's design
  }
  TerminalMessageBox messages(structure);
  popup.SetMessageBox(std::shared_ptr<MessageBox>(&messages, [](MessageBox*) {}));
  TerminalLevelPrompt level_prompt(levels);
  excel::ImportUi ui{messages, *progress, level_prompt};
  ui.unreadable = [&](const excel::WorkbookError& error) {
    progress->Unload();
    std::fprintf(stderr, "zpopup: %s: %s\n", source.name.c_str(), error.reason().c_str());
  };
  progress->Show();
  excel::ImportOutcome outcome = excel::RebuildFromWorkbook(popup, source, ui);
  progress->Unload();
  if (outcome != excel::ImportOutcome::kImported) return ExitCode(outcome);

  CodePageReport unencodable;
  unencodable.CheckPopup(popup);
  if (!unencodable.TellAndAllowSave(options.Has("--strict"))) return kProblemsFound;
  if (popup.ChangedOnDisk() && !options.Has("--force")) {
    std::fprintf(stderr,
                 "zpopup: %s: another program saved the popup while the import ran; nothing was "
                 "saved (--force saves over it)\n",
                 name.Display().c_str());
    return kProblemsFound;
  }
  ForFile(name.File(".ZPD"), [&] { SavePopupInTreeOrder(popup); });
  std::fprintf(stderr,
               "zpopup: imported %s into %s: %lld items, %d levels, %d fields; %lld items "
               "replaced; %zu values converted to %s\n",
               workbook_argument == "--calc" ? source.name.c_str() : workbook_argument.c_str(),
               name.Display().c_str(),
               static_cast<long long>(CountItemsInTree(*popup.PopupItems())), popup.Levels(),
               popup.PopupFields()->Count(), static_cast<long long>(replaced), unencodable.Count(),
               ActiveCodePage().Name().c_str());
  return kSuccess;
}

int Export(const Arguments& args) {
  ParsedOptions options(args, {{"--verbose", false}, {"--calc", false}});
  const bool to_calc = options.Has("--calc");
  if (options.Positional().size() != (to_calc ? 1u : 2u)) {
    throw UsageError{to_calc ? "export --calc takes a POPUP"
                             : "export takes a POPUP and a WORKBOOK"};
  }
  PopupName name = ParsePopup(options.Positional()[0]);
  std::string target = to_calc ? std::string() : options.Positional()[1];
  auto popup = OpenExisting(name);
  excel::ExportReport report;
  if (to_calc) {
    report = ExportToCalc(*popup, target);
  } else if (target == "-") {
    report = excel::ExportToCsv(*popup, std::cout, "-");
  } else {
    ForFile(target, [&] { report = excel::ExportToWorkbook(*popup, target); });
  }
  if (options.Has("--verbose")) {
    for (const std::string& line : report.cannot_round_trip) {
      std::fprintf(stderr, "zpopup: cannot round-trip: %s\n", line.c_str());
    }
  }
  std::string written = target == "-" ? "standard output" : target;
  if (report.cannot_round_trip.empty()) {
    std::fprintf(stderr, "zpopup: wrote %lld rows to %s\n",
                 static_cast<long long>(report.rows_written), written.c_str());
    return kSuccess;
  }
  std::fprintf(stderr, "zpopup: wrote %lld rows to %s; %zu items cannot come back by import%s\n",
               static_cast<long long>(report.rows_written), written.c_str(),
               report.cannot_round_trip.size(),
               options.Has("--verbose") ? "" : " (--verbose lists them)");
  return kProblemsFound;
}

}  // namespace zephyr::cli
