#include "helpers/popup_files.h"

#include "helpers/temp_dir.h"
#include "zephyr/runtime/popup_class.h"
#include "zephyr/table/dbase.h"

namespace zephyr::testing {

void WritePopupFiles(const std::string& folder, const std::string& base, const PopupDesign& design,
                     const std::vector<Row>& rows, const std::string& template_name,
                     const std::string& data_name) {
  PopupClass popup;
  popup.PopupPath(folder);
  popup.DataSource(base);
  popup.Title(design.title);
  int32_t index = 1;
  for (const auto& question : design.questions)
    popup.PopupLevels()->Add(Variant(question), index++);
  int16_t key_width = static_cast<int16_t>(2 * design.questions.size());
  popup.PopupFields()->Add("Popup Code", key_width, 0, 0);
  index = 1;
  for (const auto& [name, width] : design.fields) {
    popup.PopupFields()->Add(name, width, static_cast<int16_t>(index++), 0);
  }
  popup.WriteTemplate();
  std::string template_path =
      folder + "/" + (template_name.empty() ? base + ".ZPT" : template_name);
  WriteBytes(template_path, ReadBytes(folder + "/" + base + ".bpt"));
  std::remove((folder + "/" + base + ".bpt").c_str());

  dBase table;
  table.Fields()->Add("POPUP_CODE", "C", key_width, 0, 0);
  int32_t column = 2;
  for (const auto& [name, width] : design.fields) {
    table.Fields()->Add("FIELD" + std::to_string(column++), "C", width, 0, 0);
  }
  table.OpenMode(1);
  table.OpenFile(folder + "/" + (data_name.empty() ? base + ".ZPD" : data_name));
  for (const Row& row : rows) {
    table.InitRecord();
    for (size_t i = 0; i < row.size(); ++i)
      table.Value(static_cast<int32_t>(i + 1), Variant(row[i]));
    table.PutRecord(0);
  }
  table.CloseFile();
}

void WriteProducts(const std::string& folder) {
  PopupDesign design;
  design.title = "Products";
  design.questions = {"Group", "Item"};
  design.fields = {{"Name", 10}, {"Note", 5}};
  WritePopupFiles(folder, "Products", design,
                  {{"  20", "Bakery", "b"},
                   {"  10", "Fruit", "f"},
                   {"1020", "Pears", "p"},
                   {"1010", "Apples", "a"},
                   {"2010", "Bread", "r"}});
}

}  // namespace zephyr::testing
