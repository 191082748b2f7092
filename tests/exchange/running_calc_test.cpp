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
using testing::TempDir;

class NoLevels : public LevelPrompt {
 public:
  int PromptForLevels() override { return 2; }
};

// A sheet for xlsxwriter: rows of text, with the formula "=NA()" for "#N/A".
void WriteRows(lxw_worksheet* sheet, const std::vector<std::vector<std::string>>& rows) {
  for (size_t r = 0; r < rows.size(); ++r) {
    for (size_t c = 0; c < rows[r].size(); ++c) {
      if (rows[r][c] == "#N/A") {
        worksheet_write_formula_str(sheet, static_cast<lxw_row_t>(r), static_cast<lxw_col_t>(c),
                                    "=NA()", nullptr, "#N/A");
      } else {
        worksheet_write_string(sheet, static_cast<lxw_row_t>(r), static_cast<lxw_col_t>(c),
                               rows[r][c].c_str(), nullptr);
      }
    }
  }
}

class RunningCalcTest : public ::testing::Test {
 protected:
  static void SetUpTestSuite() { office_ = new testing::HeadlessOffice(); }
  static void TearDownTestSuite() {
    delete office_;
    office_ = nullptr;
  }

  void SetUp() override {
    if (!office_->Started()) {
      GTEST_SKIP() << "no LibreOffice (soffice) to run: install libreoffice-calc-nogui";
    }
    pipe_ = office_->Pipe();
  }

  void TearDown() override {
    if (office_->Started()) office_->CloseAll();  // every test starts with none open
  }

  static void Show(const std::string& path, int sheet) { office_->Show(path, sheet); }

  // Imports into a new popup NAME of the test folder and saves it; the
  // popup's files as bytes, or the outcome when it did not import.
  std::string Imported(const SheetSource& source, const std::string& name) {
    PopupClass popup;
    popup.PopupPath(dir_.Path());
    popup.DataSource(name);
    NoLevels levels;
    ImportUi ui{messages_, progress_, levels};
    messages_.answers = {MessageAnswer::kNo};  // a new popup takes the sheet's design
    ImportOutcome outcome = ImportFromWorkbook(popup, source, ui);
    if (outcome != ImportOutcome::kImported) return "outcome " + std::to_string(int(outcome));
    return ReadBytes(dir_.File(name + ".ZPT")) + ReadBytes(dir_.File(name + ".ZPD"));
  }

  static inline testing::HeadlessOffice* office_ = nullptr;
  std::string pipe_;
  TempDir dir_;
  testing::ScriptedMessageBox messages_;
  NoProgress progress_;
};

// Not the first sheet but the one shown, its formulas worked out, its hidden
// rows left out, its text in the code page: as the same workbook's file.
TEST_F(RunningCalcTest, TheShownSheetImportsAsTheSameWorkbookFileDoes) {
  std::string path = dir_.File("keyed.xlsx");
  lxw_workbook* book = workbook_new(path.c_str());
  WriteRows(workbook_add_worksheet(book, "Notes"), {{"not this sheet"}});
  lxw_worksheet* data = workbook_add_worksheet(book, "Data");
  WriteRows(data, {{"Key", "Group", "Item", "Note"},
                   {"0101", "Fruit", "Apples", "#N/A"},
                   {"0102", "Fruit", "Café crème", "x"},
                   {"0201", "Bakery", "Hidden", "y"},
                   {"0202", "Bakery", "Bread", "z"}});
  lxw_row_col_options hidden = {1, 0, 0};
  worksheet_set_row_opt(data, 3, LXW_DEF_ROW_HEIGHT, nullptr, &hidden);
  worksheet_activate(data);
  ASSERT_EQ(workbook_close(book), LXW_NO_ERROR);

  Show(path, 1);
  std::string from_calc = Imported(RunningCalc(pipe_), "FromCalc");
  EXPECT_EQ(from_calc, Imported(SheetSource::File(path), "FromFile"));
  EXPECT_NE(from_calc.find("Caf\xE9 cr\xE8me"), std::string::npos) << "in Windows-1252";
  EXPECT_EQ(from_calc.find("Hidden"), std::string::npos);
}

TEST_F(RunningCalcTest, AnExportIsANewActiveSheetThatReadsBack) {
  std::string path = dir_.File("open.xlsx");
  lxw_workbook* book = workbook_new(path.c_str());
  WriteRows(workbook_add_worksheet(book, "Sheet1"), {{"open"}});
  ASSERT_EQ(workbook_close(book), LXW_NO_ERROR);
  Show(path, 0);
  PopupClass popup;
  testing::WriteProducts(dir_.Path());
  popup.PopupPath(dir_.Path());
  popup.DataSource("Products");
  popup.OpenPopup();

  std::string sheet;
  ExportReport report = ExportToRunningCalc(popup, &sheet, pipe_);
  EXPECT_EQ(sheet, "Products");
  std::unique_ptr<Workbook> calc = OpenRunningCalc(pipe_);
  ASSERT_EQ(calc->Sheets().at(calc->ActiveSheet()).name, "Products");
  Sheet written = calc->ReadSheet(calc->ActiveSheet());
  std::vector<std::vector<std::string>> cells;
  for (const SheetRow& row : written.rows) {
    cells.emplace_back();
    for (const Cell& cell : row.cells) cells.back().push_back(cell.text);
  }
  EXPECT_EQ(cells, ExportRows(popup).rows);
  EXPECT_EQ(report.rows_written, 3);
  ExportToRunningCalc(popup, &sheet, pipe_);
  EXPECT_EQ(sheet, "Products 2");
}

TEST_F(RunningCalcTest, NoOfficeOnThePipeIsToldAndChangesNothing) {
  testing::WriteProducts(dir_.Path());
  PopupClass popup;
  popup.PopupPath(dir_.Path());
  popup.DataSource("Products");
  popup.OpenPopup();
  NoLevels levels;
  ImportUi ui{messages_, progress_, levels};
  EXPECT_FALSE(ExcelImport(popup, RunningCalc("zephyr-nobody-listens"), ui));
  ASSERT_FALSE(messages_.shown.empty());
  EXPECT_TRUE(messages_.shown.front().prompt.starts_with(
      "ZephyrPopup could not detect a loaded copy of Microsoft Excel. Please load Microsoft Excel "
      "before continuing."));
  EXPECT_EQ(popup.PopupItems()->Count(), 2);
  EXPECT_EQ(popup.Title(), "Products");
}

}  // namespace
}  // namespace zephyr::excel
