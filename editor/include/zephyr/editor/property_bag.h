// PropertyBag: the persisted properties of an editor instance, as a host
// stores them between sessions (a form file, a settings store). A property
// written with its default value is not stored, so reading it back gives the
// default again.
#ifndef ZEPHYR_EDITOR_PROPERTY_BAG_H_
#define ZEPHYR_EDITOR_PROPERTY_BAG_H_

#include <map>
#include <string>

#include "zephyr/support/variant.h"

namespace zephyr::editor {

class PropertyBag {
 public:
  // The stored value, or default_value when none is stored.
  Variant ReadProperty(const std::string& name, const Variant& default_value) const;
  // Stores the value; a value equal to default_value removes the property.
  void WriteProperty(const std::string& name, const Variant& value, const Variant& default_value);

  bool Contains(const std::string& name) const { return values_.count(name) != 0; }
  const std::map<std::string, Variant>& Values() const { return values_; }

 private:
  std::map<std::string, Variant> values_;
};

}  // namespace zephyr::editor

#endif  // ZEPHYR_EDITOR_PROPERTY_BAG_H_
