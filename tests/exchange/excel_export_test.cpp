#include "zephyr/excel/excel_export.h"

#include <gtest/gtest.h>

#include <functional>

#include "helpers/popup_files.h"
#include "helpers/recorders.h"
#include "helpers/temp_dir.h"
#include "zephyr/excel/excel_import.h"

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

TEST(ExcelExportTest, AnExportedPopupImportsBackAsTheSameTree) {
  TempDir dir;
  PopupDesign design{
      "Stock", {"Aisle", "Shelf", "Product"}, {{"Name", 20}, {"Price", 6}, {"Unit", 4}}};
  WritePopupFiles(dir.Path(), "Stock", design,
                  {{"    01", "Drinks", "", ""},
                   {"01  01", "Hot", "", ""},
                   {"010101", "Tea, green", "2.10", "box"},
                   {"010102", "Coffee", "4.50", ""},
                   {"01  02", "Cold", "", ""},
                   {"010201", "Lemonade", "1.00", "can"},
                   {"    02", "Bakery", "", ""},
                   {"02  05", "Bread", "", ""},
                   {"020509", "Rye \"dark\"", "2.75", "loaf"}});
  auto original = OpenPopup(dir.Path(), "Stock");
  ExportReport report = ExportToWorkbook(*original, dir.File("stock.xlsx"));
  EXPECT_EQ(report.rows_written, 4);
  EXPECT_TRUE(report.cannot_round_trip.empty());

  testing::ScriptedMessageBox messages;
  messages.answers = {MessageAnswer::kNo};
  testing::RecordingProgress progress;
  NoLevelPrompt no_prompt;
  ImportUi ui{messages, progress, no_prompt};
  PopupClass copy;
  copy.PopupPath(dir.Path());
  copy.DataSource("Copy");
  ASSERT_EQ(ImportFromWorkbook(copy, dir.File("stock.xlsx"), ui), ImportOutcome::kImported)
      << (messages.shown.empty() ? "" : messages.shown.back().prompt);

  auto reread = OpenPopup(dir.Path(), "Copy");
  EXPECT_EQ(Describe(*reread->PopupItems()), Describe(*original->PopupItems()));
  EXPECT_EQ(reread->PopupLevels()->Item(3)->Question().ToText(), "Product");
  EXPECT_EQ(reread->PopupFields()->Item(4)->Name(), "Unit");
}

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

}  // namespace
}  // namespace zephyr::excel
