#include "zephyr/excel/excel_export.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <random>
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

// Text a user might type anywhere: sheet-name and CSV specials, quotes,
// apostrophes at either end, letters the code page holds, never a blank at
// either end (cells are read trimmed). A template line splits at commas and
// holds no double quote or line break, so titles, questions and field names
// have none of them.
std::string HostileText(std::mt19937& random, size_t max_length, bool in_template = false) {
  static const std::vector<std::string> pieces = {
      "'", "\"", ",", ";", "[", "]", ":", "*", "?", "/", "\\", "<", ">", "&", "=", "#N/A",
      "\xC3\xA9", "\xC3\x9F", "\xE2\x82\xAC", "x", "Tea", "0", "12", " ", "\n", "-", "%"};
  std::string text;
  size_t length = 1 + random() % max_length;  // at least, in bytes
  while (text.size() < length) {
    const std::string& piece = pieces[random() % pieces.size()];
    if (!in_template || piece.find_first_of("\",\n") == std::string::npos) text += piece;
  }
  while (!text.empty() && (text.front() == ' ' || text.front() == '\n')) text.erase(0, 1);
  while (!text.empty() && (text.back() == ' ' || text.back() == '\n')) text.pop_back();
  return text.empty() ? "'" : text;
}

// Popups with hostile titles, questions, field names and values export to
// either format and import back as the same tree.
TEST(ExcelExportTest, HostilePopupsExportAndImportBack) {
  TempDir dir;
  std::mt19937 random(20261122);
  for (int round = 0; round < 24; ++round) {
    PopupClass popup;
    std::string title = HostileText(random, 12, true) + std::string(round % 3 == 0 ? 40 : 0, 'T');
    if (round % 4 == 2) title = "'" + title + "'";  // written as .xlsx
    popup.Title(title);
    popup.ReplaceLevels({{Variant(HostileText(random, 4, true)), 1},
                         {Variant(HostileText(random, 4, true)), 2}});
    popup.ReplaceFields({{"Name", 120, 0, 1}, {HostileText(random, 3, true), 60, 0, 2}});
    for (int parent = 1; parent <= 3; ++parent) {
      std::string code = "0" + std::to_string(parent);
      auto item = popup.AddItem(nullptr, FormatStoredKey(code, 2),
                                {HostileText(random, 6) + std::to_string(parent), ""});
      for (int leaf = 1; leaf <= 2; ++leaf) {
        popup.AddItem(item, code + "0" + std::to_string(leaf),
                      {HostileText(random, 6), HostileText(random, 8)});
      }
    }
    // Through the popup's own files, as a popup made elsewhere arrives.
    popup.PopupPath(dir.Path());
    popup.DataSource("Hostile" + std::to_string(round));
    SavePopupInTreeOrder(popup);
    auto original = OpenPopup(dir.Path(), "Hostile" + std::to_string(round));
    ASSERT_EQ(original->Title(), title);

    const std::string extension = round % 2 == 0 ? ".xlsx" : ".csv";
    const std::string path = dir.File("round" + std::to_string(round) + extension);
    ExportReport report = ExportToWorkbook(*original, path);
    ASSERT_EQ(report.rows_written, 6) << title;
    ASSERT_TRUE(report.cannot_round_trip.empty());

    testing::ScriptedMessageBox messages;
    messages.answers = {MessageAnswer::kNo};  // the sheet's structure
    testing::RecordingProgress progress;
    NoLevelPrompt no_prompt;
    ImportUi ui{messages, progress, no_prompt};
    PopupClass copy;
    copy.PopupPath(dir.Path());
    copy.DataSource("Copy" + std::to_string(round));
    ASSERT_EQ(ImportFromWorkbook(copy, path, ui), ImportOutcome::kImported)
        << path << ": " << (messages.shown.empty() ? "" : messages.shown.back().prompt);
    auto reread = OpenPopup(dir.Path(), "Copy" + std::to_string(round));
    EXPECT_EQ(Describe(*reread->PopupItems()), Describe(*original->PopupItems())) << path;
    EXPECT_EQ(reread->PopupLevels()->Item(2)->Question().ToText(),
              popup.PopupLevels()->Item(2)->Question().ToText());
    EXPECT_EQ(reread->PopupFields()->Item(3)->Name(), popup.PopupFields()->Item(3)->Name());
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
