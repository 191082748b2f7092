// The two tree edits that work on keys.
#include <algorithm>

#include "zephyr/runtime/popup_class.h"
#include "zephyr/support/errors.h"

namespace zephyr {

void PopupClass::ModifyKey(std::string_view NewKey, const std::shared_ptr<PopupItem>& Item,
                           int16_t StartLevel) {
  std::string key = Item->PopupKey();
  // The item's own code stands last; an ancestor's code at its level's place.
  int64_t position = Item->Level() == StartLevel ? static_cast<int64_t>(key.size()) - 1
                                                 : 2 * static_cast<int64_t>(StartLevel) - 1;
  if (position < 1 || position > static_cast<int64_t>(key.size())) {
    throw RuntimeError(
        RuntimeErrorCode::kInvalidArgument,
        "level " + std::to_string(StartLevel) + " has no code in the key '" + key + "'");
  }
  // At most two characters are overwritten; the key never changes length.
  size_t start = static_cast<size_t>(position - 1);
  size_t count = std::min({NewKey.size(), size_t{2}, key.size() - start});
  key.replace(start, count, NewKey.substr(0, count));
  Item->PopupKey(std::move(key));
  if (Item->Level() < levels_count_) {
    for (const auto& child : *Item->Children()) ModifyKey(NewKey, child, StartLevel);
  }
}

void PopupClass::DeleteLevel(int16_t LeveltoDelete,
                             const std::shared_ptr<zephyr::PopupItems>& items) {
  for (const auto& item : *items) {
    if (item->Level() == LeveltoDelete - 1) {
      auto children = item->Children();
      while (children->Count() > 0) children->Remove(children->Count());
    } else {
      DeleteLevel(LeveltoDelete, item->Children());
    }
  }
}

}  // namespace zephyr
