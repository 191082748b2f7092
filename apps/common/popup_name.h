// How the command line names a popup: folder and base name
// ("examples/Products"), or a path to either of its files in any letter case
// ("examples/Products.ZPT", "examples/products.zpd").
#ifndef ZEPHYR_APPS_COMMON_POPUP_NAME_H_
#define ZEPHYR_APPS_COMMON_POPUP_NAME_H_

#include <string>

#include "zephyr/runtime/popup_class.h"

namespace zephyr::cli {

struct PopupName {
  std::string folder;  // "" for the working folder
  std::string base;

  static PopupName Parse(const std::string& argument);
  // Points the popup at these files.
  void Apply(PopupClass& popup) const;
  // True when the popup's template exists (in any letter case).
  bool Exists() const;
  // The path of the popup's file with this extension (".ZPT" or ".ZPD"),
  // under the name it has on disk when only its letter case differs.
  std::string File(const std::string& extension) const;
  std::string Display() const;
};

}  // namespace zephyr::cli

#endif  // ZEPHYR_APPS_COMMON_POPUP_NAME_H_
