#include "import_builders.h"

#include <algorithm>
#include <cstdio>
#include <functional>
#include <map>
#include <string>

#include "zephyr/support/debug_log.h"
#include "zephyr/support/text.h"

namespace zephyr::excel {

namespace {

constexpr const char* kModule = "mExcel";

std::string TwoDigits(int number) {
  char code[3];
  std::snprintf(code, sizeof code, "%02d", number);
  return code;
}

void AddCompanions(const ExcelArray& sheet, int levels, int32_t row, ImportNode& leaf) {
  for (int32_t column = levels + 2; column <= sheet.ColumnCount(); ++column) {
    leaf.companions.push_back(std::string(RTrim(sheet.Cell(row, column))));
  }
}

// The largest number of children any one item of the level above has.
int CountChildren(const ImportNode& root, int level) {
  int most = 0;
  std::function<void(const ImportNode&, int)> visit = [&](const ImportNode& node, int depth) {
    if (depth == level - 1) {
      most = std::max(most, static_cast<int>(node.Children().size()));
      return;
    }
    for (const auto& child : node.Children()) visit(*child, depth + 1);
  };
  visit(root, 0);
  return most;
}

void RenumberItems(ImportNode& node, int level, int levels, const std::vector<int>& steps) {
  int step = steps[static_cast<size_t>(level - 1)];
  int position = 0;
  for (auto& child : node.Children()) {
    child->code = TwoDigits(++position * step);
    if (level < levels) RenumberItems(*child, level + 1, levels, steps);
  }
}

}  // namespace

std::optional<RuleBreach> ImportWithkey(const ExcelArray& sheet, int levels, ImportNode& root,
                                        Progress& progress) {
  progress.SetMessage("Copying Data to Memory");
  size_t width = static_cast<size_t>(2 * levels);
  for (int32_t row = 2; row <= sheet.RowCount(); ++row) {
    progress.SetMessage("Importing Popup Item at row " + std::to_string(row));
    std::string key = sheet.Trimmed(row, 1);
    if (auto breach = KeyFormatBreach(key, width)) {
      DebugLog(kModule, "ImportWithkey", "Validation Failed");
      return breach;
    }
    ImportNode* node = &root;
    for (int level = 1; level <= levels; ++level) {
      std::string code = key.substr(static_cast<size_t>(2 * level - 2), 2);
      ImportNode* child = node->ChildWithCode(code);
      if (!child) child = &node->AddChild(code, sheet.Trimmed(row, level + 1));
      node = child;
    }
    AddCompanions(sheet, levels, row, *node);
  }
  // Siblings stand in key order whatever the order of the rows.
  std::function<void(ImportNode&)> sort = [&](ImportNode& node) {
    auto& children = node.Children();
    std::stable_sort(children.begin(), children.end(),
                     [](const auto& a, const auto& b) { return a->code < b->code; });
    for (auto& child : children) sort(*child);
  };
  sort(root);
  DebugLog(kModule, "ImportWithkey", "Import Succeeded");
  return std::nullopt;
}

std::vector<int32_t> ReorderMatrix(const ExcelArray& sheet, int levels) {
  std::map<std::vector<std::string>, size_t> first_seen;
  std::vector<std::pair<std::vector<size_t>, int32_t>> ordered;
  for (int32_t row = 2; row <= sheet.RowCount(); ++row) {
    std::vector<std::string> path;
    std::vector<size_t> rank;
    for (int level = 1; level < levels; ++level) {
      path.push_back(sheet.Trimmed(row, level + 1));
      rank.push_back(first_seen.emplace(path, first_seen.size()).first->second);
    }
    ordered.emplace_back(std::move(rank), row);
  }
  std::stable_sort(ordered.begin(), ordered.end(),
                   [](const auto& a, const auto& b) { return a.first < b.first; });
  std::vector<int32_t> rows;
  for (const auto& entry : ordered) rows.push_back(entry.second);
  return rows;
}

void ImportNokey(const ExcelArray& sheet, int levels, const std::vector<int32_t>& rows,
                 ImportNode& root, Progress& progress) {
  progress.SetMessage("Copying Data to Memory");
  for (int32_t row : rows) {
    progress.SetMessage("Importing Popup Item at row: " + std::to_string(row));
    ImportNode* node = &root;
    for (int level = 1; level <= levels; ++level) {
      std::string text = sheet.Trimmed(row, level + 1);
      ImportNode* child = level < levels ? node->ChildWithText(text) : nullptr;
      node = child ? child : &node->AddChild("", text);
    }
    AddCompanions(sheet, levels, row, *node);
  }
  DebugLog(kModule, "ImportNokey", "Import Succeeded");
}

std::optional<RuleBreach> AutoGenKeys(ImportNode& root, int levels) {
  std::vector<int> steps;
  for (int level = 1; level <= levels; ++level) {
    int most = std::max(1, CountChildren(root, level));
    int step = std::min(10, 99 / most);
    if (step < 1) return InvalidKeyBreach();  // more than 99 siblings have no two-digit codes
    steps.push_back(step);
  }
  RenumberItems(root, 1, levels, steps);
  return std::nullopt;
}

}  // namespace zephyr::excel
