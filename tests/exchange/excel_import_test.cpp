#include "zephyr/excel/excel_import.h"

#include <gtest/gtest.h>
#include <xlsxwriter.h>

#include <filesystem>

#include "helpers/popup_files.h"
#include "helpers/recorders.h"
#include "helpers/temp_dir.h"

namespace zephyr::excel {
namespace {

using testing::TempDir;
using testing::WriteBytes;

class ScriptedLevelPrompt : public LevelPrompt {
 public:
  int PromptForLevels() override {
    ++asked;
    return answer;
  }
  int answer = -1;
  int asked = 0;
};

std::vector<std::string> KeysInTreeOrder(PopupItems& items) {
  std::vector<std::string> keys;
  for (const auto& item : items) {
    keys.push_back(item->PopupKey() + "=" + item->PopupValues()->Item(1)->Value());
    if (item->HasChildren()) {
      for (const auto& key : KeysInTreeOrder(*item->Children())) keys.push_back(key);
    }
  }
  return keys;
}

class ExcelImportTest : public ::testing::Test {
 protected:
  // Imports a CSV sheet with these lines into the popup "P" of the temporary folder.
  ImportOutcome ImportCsv(const std::string& lines) {
    WriteBytes(dir_.File("sheet.csv"), lines);
    return Import(dir_.File("sheet.csv"));
  }

  ImportOutcome Import(const std::string& workbook) {
    popup_ = std::make_unique<PopupClass>();
    popup_->PopupPath(dir_.Path());
    popup_->DataSource("P");
    if (std::filesystem::exists(dir_.File("P.ZPT"))) popup_->OpenPopup();
    ImportUi ui{messages_, progress_, levels_};
    return ImportFromWorkbook(*popup_, workbook, ui);
  }

  // The popup as saved.
  std::unique_ptr<PopupClass> Reopened() {
    auto popup = std::make_unique<PopupClass>();
    popup->PopupPath(dir_.Path());
    popup->DataSource("P");
    popup->OpenPopup();
    return popup;
  }

  // The only message shown; fails the test when there were others.
  const Message& OnlyMessage() {
    EXPECT_EQ(messages_.shown.size(), 1u);
    return messages_.shown.front();
  }

  void ExpectRuleFailure(const std::string& lines, const std::string& prompt,
                         const std::string& title) {
    messages_.shown.clear();
    EXPECT_EQ(ImportCsv(lines), ImportOutcome::kRuleFailed) << lines;
    const Message& message = OnlyMessage();
    EXPECT_EQ(message.prompt, prompt);
    EXPECT_EQ(message.title, title);
    EXPECT_EQ(message.buttons, MessageButtons::kOkHelp);
    EXPECT_EQ(message.help_context, 1);
    EXPECT_TRUE(message.help_file.ends_with("/zephyrPOpup2Excel.hlp"));
  }

  TempDir dir_;
  std::unique_ptr<PopupClass> popup_;
  testing::ScriptedMessageBox messages_;
  testing::RecordingProgress progress_;
  ScriptedLevelPrompt levels_;
};

// The rows up to the first without a key, in key order; each field as wide
// as its longest value, the first named Description; the title from the file.
TEST_F(ExcelImportTest, AKeyedSheetBecomesANewPopupAndIsSaved) {
  messages_.answers = {MessageAnswer::kNo};  // take the sheet's structure
  ASSERT_EQ(ImportCsv("Key,Department,Product,Price,Unit\r\n"
                      "0102,Fruit,Pears,1.10,kg\r\n"
                      "0101,Fruit,Apples,2.49,kg\r\n"
                      "0201,Veg,Carrots,0.89,bag\r\n"
                      ",,,after the stop row\r\n"
                      "0301,Deli,Olives,3.00,jar\r\n"),
            ImportOutcome::kImported);
  EXPECT_EQ(messages_.shown.size(), 1u);  // the structure question only

  auto saved = Reopened();
  EXPECT_EQ(saved->Title(), "sheet");
  EXPECT_EQ(saved->PopupLevels()->Item(2)->Question().ToText(), "Product");
  auto fields = saved->PopupFields();
  ASSERT_EQ(fields->Count(), 4);
  EXPECT_EQ(fields->Item(2)->Name(), "Description");
  EXPECT_EQ(fields->Item(2)->FieldLength(), 7);  // "Carrots"
  EXPECT_EQ(fields->Item(4)->FieldLength(), 3);
  EXPECT_EQ(KeysInTreeOrder(*saved->PopupItems()),
            (std::vector<std::string>{"  01=Fruit", "0101=Apples", "0102=Pears", "  02=Veg",
                                      "0201=Carrots"}));
  auto pears = saved->PopupItems()->Item(1)->Children()->Item(2);
  EXPECT_EQ(pears->PopupValues()->Item(2)->Value(), "1.10");
  EXPECT_EQ(saved->PopupItems()->Item(1)->PopupValues()->Item(2)->Value(), " ");  // parents: empty
}

// Each rule stops the import with its own message, naming the data row that
// breaks it; nothing is saved.
TEST_F(ExcelImportTest, KeyRulesNameTheDataRowThatBreaksThem) {
  const std::string see_help = " Please refer to ZephyrPopup Excel Import Rules in Help.";
  ExpectRuleFailure("Key,L1,L2,F\n0101,a,b,x\n0102,a,c,x\n01,a,d,x\n",
                    "Invalid Key Length found. The Key in Row 3 is not the same lenght as your "
                    "first key. Please ensure the keys are all the same length." + see_help,
                    "Invalid Key Length");
  ExpectRuleFailure(
      "Key,L1,L2,F\n0101,a,b,x\n01A1,a,c,x\n",
      "Key Not Numeric. A non numerical character was found in the key on row 2." + see_help,
      "Key Not Numeric");
  ExpectRuleFailure("Key,L1,F\nx1,a,b\n",
                    "First Key not numeric. A non numerical character was found in the first "
                    "key cell." + see_help,
                    "Key Not Numeric");
  ExpectRuleFailure("Key,L1,F\n011,a,b\n",
                    "The First Key does not conform to ZephyrPopup Key Standards. The Keys must "
                    "be an even number lenght and numeric." + see_help,
                    "Invalid Key Length");
  ExpectRuleFailure("Key,L1,L2,F\n0201,a,b,x\n0202,a,c,x\n0201,a,d,y\n",
                    "The Excel Row: 3 contains a Key that is already assigned. Please ensure "
                    "that the keys are unique." + see_help,
                    "Duplicate Key found");
  ExpectRuleFailure(
      "Key,L1,L2,F\n0101,a, ,x\n",
      "Blank Level Data Found. PLease make sure that all Level columns contain data." + see_help,
      "Invalid Key Length");
  ExpectRuleFailure("Key,L1,L2\n0101,a,b\n",
                    "Missing Companion Data Column. ZephyrPopup needs at least 1 companion Data "
                    "Column after the Level Columns.  Please refer to ZephyrPopup Excel Import "
                    "Rules in Help.  ",
                    "Missing Data Column");
  ExpectRuleFailure(",L1,F\n,a,b\n7,c,d\n",
                    "Inconsistent Key Values. Keys must either all be numeric, of the same "
                    "length or all blank." + see_help,
                    "Invalid Key Data");
  // A code of 00 is no code: found when the tree is built, after the structure question.
  messages_.shown.clear();
  messages_.answers = {MessageAnswer::kNo};
  EXPECT_EQ(ImportCsv("Key,L1,L2,F\n0100,a,b,x\n"), ImportOutcome::kRuleFailed);
  EXPECT_EQ(messages_.shown.back().prompt,
            "Invalid Key! Please check that your keys conform to Zephyr 5.0 Popup Key Standards");
  EXPECT_FALSE(std::filesystem::exists(dir_.File("P.ZPD")));  // nothing was saved
}

TEST_F(ExcelImportTest, SheetsWithoutKeysFollowTheirOwnRules) {
  EXPECT_EQ(ImportCsv(",L1,F\n"), ImportOutcome::kRuleFailed);
  EXPECT_EQ(messages_.shown[0].prompt,
            "ZephyrPopup requires an Excel Worksheet with at least 2 rows of data.");
  EXPECT_EQ(messages_.shown[1].prompt,
            "ZephyrPopup Failed to connect to the Active Excel Spreadsheet. Please make sure the "
            "Data you wish to import is open in Microsoft Excel and is the Selected Sheet.");

  // Identical rows and blank levels are caught before anything changes. Cells
  // compare one by one, never run together (x|yz and xy|z differ), and the
  // pair with the earliest first row is named, not the earliest repeat.
  messages_.shown.clear();
  levels_.answer = 2;
  messages_.answers = {MessageAnswer::kNo};
  EXPECT_EQ(ImportCsv(",A,B,F\n,x,yz,2\n,xy,z,2\n,x,y,1\n,x,w,3\n,x,w,3\n,x,y,1\n"),
            ImportOutcome::kRuleFailed);
  ASSERT_EQ(messages_.shown.size(), 2u);
  EXPECT_EQ(messages_.shown[1].prompt,
            "The Excel Rows: 5 and 8 contain identical data.  Please ensure each record contains "
            "unique data.");
  EXPECT_EQ(messages_.shown[1].title, "Identical Data Found");
  EXPECT_EQ(messages_.shown[1].buttons, MessageButtons::kOk);

  messages_.shown.clear();
  messages_.answers = {MessageAnswer::kNo};
  EXPECT_EQ(ImportCsv(",A,B,F\n,x,y,1\n,x,,2\n"), ImportOutcome::kRuleFailed);
  EXPECT_EQ(messages_.shown.back().prompt,
            "The Excel Row: 4 Col: 3 contains blank Level Data . Please ensure that all level "
            "columns contain data. Please refer to ZephyrPopup Excel Import Rules in Help.");
  EXPECT_EQ(messages_.shown.back().title, "Invalid Key Length");
}

TEST_F(ExcelImportTest, GeneratedKeysLeaveRoomBetweenSiblingsInOrderOfFirstAppearance) {
  std::string sheet = ",Group,Item,Note\n";
  for (int i = 1; i <= 12; ++i) {
    sheet += ",Big," + std::to_string(i) + ",n\n";
    if (i == 6) sheet += ",Small,only,n\n";  // the rest of Big is gathered where it began
  }
  levels_.answer = 2;
  messages_.answers = {MessageAnswer::kNo};
  ASSERT_EQ(ImportCsv(sheet), ImportOutcome::kImported);
  EXPECT_EQ(levels_.asked, 1);
  auto keys = KeysInTreeOrder(*popup_->PopupItems());
  ASSERT_EQ(keys.size(), 15u);
  EXPECT_EQ(keys[0], "  10=Big");  // two groups: step 10
  EXPECT_EQ(keys[1], "1008=1");    // twelve items under one group: step 99 / 12 = 8
  EXPECT_EQ(keys[12], "1096=12");
  EXPECT_EQ(keys[13], "  20=Small");
  EXPECT_EQ(keys[14], "2008=only");

  // A sibling count that divides 100 still ends on a two-digit code.
  std::string ten = ",Group,Item,Note\n";
  for (int i = 1; i <= 10; ++i) ten += ",Big," + std::to_string(i) + ",n\n";
  messages_.answers = {MessageAnswer::kNo};
  ASSERT_EQ(ImportCsv(ten), ImportOutcome::kImported);
  EXPECT_EQ(KeysInTreeOrder(*popup_->PopupItems()).back(), "1090=10");
}

// Keeping the popup's structure drops none of its questions or fields, widens
// a field to its longest value and adds fields for extra columns.
TEST_F(ExcelImportTest, KeepingThePopupStructureMapsTheSheetOntoIt) {
  testing::WritePopupFiles(dir_.Path(), "P",
                           {"Kept", {"Aisle", "Shelf", "Bin"}, {{"Label", 5}, {"Size", 3}}},
                           {{"    01", "old", ""}});
  messages_.answers = {MessageAnswer::kYes};
  ASSERT_EQ(ImportCsv("K,A,B,F,G\n0101,Drinks,Tea,large,extra\n"), ImportOutcome::kImported);
  EXPECT_EQ(popup_->Title(), "Kept");
  EXPECT_EQ(popup_->Levels(), 3);
  EXPECT_EQ(popup_->PopupLevels()->Item(3)->Question().ToText(), "Bin");
  std::vector<std::pair<std::string, int>> fields;
  for (const auto& field : *popup_->PopupFields()) {
    fields.emplace_back(field->Name(), field->FieldLength());
  }
  EXPECT_EQ(fields, (std::vector<std::pair<std::string, int>>{
                        {"Popup Code", 6}, {"Label", 6}, {"Size", 5}, {"G", 5}}));
  auto reread = Reopened();
  auto tea = reread->PopupItems()->Item(1)->Children()->Item(1);
  EXPECT_EQ(tea->Level(), 2);
  std::vector<std::string> values;
  for (const auto& value : *tea->PopupValues()) values.push_back(value->Value());
  EXPECT_EQ(values, (std::vector<std::string>{"Tea", "large", "extra"}));
}

TEST_F(ExcelImportTest, AValueLongerThanAFieldCanHoldStopsTheImport) {
  testing::WritePopupFiles(dir_.Path(), "P", {"Kept", {"A"}, {{"Name", 5}, {"Note", 3}}},
                           {{"01", "old", "n"}});
  std::string sheet = "K,A,Note\n01,x,y\n02,z," + std::string(255, 'w') + "\n";
  EXPECT_EQ(ImportCsv(sheet), ImportOutcome::kRuleFailed);
  EXPECT_EQ(OnlyMessage().prompt,
            "The Excel Row: 3 Col: 3 holds 255 characters for the field 'Note'. A field holds "
            "at most 254 characters.");
  auto reread = Reopened();
  EXPECT_EQ(reread->PopupItems()->Item(1)->PopupValues()->Item(1)->Value(), "old");
}

TEST_F(ExcelImportTest, AnUnreadableWorkbookIsNamedWithItsReason) {
  EXPECT_EQ(Import(dir_.File("absent.xlsx")), ImportOutcome::kUnreadable);
  ASSERT_EQ(messages_.shown.size(), 2u);
  const std::string& prompt = messages_.shown[0].prompt;
  EXPECT_TRUE(
      prompt.starts_with("ZephyrPopup could not detect an open Excel Workbook.  Please load "
                         "a Workbook before continuing.\r\n"));
  EXPECT_NE(prompt.find("absent.xlsx"), std::string::npos);
  EXPECT_EQ(messages_.shown[0].buttons, MessageButtons::kOk);
}

TEST_F(ExcelImportTest, HiddenRowsAreSkippedAndErrorValuesReadAsEmptyText) {
  std::string path = dir_.File("sheet.xlsx");
  lxw_workbook* book = workbook_new(path.c_str());
  lxw_worksheet* sheet = workbook_add_worksheet(book, "Data");
  const char* rows[][3] = {
      {"Key", "Item", "Note"}, {"01", "Apples", ""}, {"02", "Hidden", "x"}, {"03", "Pears", "y"}};
  for (lxw_row_t r = 0; r < 4; ++r) {
    for (lxw_col_t c = 0; c < 3; ++c) worksheet_write_string(sheet, r, c, rows[r][c], nullptr);
  }
  worksheet_write_formula_str(sheet, 1, 2, "=NA()", nullptr, "#N/A");
  lxw_row_col_options hidden = {1, 0, 0};
  worksheet_set_row_opt(sheet, 2, LXW_DEF_ROW_HEIGHT, nullptr, &hidden);
  ASSERT_EQ(workbook_close(book), LXW_NO_ERROR);

  messages_.answers = {MessageAnswer::kNo};
  ASSERT_EQ(Import(path), ImportOutcome::kImported);
  auto items = popup_->PopupItems();
  ASSERT_EQ(items->Count(), 2);
  EXPECT_EQ(items->Item(1)->PopupValues()->Item(2)->Value(), "");  // #N/A
  EXPECT_EQ(items->Item(2)->PopupValues()->Item(1)->Value(), "Pears");
}

}  // namespace
}  // namespace zephyr::excel
