// Texts that the code page of the popup's files cannot hold. They are saved
// converted, a character the code page lacks becoming "?", so the
// command line tells the user about each one, or refuses with --strict.
#ifndef ZEPHYR_APPS_ZPOPUP_CODEPAGE_REPORT_H_
#define ZEPHYR_APPS_ZPOPUP_CODEPAGE_REPORT_H_

#include <string>
#include <vector>

#include "zephyr/runtime/popup_class.h"

namespace zephyr::cli {

class CodePageReport {
 public:
  // Notes the text when the code page cannot hold it; `where` names its place
  // ("the title", "item '  0101' value 2").
  void Check(const std::string& where, const std::string& text);
  // Every text of the popup: title, questions, field names and item values.
  void CheckPopup(PopupClass& popup);

  size_t Count() const { return lines_.size(); }
  // Tells every noted text on standard error: as warnings, answering true, or
  // with `strict` as errors followed by "nothing saved (--strict)", answering
  // false when there were any.
  bool TellAndAllowSave(bool strict) const;

 private:
  std::vector<std::string> lines_;
};

}  // namespace zephyr::cli

#endif  // ZEPHYR_APPS_ZPOPUP_CODEPAGE_REPORT_H_
