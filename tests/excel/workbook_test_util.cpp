#include "workbook_test_util.h"

#include <gtest/gtest.h>
#include <zip.h>

#include <memory>

#include "helpers/temp_dir.h"

namespace zephyr::testing {

std::string MakeZip(const ZipEntries& entries) {
  TempDir dir;
  const std::string path = dir.File("archive.zip");
  int error = 0;
  zip_t* archive = zip_open(path.c_str(), ZIP_CREATE | ZIP_TRUNCATE, &error);
  EXPECT_NE(archive, nullptr);
  if (archive == nullptr) return "";
  // libzip reads the sources when the archive is closed; keep them alive.
  std::vector<std::unique_ptr<std::string>> contents;
  for (const auto& [name, content] : entries) {
    contents.push_back(std::make_unique<std::string>(content));
    zip_source_t* source =
        zip_source_buffer(archive, contents.back()->data(), contents.back()->size(), 0);
    EXPECT_GE(zip_file_add(archive, name.c_str(), source, ZIP_FL_OVERWRITE), 0);
  }
  EXPECT_EQ(zip_close(archive), 0);
  return ReadBytes(path);
}

std::string MakeXlsx(const std::string& sheet_xml, const std::string& shared_strings_xml,
                     const std::string& styles_xml) {
  constexpr char kRelationships[] =
      "http://schemas.openxmlformats.org/officeDocument/2006/relationships";
  std::string rels = std::string(
                         "<Relationships xmlns=\"http://schemas.openxmlformats.org/"
                         "package/2006/relationships\">") +
                     "<Relationship Id=\"rId1\" Type=\"" + kRelationships +
                     "/worksheet\" Target=\"worksheets/sheet1.xml\"/>";
  ZipEntries entries = {
      {"[Content_Types].xml", "<Types/>"},
      {"xl/workbook.xml",
       std::string("<workbook xmlns:r=\"") + kRelationships +
           "\"><sheets><sheet name=\"Data\" sheetId=\"1\" r:id=\"rId1\"/></sheets></workbook>"},
      {"xl/worksheets/sheet1.xml", sheet_xml},
  };
  if (!shared_strings_xml.empty()) {
    rels += std::string("<Relationship Id=\"rId2\" Type=\"") + kRelationships +
            "/sharedStrings\" Target=\"sharedStrings.xml\"/>";
    entries.emplace_back("xl/sharedStrings.xml", shared_strings_xml);
  }
  if (!styles_xml.empty()) {
    rels += std::string("<Relationship Id=\"rId3\" Type=\"") + kRelationships +
            "/styles\" Target=\"styles.xml\"/>";
    entries.emplace_back("xl/styles.xml", styles_xml);
  }
  entries.emplace_back("xl/_rels/workbook.xml.rels", rels + "</Relationships>");
  return MakeZip(entries);
}

std::string MakeOds(const std::string& content_xml, const std::string& settings_xml) {
  ZipEntries entries = {{"mimetype", "application/vnd.oasis.opendocument.spreadsheet"},
                        {"content.xml", content_xml}};
  if (!settings_xml.empty()) entries.emplace_back("settings.xml", settings_xml);
  return MakeZip(entries);
}

std::vector<std::string> Texts(const excel::SheetRow& row) {
  std::vector<std::string> texts;
  for (const excel::Cell& cell : row.cells) texts.push_back(cell.text);
  while (!texts.empty() && texts.back().empty()) texts.pop_back();
  return texts;
}

std::vector<std::string> RowTexts(const excel::Sheet& sheet, size_t index) {
  return index < sheet.rows.size() ? Texts(sheet.rows[index]) : std::vector<std::string>{};
}

excel::CellKind KindAt(const excel::Sheet& sheet, size_t row, size_t column) {
  if (row >= sheet.rows.size() || column >= sheet.rows[row].cells.size()) {
    return excel::CellKind::kEmpty;
  }
  return sheet.rows[row].cells[column].kind;
}

void ExpectFixtureItems(const excel::Sheet& sheet) {
  using Texts = std::vector<std::string>;
  using enum excel::CellKind;
  EXPECT_EQ(sheet.name, "Items");
  ASSERT_EQ(sheet.rows.size(), 9u);
  EXPECT_EQ(RowTexts(sheet, 0), (Texts{"Key", "Name", "Price"}));
  EXPECT_EQ(RowTexts(sheet, 1), (Texts{"0101", "Apple", "1.5", "2.25"}));
  EXPECT_EQ(RowTexts(sheet, 2), (Texts{"0102", "Pear  two", "3"}));
  EXPECT_EQ(RowTexts(sheet, 4), (Texts{"0104", "#N/A", "#DIV/0!"}));
  EXPECT_EQ(RowTexts(sheet, 5), (Texts{"TRUE", "line1\nline2", "25%"}));
  EXPECT_EQ(RowTexts(sheet, 6), (Texts{"x", "x", "x"}));
  EXPECT_EQ(RowTexts(sheet, 8), (Texts{"same", "row"}));
  const std::pair<size_t, size_t> at[] = {{1, 0}, {4, 1}, {4, 2}, {5, 0}, {5, 2}};
  const excel::CellKind kinds[] = {kNumber, kError, kError, kBoolean, kNumber};
  for (size_t i = 0; i < std::size(at); ++i) {
    EXPECT_EQ(KindAt(sheet, at[i].first, at[i].second), kinds[i]) << at[i].first << at[i].second;
  }
  for (size_t row = 0; row < sheet.rows.size(); ++row) {
    EXPECT_EQ(sheet.rows[row].hidden, row == 3) << "row " << row + 1;
  }
}

}  // namespace zephyr::testing
