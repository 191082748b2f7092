// Writes popup files for tests: a template with the given design and a data
// table with the given rows, in the given order, straight through the table
// engine (so tests can build tables the save path would never write).
#ifndef ZEPHYR_TESTS_HELPERS_POPUP_FILES_H_
#define ZEPHYR_TESTS_HELPERS_POPUP_FILES_H_

#include <cstdint>
#include <string>
#include <vector>

namespace zephyr::testing {

struct PopupDesign {
  std::string title = "Test";
  std::vector<std::string> questions;                   // one per level
  std::vector<std::pair<std::string, int16_t>> fields;  // companion fields: name, width
};

// One record: the key cell, then one cell per companion field.
using Row = std::vector<std::string>;

// Writes folder/base.ZPT (unless template_name says otherwise) and
// folder/base.ZPD (or data_name).
void WritePopupFiles(const std::string& folder, const std::string& base, const PopupDesign& design,
                     const std::vector<Row>& rows, const std::string& template_name = {},
                     const std::string& data_name = {});

// Products: two levels (Group, Item), fields Name(10) and Note(5);
// 10 Fruit > 10 Apples, 20 Pears; 20 Bakery > 10 Bread.
void WriteProducts(const std::string& folder);

}  // namespace zephyr::testing

#endif  // ZEPHYR_TESTS_HELPERS_POPUP_FILES_H_
