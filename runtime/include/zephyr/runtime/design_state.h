// DesignState: what a change of design may change in a popup, taken so that
// it can be put back: the levels, the fields, and every item's key, level,
// values and children. Putting it back reuses the item objects it was taken
// from, so every item keeps its identity; items a removed level took away
// stay alive while the state is held.
#ifndef ZEPHYR_RUNTIME_DESIGN_STATE_H_
#define ZEPHYR_RUNTIME_DESIGN_STATE_H_

#include <memory>
#include <string>
#include <vector>

#include "zephyr/runtime/collection_key.h"
#include "zephyr/runtime/popup_class.h"

namespace zephyr {

class DesignState {
 public:
  // Copies what the popup holds now; later edits of the popup leave the copy
  // as it was.
  static DesignState Capture(PopupClass& popup);
  // Makes the popup's design and items what they were when captured.
  void Restore(PopupClass& popup) const;

 private:
  struct Sibling {
    std::shared_ptr<PopupItem> item;
    CollectionKey key;
  };
  struct ItemState {
    std::shared_ptr<PopupItem> item;
    std::string key;
    int16_t level;
    std::vector<std::string> values;
    std::vector<Sibling> children;
  };

  static std::vector<Sibling> SiblingsIn(PopupItems& list);
  static void Refill(PopupItems& list, const std::vector<Sibling>& siblings);

  int16_t levels_ = 0;
  std::vector<PopupClass::LevelSpec> level_specs_;
  std::vector<PopupClass::FieldSpec> field_specs_;
  std::vector<Sibling> top_level_;
  std::vector<ItemState> items_;
};

}  // namespace zephyr

#endif  // ZEPHYR_RUNTIME_DESIGN_STATE_H_
