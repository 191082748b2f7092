// EditRecord: edits of a popup written down as bytes, so that they can be
// made again on the popup as it was before them, in another process. The
// editor keeps one per unsaved session to recover the work a crash would
// lose.
//
// Items are named by their place: the 1-based positions in the sibling
// lists from the top level down. Places stay true because the edits are
// made again in the order they were made, on the same popup.
#ifndef ZEPHYR_RUNTIME_EDIT_RECORD_H_
#define ZEPHYR_RUNTIME_EDIT_RECORD_H_

#include <string>
#include <string_view>

#include "zephyr/runtime/popup_class.h"

namespace zephyr {

class EditRecord {
 public:
  // Value `position` (1-based, as PopupValues counts) of the item, as it is now.
  void Value(PopupClass& popup, PopupItem& item, int32_t position);
  // The item's own two-digit code as it is now; its branch's keys follow it.
  void Code(PopupClass& popup, const PopupItem& item);
  // An item taken out of its sibling list, by the place it had.
  void Removed(PopupClass& popup, const PopupClass::DetachedItem& detached);
  // An item, with its branch, where it stands now in the popup.
  void Inserted(PopupClass& popup, const std::shared_ptr<PopupItem>& item);
  // The whole popup as it is now: title, levels, fields and items.
  void Whole(PopupClass& popup);
  // The edits of another record, after these.
  void Append(const EditRecord& other) { bytes_ += other.bytes_; }

  const std::string& Bytes() const { return bytes_; }
  bool Empty() const { return bytes_.empty(); }

 private:
  std::string bytes_;
};

// Makes the recorded edits on `popup`, in order. Bytes that do not fit the
// popup (a place it has no item at, a cut-off record) raise invalid file
// format (321), leaving the edits before that one made.
void ReplayEdits(PopupClass& popup, std::string_view bytes);

}  // namespace zephyr

#endif  // ZEPHYR_RUNTIME_EDIT_RECORD_H_
