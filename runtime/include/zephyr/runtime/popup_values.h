// PopupValues: the ordered values of an item. Value i belongs to companion
// field i + 1 (data-table column i + 1).
#ifndef ZEPHYR_RUNTIME_POPUP_VALUES_H_
#define ZEPHYR_RUNTIME_POPUP_VALUES_H_

#include <memory>
#include <string>

#include "zephyr/runtime/collection.h"
#include "zephyr/runtime/popup_data.h"

namespace zephyr {

class PopupValues : public Object {
 public:
  // Appends a value; under sKey when it is not empty (a duplicate key raises
  // 457 and nothing is added).
  std::shared_ptr<PopupData> Add(std::string Value, const std::string& sKey = {});
  // The value at a 1-based position or under a key; a missing one raises the
  // collection's error (9 or 5).
  std::shared_ptr<PopupData> Item(const Variant& vntIndexKey) const;
  int32_t Count() const { return values_.Count(); }
  // Makes room for `count` values in all without reallocating.
  void Reserve(int32_t count) { values_.Reserve(count); }
  void Remove(const Variant& vntIndexKey) { values_.Remove(vntIndexKey); }

  auto begin() const { return values_.begin(); }
  auto end() const { return values_.end(); }

 private:
  Collection<PopupData> values_;
};

}  // namespace zephyr

#endif  // ZEPHYR_RUNTIME_POPUP_VALUES_H_
