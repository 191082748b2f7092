#include "zephyr/excel/excel_export.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <sstream>

#include "helpers/popup_files.h"
#include "helpers/recorders.h"
#include "helpers/temp_dir.h"
#include "zephyr/excel/excel_import.h"
#include "zephyr/runtime/popup_key.h"

namespace zephyr::excel {
namespace {

using testing::PopupDesign;
using testing::TempDir;
using testing::WritePopupFiles;

// Every item as "key: value | value ...", in tree order.
std::vector<std::string> Describe(PopupItems& items) {
  std::vector<std::string> lines;
  std::function<void(PopupItems&)> walk = [&](PopupItems& level) {
    for (const auto& item : level) {
      std::string line = item->PopupKey() + ":";
      for (const auto& value : *item->PopupValues()) line += " " + value->Value() + " |";
      lines.push_back(line);
      if (item->HasChildren()) walk(*item->Children());
    }
  };
  walk(items);
  return lines;
}

std::unique_ptr<PopupClass> OpenPopup(const std::string& folder, const std::string& name) {
  auto popup = std::make_unique<PopupClass>();
  popup->PopupPath(folder);
  popup->DataSource(name);
  popup->OpenPopup();
  return popup;
}

class NoLevelPrompt : public LevelPrompt {
 public:
  int PromptForLevels() override { return -1; }
};

TEST(ExcelExportTest, ItemsThatCannotRoundTripAreNamedAndTheRestIsWritten) {
  TempDir dir;
  PopupDesign design{"Mixed", {"A", "B"}, {{"Name", 10}, {"Note", 5}}};
  WritePopupFiles(dir.Path(), "Mixed", design,
                  {{"  01", "Parent", "note"}, {"0101", "Leaf", "x"}, {"  02", "Lonely", ""}});
  auto popup = OpenPopup(dir.Path(), "Mixed");
  ExportReport report = ExportToWorkbook(*popup, dir.File("mixed.xlsx"));
  EXPECT_EQ(report.rows_written, 1);
  ASSERT_EQ(report.cannot_round_trip.size(), 2u);
  EXPECT_EQ(report.cannot_round_trip[0],
            "item '  01' (Parent) has companion values, which only leaves carry");
  EXPECT_EQ(report.cannot_round_trip[1],
            "item '  02' (Lonely) is a leaf at level 1 of 2; only leaves of the deepest level are "
            "written");
  try {
    ExportToWorkbook(*popup, dir.File("no/such/folder/out.xlsx"));
    FAIL() << "an unwritable workbook was written";
  } catch (const RuntimeError& error) {
    EXPECT_NE(error.Description().find("out.xlsx"), std::string::npos);
  }
}

// Sheet-name, CSV and formula specials, quotes and apostrophes at either
// end, letters the code page holds, never a blank at either end (cells are
// read trimmed), export to either format and import back as the same tree.
// A template line splits at commas and holds no double quote or line break,
// so the title, questions and field names have none of them.
TEST(ExcelExportTest, HostileTextExportsAndImportsBack) {
  TempDir dir;
  const std::string title = "'[Sheet]: a/b\\c*d?" + std::string(40, 'T') + "'";
  PopupClass popup;
  popup.Title(title);
  popup.ReplaceLevels({{Variant("=Group;"), 1}, {Variant("#N/A \xC3\xA9"), 2}});
  popup.ReplaceFields({{"Name", 120, 0, 1}, {"'Note'", 60, 0, 2}});
  auto parent = popup.AddItem(nullptr, FormatStoredKey("01", 2), {"'=SUM(A1)'", ""});
  const std::vector<std::string> leaves[] = {
      {"a,\"b\"\nc", "<&>"}, {"-5%", "'"}, {"0012", "=1+2"}, {"\xC3\x9F/\xE2\x82\xAC", "x*y?"}};
  for (size_t i = 0; i < std::size(leaves); ++i) {
    popup.AddItem(parent, "010" + std::to_string(i + 1), leaves[i]);
  }
  // Through the popup's own files, as a popup made elsewhere arrives.
  popup.PopupPath(dir.Path());
  popup.DataSource("Hostile");
  SavePopupInTreeOrder(popup);
  auto original = OpenPopup(dir.Path(), "Hostile");
  ASSERT_EQ(original->Title(), title);

  testing::ScriptedMessageBox messages;
  testing::RecordingProgress progress;
  NoLevelPrompt no_prompt;
  ImportUi ui{messages, progress, no_prompt};
  for (const std::string format : {"xlsx", "csv"}) {
    const std::string path = dir.File("hostile." + format);
    ExportReport report = ExportToWorkbook(*original, path);
    ASSERT_EQ(report.rows_written, 4);
    ASSERT_TRUE(report.cannot_round_trip.empty());
    messages.answers = {MessageAnswer::kNo};  // the sheet's structure
    PopupClass copy;
    copy.PopupPath(dir.Path());
    copy.DataSource("Copy" + format);
    ASSERT_EQ(ImportFromWorkbook(copy, path, ui), ImportOutcome::kImported)
        << path << ": " << (messages.shown.empty() ? "" : messages.shown.back().prompt);
    auto reread = OpenPopup(dir.Path(), "Copy" + format);
    EXPECT_EQ(Describe(*reread->PopupItems()), Describe(*original->PopupItems())) << path;
    EXPECT_EQ(reread->PopupLevels()->Item(2)->Question().ToText(), "#N/A \xC3\xA9");
    EXPECT_EQ(reread->PopupFields()->Item(3)->Name(), "'Note'");
  }
}

TEST(ExcelExportTest, CsvIsRealCsvAndOtherExtensionsAreRefused) {
  PopupClass popup;
  popup.ReplaceLevels({{Variant("Group"), 1}});
  popup.ReplaceFields({{"Name", 20, 0, 1}, {"Note", 20, 0, 2}});
  popup.AddItem(nullptr, "01", {"Tea, \"green\"", "caf\xC3\xA9\nline"});
  std::ostringstream out;
  EXPECT_EQ(ExportToCsv(popup, out, "-").rows_written, 1);
  EXPECT_EQ(out.str(), "Popup Code,Group,Note\r\n01,\"Tea, \"\"green\"\"\",\"caf\xC3\xA9\nline\"\r\n");
  TempDir dir;
  for (const char* name : {"out.ods", "out.txt", "out"}) {
    EXPECT_THROW(ExportToWorkbook(popup, dir.File(name)), RuntimeError) << name;
    EXPECT_FALSE(std::filesystem::exists(dir.File(name))) << name;
  }
}

}  // namespace
}  // namespace zephyr::excel
