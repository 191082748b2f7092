// PopupFields: the ordered field definitions of a popup, key field first.
#ifndef ZEPHYR_RUNTIME_POPUP_FIELDS_H_
#define ZEPHYR_RUNTIME_POPUP_FIELDS_H_

#include <memory>
#include <string>

#include "zephyr/runtime/collection.h"
#include "zephyr/runtime/popup_field.h"

namespace zephyr {

class PopupFields : public Object {
 public:
  // Appends a field whose Index is the count before adding + 1; under sKey
  // when it is not empty.
  std::shared_ptr<PopupField> Add(std::string FieldName, int16_t FieldLength, int16_t InitialIndex,
                                  int16_t StartCharPos, const std::string& sKey = {});
  // The field at a 1-based position or under a key; a missing one raises the
  // collection's error (9 or 5).
  std::shared_ptr<PopupField> Item(const Variant& vntIndexKey) const;
  int32_t Count() const { return fields_.Count(); }
  void Remove(const Variant& vntIndexKey) { fields_.Remove(vntIndexKey); }
  void Clear() { fields_.Clear(); }

  auto begin() const { return fields_.begin(); }
  auto end() const { return fields_.end(); }

 private:
  Collection<PopupField> fields_;
};

}  // namespace zephyr

#endif  // ZEPHYR_RUNTIME_POPUP_FIELDS_H_
