// PopupLevels: the ordered question levels of a popup (level 1 is the top).
#ifndef ZEPHYR_RUNTIME_POPUP_LEVELS_H_
#define ZEPHYR_RUNTIME_POPUP_LEVELS_H_

#include <memory>
#include <string>

#include "zephyr/runtime/collection.h"
#include "zephyr/runtime/popup_level.h"

namespace zephyr {

class PopupLevels : public Object {
 public:
  // Appends a level with its question (text or an object reference), its
  // initial index (raises overflow when it does not fit 16 bits) and tag; under
  // sKey when it is not empty.
  std::shared_ptr<PopupLevel> Add(Variant Question, int32_t IntialIndex, Variant Tag = {},
                                  const std::string& sKey = {});
  // The level at a 1-based position or under a key; a missing one raises the
  // collection's error (9 or 5).
  std::shared_ptr<PopupLevel> Item(const Variant& vntIndexKey) const;
  int32_t Count() const { return levels_.Count(); }
  void Remove(const Variant& vntIndexKey) { levels_.Remove(vntIndexKey); }
  void Clear() { levels_.Clear(); }

  auto begin() const { return levels_.begin(); }
  auto end() const { return levels_.end(); }

 private:
  Collection<PopupLevel> levels_;
};

}  // namespace zephyr

#endif  // ZEPHYR_RUNTIME_POPUP_LEVELS_H_
