#include "popup_name.h"

#include <filesystem>

#include "zephyr/support/file_utils.h"
#include "zephyr/support/text.h"

namespace zephyr::cli {

PopupName PopupName::Parse(const std::string& argument) {
  std::filesystem::path path(argument);
  std::string extension = UpperAscii(path.extension().string());
  if (extension == ".ZPT" || extension == ".ZPD") path.replace_extension();
  return {path.parent_path().string(), path.filename().string()};
}

void PopupName::Apply(PopupClass& popup) const {
  popup.PopupPath(folder);
  popup.DataSource(base);
}

bool PopupName::Exists() const {
  std::string name = ResolveCaseVariant(folder, base + ".ZPT");
  return PathExists(WithTrailingSlash(folder) + name);
}

std::string PopupName::File(const std::string& extension) const {
  std::string name = ResolveCaseVariant(folder, base + extension);
  return folder.empty() ? name : WithTrailingSlash(folder) + name;
}

std::string PopupName::Display() const {
  return folder.empty() ? base : folder + "/" + base;
}

}  // namespace zephyr::cli
