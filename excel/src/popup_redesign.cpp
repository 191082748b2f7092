#include "popup_redesign.h"

#include <algorithm>
#include <filesystem>
#include <functional>

#include "sheet_rules.h"
#include "item_access.h"
#include "zephyr/runtime/popup_key.h"
#include "zephyr/support/codepage.h"
#include "zephyr/support/text.h"

namespace zephyr::excel {

void ReFormatZephyrPopup(PopupClass& popup, const SheetShape& shape) {
  auto width_of_column = [&](int32_t column) {
    size_t widest = 1;
    for (int32_t row = 2; row <= shape.sheet.RowCount(); ++row) {
      widest =
          std::max(widest, ActiveCodePage().CharacterCount(RTrim(shape.sheet.Cell(row, column))));
    }
    return static_cast<int16_t>(std::min<size_t>(widest, kMaxImportFieldLength));
  };
  auto heading = [&](int32_t column, const std::string& fallback) {
    std::string text = shape.sheet.Trimmed(1, column);
    return text.empty() ? fallback : text;
  };

  auto old_levels = popup.PopupLevels();
  auto old_fields = popup.PopupFields();
  // Keeping the popup's structure keeps every one of its questions and
  // fields; sheet columns beyond them add levels and fields named by their
  // headings.
  int popup_levels =
      shape.keep_popup_structure ? std::max<int>(shape.levels, old_levels->Count()) : shape.levels;
  auto levels = std::make_shared<PopupLevels>();
  for (int level = 1; level <= popup_levels; ++level) {
    bool keep = shape.keep_popup_structure && level <= old_levels->Count();
    Variant question = keep ? old_levels->Item(level)->Question()
                            : Variant(heading(level + 1, "Level " + std::to_string(level)));
    levels->Add(question, level);
  }

  int16_t text_width = 1;
  for (int level = 1; level <= shape.levels; ++level) {
    text_width = std::max(text_width, width_of_column(level + 1));
  }
  auto fields = std::make_shared<PopupFields>();
  fields->Add("Popup Code", static_cast<int16_t>(2 * popup_levels), 0, 0);
  if (old_fields->Count() >= 2) {
    auto text_field = old_fields->Item(2);
    fields->Add(text_field->Name(), std::max(text_field->FieldLength(), text_width), 1, 0);
  } else {
    fields->Add("Description", text_width, 1, 0);
  }
  int32_t kept_fields = shape.keep_popup_structure ? old_fields->Count() : 2;
  for (int32_t i = 3; i <= kept_fields; ++i) {
    auto field = old_fields->Item(i);
    int32_t column = shape.levels + i - 1;  // the companion column that fills field i
    int16_t length = field->FieldLength();
    if (column <= shape.sheet.ColumnCount()) length = std::max(length, width_of_column(column));
    fields->Add(field->Name(), length, static_cast<int16_t>(i - 1), 0);
  }
  for (int32_t k = std::max(1, kept_fields - 1); k <= shape.CompanionColumns(); ++k) {
    int32_t column = shape.levels + 1 + k;
    fields->Add(heading(column, "Field " + std::to_string(k + 2)), width_of_column(column),
                static_cast<int16_t>(k + 1), 0);
  }
  popup.PopupLevels(levels);
  popup.PopupFields(fields);
  popup.Levels(static_cast<int16_t>(popup_levels));
  if (popup.Title().empty()) {
    popup.Title(std::filesystem::path(shape.workbook_path).stem().string());
  }
}

std::string FieldNameOfColumn(PopupClass& popup, const SheetShape& shape, int32_t column) {
  auto fields = popup.PopupFields();
  if (column <= shape.levels + 1)
    return fields->Count() >= 2 ? fields->Item(2)->Name() : "Description";
  int32_t field = column - shape.levels + 1;  // the first companion column fills field 3
  if (shape.keep_popup_structure && field <= fields->Count()) return fields->Item(field)->Name();
  std::string heading = shape.sheet.Trimmed(1, column);
  return heading.empty() ? "Field " + std::to_string(field) : heading;
}

void CopyItems(PopupClass& popup, const ImportNode& root) {
  int32_t value_count = popup.PopupFields()->Count() - 1;
  auto levels = popup.PopupLevels();
  auto top = std::make_shared<PopupItems>();
  top->Question(levels->Item(1)->Question().ToText());
  std::function<void(const ImportNode&, PopupItems&, const std::shared_ptr<PopupItem>&,
                     const std::string&, int)>
      copy = [&](const ImportNode& node, PopupItems& siblings,
                 const std::shared_ptr<PopupItem>& parent, const std::string& path, int level) {
        std::string compact = path + node.code;
        auto item = siblings.Add(FormatStoredKey(compact, popup.Levels()));
        ItemAccess::SetLevel(*item, static_cast<int16_t>(level));
        item->Parent(parent);
        auto values = item->PopupValues();
        values->Add(node.text);
        for (int32_t i = 1; i < value_count; ++i) {
          size_t companion = static_cast<size_t>(i - 1);
          values->Add(companion < node.companions.size() ? node.companions[companion] : "");
        }
        if (node.Children().empty()) return;
        auto children = item->Children();
        children->Question(levels->Item(level + 1)->Question().ToText());
        for (const auto& child : node.Children()) copy(*child, *children, item, compact, level + 1);
      };
  for (const auto& node : root.Children()) copy(*node, *top, nullptr, "", 1);
  popup.PopupItems()->Clear();
  popup.PopupItems(top);
}

}  // namespace zephyr::excel
