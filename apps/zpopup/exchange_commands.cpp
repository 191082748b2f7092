#include "exchange_commands.h"

#include <cstdio>
#include <optional>

#include "cli_prompts.h"
#include "file_error.h"
#include "popup_name.h"
#include "terminal_progress.h"
#include "usage_error.h"
#include "zephyr/excel/excel_export.h"
#include "zephyr/excel/excel_import.h"
#include "zephyr/support/variant.h"

namespace zephyr::cli {

const char* const kImportUsage =
    "usage: zpopup import WORKBOOK POPUP [--levels N] [--structure popup|sheet]\n\n"
    "Imports the active sheet of WORKBOOK (.xlsx, .ods or .csv) into POPUP, creating\n"
    "the popup when it does not exist, and saves it. Row 1 names the levels and\n"
    "fields; column 1 holds the keys of every row or of none. --levels gives the\n"
    "level count of a sheet without keys; --structure answers whether the popup\n"
    "keeps its own levels and fields (popup) or takes the sheet's (sheet) when they\n"
    "differ. Without them zpopup asks on the terminal, or exits 1.\n";

const char* const kExportUsage =
    "usage: zpopup export POPUP WORKBOOK.xlsx\n\n"
    "Writes the popup to a new workbook that 'zpopup import' reads back: a heading\n"
    "row and one row per leaf with its key. Items that cannot come back as they are\n"
    "(leaves above the deepest level, parents with companion values) are listed on\n"
    "standard error, and the command exits 1; everything else is written.\n";

int Import(const Arguments& args) {
  std::vector<std::string> positional;
  std::optional<int> levels;
  std::optional<MessageAnswer> structure;
  for (size_t i = 0; i < args.size(); ++i) {
    if (args[i] == "--levels" || args[i] == "--structure") {
      if (i + 1 >= args.size()) throw UsageError{args[i] + " needs a value"};
      const std::string& value = args[++i];
      if (args[i - 1] == "--levels") {
        double count = 0;
        if (!ParseNumber(value, &count) || count < 1 || count > 99 ||
            count != static_cast<int>(count)) {
          throw UsageError{"--levels takes a whole number from 1 to 99, not '" + value + "'"};
        }
        levels = static_cast<int>(count);
      } else if (value == "popup" || value == "sheet") {
        structure = value == "popup" ? MessageAnswer::kYes : MessageAnswer::kNo;
      } else {
        throw UsageError{"--structure takes popup or sheet, not '" + value + "'"};
      }
    } else if (!args[i].empty() && args[i][0] == '-') {
      throw UsageError{"unknown option " + args[i]};
    } else {
      positional.push_back(args[i]);
    }
  }
  if (positional.size() != 2) throw UsageError{"import takes a WORKBOOK and a POPUP"};

  PopupName name = PopupName::Parse(positional[1]);
  PopupClass popup;
  auto progress = std::make_shared<TerminalProgress>();
  popup.SetProgress(progress);
  name.Apply(popup);
  if (name.Exists()) {
    OpenPopupFiles(popup, name, *progress);
  } else {
    structure = MessageAnswer::kNo;  // a new popup takes the sheet's design
  }
  TerminalMessageBox messages(structure);
  popup.SetMessageBox(std::shared_ptr<MessageBox>(&messages, [](MessageBox*) {}));
  TerminalLevelPrompt level_prompt(levels);
  excel::ImportUi ui{messages, *progress, level_prompt};
  progress->Show();
  excel::ImportOutcome outcome = excel::ImportFromWorkbook(popup, positional[0], ui);
  progress->Unload();
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

int Export(const Arguments& args) {
  if (args.size() != 2 || args[0][0] == '-' || args[1][0] == '-') {
    throw UsageError{"export takes a POPUP and a WORKBOOK"};
  }
  PopupName name = PopupName::Parse(args[0]);
  auto popup = OpenExisting(name);
  excel::ExportReport report;
  ForFile(args[1], [&] { report = excel::ExportToWorkbook(*popup, args[1]); });
  for (const std::string& line : report.cannot_round_trip) {
    std::fprintf(stderr, "zpopup: cannot round-trip: %s\n", line.c_str());
  }
  std::fprintf(stderr, "zpopup: wrote %lld rows to %s\n",
               static_cast<long long>(report.rows_written), args[1].c_str());
  return report.cannot_round_trip.empty() ? kSuccess : kProblemsFound;
}

}  // namespace zephyr::cli
