// PopupItem: one node of a popup's item tree. An item owns its children (and
// through them its whole branch); its parent is held weakly, so discarding a
// popup frees the tree without anyone breaking cycles.
//
// Every item has a process-wide numeric identity, a registry id (never an
// address), that the editor keeps as grid row data and that
// PopupClass::SetSelectedItem turns back into the item while it lives.
//
// An item loaded from a table keeps only its row there until its values are
// first read; they are then made once and kept like any others.
#ifndef ZEPHYR_RUNTIME_POPUP_ITEM_H_
#define ZEPHYR_RUNTIME_POPUP_ITEM_H_

#include <cstdint>
#include <memory>
#include <string>

#include "zephyr/runtime/popup_values.h"

namespace zephyr {

class PopupItems;
class LoadedTable;
struct ItemAccess;

class PopupItem : public Object, public std::enable_shared_from_this<PopupItem> {
  struct Token {};

 public:
  // Items are always owned by shared pointers; use Create().
  static std::shared_ptr<PopupItem> Create();
  explicit PopupItem(Token);
  ~PopupItem() override;
  PopupItem(const PopupItem&) = delete;
  PopupItem& operator=(const PopupItem&) = delete;

  // A plain data member; PopupItems::Add sets it to the item's 1-based
  // position at the time it was added.
  int32_t Index() const { return index_; }
  void Index(int32_t value) { index_ = value; }

  // The item's values, created empty on first read.
  std::shared_ptr<zephyr::PopupValues> PopupValues();
  void PopupValues(std::shared_ptr<zephyr::PopupValues> values);

  // The stored key (see popup_key.h).
  const std::string& PopupKey() const { return key_; }
  void PopupKey(std::string key);

  // The children, created empty on first read (a leaf answers an empty collection).
  std::shared_ptr<PopupItems> Children();
  void Children(std::shared_ptr<PopupItems> children);
  // True when the children collection exists and is not empty; does not create it.
  bool HasChildren() const;

  // The parent item; null for a top-level item or once the parent is gone.
  std::shared_ptr<PopupItem> Parent() const { return parent_.lock(); }
  void Parent(const std::shared_ptr<PopupItem>& parent) { parent_ = parent; }

  // The 1-based depth, set by the library's loaders; read-only to clients.
  int16_t Level() const { return level_; }

  // The registry id; unique among all items created in this process.
  int32_t Identity() const { return identity_; }

 private:
  friend struct ItemAccess;

  // What most items of a large tree never need, made on first use.
  struct Extra {
    std::shared_ptr<zephyr::PopupValues> values;
    std::shared_ptr<PopupItems> children;
    std::string loaded_key;  // unless it is the key itself
  };
  Extra& Extras();
  // Drops the table row the values would be made from.
  void ForgetRow();

  int32_t index_ = 0;
  int32_t identity_;
  int16_t level_ = 0;
  bool loaded_key_is_key_ = false;
  int32_t row_ = 0;
  const LoadedTable* table_ = nullptr;  // holds a reference while set
  std::string key_;
  std::weak_ptr<PopupItem> parent_;
  std::unique_ptr<Extra> extra_;
};

// The live item with a registry id, or null for an unknown or stale id.
std::shared_ptr<PopupItem> FindItemByIdentity(int32_t identity);

}  // namespace zephyr

#endif  // ZEPHYR_RUNTIME_POPUP_ITEM_H_
