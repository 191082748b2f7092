// Import from and export to a running LibreOffice Calc: an office started
// headless for these tests.
#include "zephyr/excel/running_calc.h"

#include <gtest/gtest.h>
#include <xlsxwriter.h>

#include "helpers/headless_office.h"
#include "helpers/popup_files.h"
#include "helpers/recorders.h"
#include "helpers/temp_dir.h"
#include "zephyr/excel/excel_import.h"

namespace zephyr::excel {
namespace {

using testing::ReadBytes;

class NoLevels : public LevelPrompt {
 public:
  int PromptForLevels() override { return 2; }
};

void OpenProducts(PopupClass& popup, const std::string& folder) {
  testing::WriteProducts(folder);
  popup.PopupPath(folder);
  popup.DataSource("Products");
  popup.OpenPopup();
}

// Every test starts with one workbook shown: its second sheet holds keys, a
// formula giving #N/A, text out of the code page and a hidden row.
class RunningCalcTest : public ::testing::Test {
 protected:
  static void SetUpTestSuite() { office_ = new testing::HeadlessOffice(); }
  static void TearDownTestSuite() { delete office_; }

  void SetUp() override {
    if (!office_->Started()) {
      GTEST_SKIP() << "no LibreOffice (soffice) to run: install libreoffice-calc-nogui";
    }
    lxw_workbook* book = workbook_new(path_.c_str());
    worksheet_write_string(workbook_add_worksheet(book, "Notes"), 0, 0, "not this sheet", nullptr);
    lxw_worksheet* data = workbook_add_worksheet(book, "Data");
    const char* rows[5][4] = {{"Key", "Group", "Item", "Note"},
                              {"0101", "Fruit", "Apples", nullptr},
                              {"0102", "Fruit", "Café crème", "x"},
                              {"0201", "Bakery", "Hidden", "y"},
                              {"0202", "Bakery", "Bread", "z"}};
    for (lxw_row_t r = 0; r < 5; ++r) {
      for (lxw_col_t c = 0; c < 4; ++c) worksheet_write_string(data, r, c, rows[r][c], nullptr);
    }
    worksheet_write_formula_str(data, 1, 3, "=NA()", nullptr, "#N/A");  // the note of 0101
    lxw_row_col_options hidden = {1, 0, 0};
    worksheet_set_row_opt(data, 3, LXW_DEF_ROW_HEIGHT, nullptr, &hidden);
    worksheet_activate(data);
    ASSERT_EQ(workbook_close(book), LXW_NO_ERROR);
    office_->Show(path_, 1);
  }

  void TearDown() override {
    if (office_->Started()) office_->CloseAll();
  }

  // Imports into a new popup NAME of the test folder and saves it; the
  // popup's files as bytes, or the outcome when it did not import.
  std::string Imported(const SheetSource& source, const std::string& name) {
    PopupClass popup;
    popup.PopupPath(dir_.Path());
    popup.DataSource(name);
    messages_.answers = {MessageAnswer::kNo};  // a new popup takes the sheet's design
    ImportOutcome outcome = ImportFromWorkbook(popup, source, ui_);
    if (outcome != ImportOutcome::kImported) return "outcome " + std::to_string(int(outcome));
    return ReadBytes(dir_.File(name + ".ZPT")) + ReadBytes(dir_.File(name + ".ZPD"));
  }

  static inline testing::HeadlessOffice* office_ = nullptr;
  const std::string pipe_ = office_->Pipe();
  testing::TempDir dir_;
  const std::string path_ = dir_.File("keyed.xlsx");
  testing::ScriptedMessageBox messages_;
  NoProgress progress_;
  NoLevels levels_;
  ImportUi ui_{messages_, progress_, levels_};
};

// Not the first sheet but the one shown, its formulas worked out, its hidden
// rows left out, its text in the code page: as the same workbook's file.
TEST_F(RunningCalcTest, TheShownSheetImportsAsTheSameWorkbookFileDoes) {
  std::string from_calc = Imported(RunningCalc(pipe_), "FromCalc");
  EXPECT_EQ(from_calc, Imported(SheetSource::File(path_), "FromFile"));
  EXPECT_NE(from_calc.find("Caf\xE9 cr\xE8me"), std::string::npos) << "in Windows-1252";
  EXPECT_EQ(from_calc.find("Hidden"), std::string::npos);
}

TEST_F(RunningCalcTest, AnExportIsANewActiveSheetThatReadsBack) {
  PopupClass popup;
  OpenProducts(popup, dir_.Path());
  std::string sheet;
  EXPECT_EQ(ExportToRunningCalc(popup, &sheet, pipe_).rows_written, 3);
  EXPECT_EQ(sheet, "Products");
  std::unique_ptr<Workbook> calc = OpenRunningCalc(pipe_);
  ASSERT_EQ(calc->Sheets().at(calc->ActiveSheet()).name, "Products");
  Sheet written = calc->ReadSheet(calc->ActiveSheet());
  std::vector<std::vector<std::string>> cells;
  for (const SheetRow& row : written.rows) {
    auto& texts = cells.emplace_back();
    for (const Cell& cell : row.cells) texts.push_back(cell.text);
  }
  EXPECT_EQ(cells, ExportRows(popup).rows);
  ExportToRunningCalc(popup, &sheet, pipe_);
  EXPECT_EQ(sheet, "Products 2");
}

TEST_F(RunningCalcTest, NoOfficeOnThePipeIsToldAndChangesNothing) {
  PopupClass popup;
  OpenProducts(popup, dir_.Path());
  EXPECT_FALSE(ExcelImport(popup, RunningCalc("zephyr-nobody-listens"), ui_));
  ASSERT_FALSE(messages_.shown.empty());
  EXPECT_TRUE(messages_.shown.front().prompt.starts_with(
      "ZephyrPopup could not detect a loaded copy of Microsoft Excel. Please load Microsoft Excel "
      "before continuing."));
  EXPECT_EQ(popup.PopupItems()->Count(), 2);
  EXPECT_EQ(popup.Title(), "Products");
}

}  // namespace
}  // namespace zephyr::excel
