// Collection<T>: the ordered, optionally keyed collection that the four
// public collection classes wrap. Positions are numbered from 1; keys are
// exact texts, unique, and fixed when the element is added. It raises the
// platform's collection errors: subscript out of range (9) for a bad
// position, invalid argument (5) for a missing key, duplicate key (457) when
// adding under a key already present.
#ifndef ZEPHYR_RUNTIME_COLLECTION_H_
#define ZEPHYR_RUNTIME_COLLECTION_H_

#include <algorithm>
#include <bit>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "zephyr/runtime/collection_key.h"
#include "zephyr/support/errors.h"
#include "zephyr/support/variant.h"

namespace zephyr {

template <typename T, template <typename> class Allocator = std::allocator>
class Collection {
  struct Entry {
    std::shared_ptr<T> element;
    CollectionKey key;
  };
  using Entries = std::vector<Entry, Allocator<Entry>>;

 public:
  using Pointer = std::shared_ptr<T>;

  // Iterates over the elements (as const Pointer&) in order.
  class const_iterator {
   public:
    using Base = typename Entries::const_iterator;
    explicit const_iterator(Base base) : base_(base) {}
    const Pointer& operator*() const { return base_->element; }
    const Pointer* operator->() const { return &base_->element; }
    const_iterator& operator++() {
      ++base_;
      return *this;
    }
    bool operator==(const const_iterator& other) const { return base_ == other.base_; }

   private:
    Base base_;
  };

  int32_t Count() const { return static_cast<int32_t>(entries_.size()); }

  // Appends without a key.
  void Add(Pointer element) { entries_.push_back({std::move(element), CollectionKey()}); }

  // Appends under a key; a key already present raises duplicate key (457)
  // and nothing is added.
  void Add(Pointer element, std::string key) {
    if (FindEntry(key) != nullptr) {
      throw RuntimeError(RuntimeErrorCode::kDuplicateKey, "key '" + key + "'");
    }
    entries_.push_back({std::move(element), CollectionKey(key)});
    if (2 * entries_.size() > index_.size()) {
      RebuildIndex(entries_.size());
    } else {
      Place(entries_.size() - 1);
    }
  }

  // The element at a 1-based position, raising subscript out of range.
  const Pointer& At(int32_t position) const {
    if (position < 1 || position > Count()) {
      throw RuntimeError(RuntimeErrorCode::kSubscriptOutOfRange,
                         "no element at position " + std::to_string(position));
    }
    return entries_[static_cast<size_t>(position - 1)].element;
  }

  // The key of the element at a 1-based position, raising subscript out of range.
  const CollectionKey& KeyAt(int32_t position) const {
    At(position);  // range check
    return entries_[static_cast<size_t>(position - 1)].key;
  }

  // The element under a key, raising invalid argument when there is none.
  const Pointer& ByKey(const std::string& key) const {
    if (const Entry* entry = FindEntry(key)) return entry->element;
    throw RuntimeError(RuntimeErrorCode::kInvalidArgument, "no element with key '" + key + "'");
  }

  // The element under a key, or null.
  Pointer Find(const std::string& key) const {
    const Entry* entry = FindEntry(key);
    return entry ? entry->element : nullptr;
  }

  // Lookup by a position (a number) or a key (text), as the platform's
  // collections take either in one argument.
  const Pointer& Item(const Variant& index_or_key) const {
    if (index_or_key.IsText()) return ByKey(index_or_key.Text());
    return At(ToPosition(index_or_key));
  }

  void Remove(const Variant& index_or_key) {
    if (!index_or_key.IsText()) {
      RemoveAt(ToPosition(index_or_key));
      return;
    }
    const Entry* entry = FindEntry(index_or_key.Text());
    if (!entry) ByKey(index_or_key.Text());  // raises the missing-key error
    RemoveAt(static_cast<int32_t>(entry - entries_.data()) + 1);
  }

  void RemoveAt(int32_t position) {
    At(position);  // range check
    size_t offset = static_cast<size_t>(position - 1);
    // The element is released after the collection is consistent again.
    Pointer removed = std::move(entries_[offset].element);
    entries_.erase(entries_.begin() + static_cast<std::ptrdiff_t>(offset));
    if (!index_.empty()) RebuildIndex(entries_.size());
  }

  // Takes the element at a position out, with its key, raising subscript
  // out of range; PutAt puts such an element back.
  std::pair<Pointer, CollectionKey> TakeAt(int32_t position) {
    At(position);  // range check
    auto offset = static_cast<std::ptrdiff_t>(position - 1);
    Entry taken = std::move(entries_[static_cast<size_t>(offset)]);
    entries_.erase(entries_.begin() + offset);
    if (!index_.empty()) RebuildIndex(entries_.size());
    return {std::move(taken.element), std::move(taken.key)};
  }

  // Inserts an element at a position (Count() + 1 appends) under a key or
  // none; a key already present raises duplicate key (457) and a position
  // outside the list subscript out of range (9), and nothing is added.
  void PutAt(int32_t position, Pointer element, CollectionKey key) {
    if (position < 1 || position > Count() + 1) {
      throw RuntimeError(RuntimeErrorCode::kSubscriptOutOfRange,
                         "no place at position " + std::to_string(position));
    }
    if (key.HasKey() && FindEntry(std::string(key.Text())) != nullptr) {
      throw RuntimeError(RuntimeErrorCode::kDuplicateKey, "key '" + std::string(key.Text()) + "'");
    }
    entries_.insert(entries_.begin() + (position - 1), {std::move(element), std::move(key)});
    RebuildIndex(entries_.size());
  }

  // Removes every element, first to last.
  void Clear() {
    Entries removed = std::move(entries_);
    entries_.clear();
    index_.clear();
    for (Entry& entry : removed) entry.element.reset();
  }

  // Makes room for `count` elements in all, and for their keys in the index.
  void Reserve(int32_t count) {
    auto room = static_cast<size_t>(std::max(count, 0));
    entries_.reserve(room);
    if (2 * room > index_.size()) RebuildIndex(room);
  }

  const_iterator begin() const { return const_iterator(entries_.begin()); }
  const_iterator end() const { return const_iterator(entries_.end()); }

 private:
  // Small collections (most sets of siblings) are searched directly; larger
  // ones keep a hash index from key to position.
  static constexpr size_t kIndexThreshold = 16;

  const Entry* FindEntry(const std::string& key) const {
    if (index_.empty()) {
      for (const Entry& entry : entries_) {
        if (entry.key.HasKey() && entry.key.Text() == key) return &entry;
      }
      return nullptr;
    }
    const size_t mask = index_.size() - 1;
    for (size_t slot = Hash(key) & mask; index_[slot] != 0; slot = (slot + 1) & mask) {
      const Entry& entry = entries_[index_[slot] - 1];
      if (entry.key.Text() == key) return &entry;
    }
    return nullptr;
  }

  static size_t Hash(std::string_view key) { return std::hash<std::string_view>()(key); }

  // Enters the keyed element at a 0-based position into the index.
  void Place(size_t position) {
    if (index_.empty() || !entries_[position].key.HasKey()) return;
    const size_t mask = index_.size() - 1;
    size_t slot = Hash(entries_[position].key.Text()) & mask;
    while (index_[slot] != 0) slot = (slot + 1) & mask;
    index_[slot] = static_cast<uint32_t>(position + 1);
  }

  // Sizes the index for `count` elements (none when they are few) and
  // enters the elements there are.
  void RebuildIndex(size_t count) {
    index_.clear();
    if (count <= kIndexThreshold) return;
    index_.assign(std::bit_ceil(2 * count), 0);
    for (size_t i = 0; i < entries_.size(); ++i) Place(i);
  }

  static int32_t ToPosition(const Variant& index) {
    if (!index.IsNumeric() || index.IsEmpty()) {
      throw RuntimeError(RuntimeErrorCode::kTypeMismatch, "a collection index must be a number");
    }
    return index.ToInt32();
  }

  Entries entries_;
  // Kept only while the collection is large: an open-addressing table of
  // 1-based positions of keyed elements (0 is a free slot), at most half full.
  std::vector<uint32_t, Allocator<uint32_t>> index_;
};

}  // namespace zephyr

#endif  // ZEPHYR_RUNTIME_COLLECTION_H_
