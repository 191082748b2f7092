#include "codepage_report.h"

#include <cstdio>
#include <functional>

#include "zephyr/support/codepage.h"

namespace zephyr::cli {

void CodePageReport::Check(const std::string& where, const std::string& text) {
  std::string stored = ToCodePage(text);
  if (FromCodePage(stored) == text) return;
  lines_.push_back(where + ": '" + text + "' cannot be written in " + ActiveCodePage().Name() +
                   "; it would be saved as '" + FromCodePage(stored) + "'");
}

void CodePageReport::CheckPopup(PopupClass& popup) {
  Check("the title", popup.Title());
  int level = 1;
  for (const auto& question : *popup.PopupLevels()) {
    Check("question " + std::to_string(level++), question->Question().ToText());
  }
  for (const auto& field : *popup.PopupFields()) {
    Check("field " + std::to_string(field->Index()) + "'s name", field->Name());
  }
  std::function<void(PopupItems&)> walk = [&](PopupItems& items) {
    for (const auto& item : items) {
      int value_number = 1;
      for (const auto& value : *item->PopupValues()) {
        Check("item '" + item->PopupKey() + "' value " + std::to_string(value_number++),
              value->Value());
      }
      if (item->HasChildren()) walk(*item->Children());
    }
  };
  walk(*popup.PopupItems());
}

bool CodePageReport::TellAndAllowSave(bool strict) const {
  const char* prefix = strict ? "" : "warning: ";
  for (const std::string& line : lines_)
    std::fprintf(stderr, "zpopup: %s%s\n", prefix, line.c_str());
  if (!strict || lines_.empty()) return true;
  std::fputs("zpopup: nothing saved (--strict)\n", stderr);
  return false;
}

}  // namespace zephyr::cli
