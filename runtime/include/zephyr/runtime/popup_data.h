// PopupData: one value of an item, for one companion field.
#ifndef ZEPHYR_RUNTIME_POPUP_DATA_H_
#define ZEPHYR_RUNTIME_POPUP_DATA_H_

#include <string>

#include "zephyr/support/variant.h"

namespace zephyr {

class PopupData : public Object {
 public:
  const std::string& Value() const { return value_; }
  void Value(std::string value) { value_ = std::move(value); }

 private:
  std::string value_;
};

}  // namespace zephyr

#endif  // ZEPHYR_RUNTIME_POPUP_DATA_H_
