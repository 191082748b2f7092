#include "zephyr/editor/property_bag.h"

namespace zephyr::editor {

Variant PropertyBag::ReadProperty(const std::string& name, const Variant& default_value) const {
  auto found = values_.find(name);
  return found == values_.end() ? default_value : found->second;
}

void PropertyBag::WriteProperty(const std::string& name, const Variant& value,
                                const Variant& default_value) {
  if (value == default_value) {
    values_.erase(name);
  } else {
    values_[name] = value;
  }
}

}  // namespace zephyr::editor
