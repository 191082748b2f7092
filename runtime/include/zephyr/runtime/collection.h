// Collection<T>: the ordered, optionally keyed collection that the four
// public collection classes wrap. Positions are numbered from 1; keys are
// exact texts and unique. It raises the platform's collection errors:
// subscript out of range (9) for a bad position, invalid argument (5) for a
// missing key, duplicate key (457) when adding under a key already present.
#ifndef ZEPHYR_RUNTIME_COLLECTION_H_
#define ZEPHYR_RUNTIME_COLLECTION_H_

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "zephyr/support/errors.h"
#include "zephyr/support/variant.h"

namespace zephyr {

template <typename T>
class Collection {
 public:
  using Pointer = std::shared_ptr<T>;
  using const_iterator = typename std::vector<Pointer>::const_iterator;

  int32_t Count() const { return static_cast<int32_t>(elements_.size()); }

  // Appends without a key.
  void Add(Pointer element) {
    elements_.push_back(std::move(element));
  }

  // Appends under a key; a key already present raises duplicate key (457)
  // and nothing is added.
  void Add(Pointer element, const std::string& key) {
    auto [slot, inserted] = index_.try_emplace(key, element);
    if (!inserted) {
      throw RuntimeError(RuntimeErrorCode::kDuplicateKey, "key '" + key + "'");
    }
    elements_.push_back(std::move(element));
  }

  // The element at a 1-based position, raising subscript out of range.
  const Pointer& At(int32_t position) const {
    if (position < 1 || position > Count()) {
      throw RuntimeError(RuntimeErrorCode::kSubscriptOutOfRange,
                         "no element at position " + std::to_string(position));
    }
    return elements_[static_cast<size_t>(position - 1)];
  }

  // The element under a key, raising invalid argument when there is none.
  Pointer ByKey(const std::string& key) const {
    if (Pointer found = Find(key)) return found;
    throw RuntimeError(RuntimeErrorCode::kInvalidArgument, "no element with key '" + key + "'");
  }

  // The element under a key, or null.
  Pointer Find(const std::string& key) const {
    auto found = index_.find(key);
    return found == index_.end() ? nullptr : found->second;
  }

  bool ContainsKey(const std::string& key) const { return index_.count(key) != 0; }

  // Lookup by a position (a number) or a key (text), as the platform's
  // collections take either in one argument.
  Pointer Item(const Variant& index_or_key) const {
    if (index_or_key.IsText()) return ByKey(index_or_key.Text());
    return At(ToPosition(index_or_key));
  }

  void Remove(const Variant& index_or_key) {
    if (index_or_key.IsText()) {
      RemoveAt(PositionOf(ByKey(index_or_key.Text()).get()));
    } else {
      RemoveAt(ToPosition(index_or_key));
    }
  }

  void RemoveAt(int32_t position) {
    At(position);  // range check
    size_t offset = static_cast<size_t>(position - 1);
    // The element is released after the collection is consistent again.
    Pointer removed = std::move(elements_[offset]);
    elements_.erase(elements_.begin() + static_cast<std::ptrdiff_t>(offset));
    for (auto entry = index_.begin(); entry != index_.end(); ++entry) {
      if (entry->second == removed) {
        index_.erase(entry);
        break;
      }
    }
  }

  // Removes every element, first to last.
  void Clear() {
    std::vector<Pointer> removed = std::move(elements_);
    elements_.clear();
    index_.clear();
    for (Pointer& element : removed) element.reset();
  }

  void Reserve(size_t count) {
    elements_.reserve(count);
  }

  const_iterator begin() const { return elements_.begin(); }
  const_iterator end() const { return elements_.end(); }

 private:
  static int32_t ToPosition(const Variant& index) {
    if (!index.IsNumeric() || index.IsEmpty()) {
      throw RuntimeError(RuntimeErrorCode::kTypeMismatch, "a collection index must be a number");
    }
    return index.ToInt32();
  }

  int32_t PositionOf(const T* element) const {
    for (size_t i = 0; i < elements_.size(); ++i) {
      if (elements_[i].get() == element) return static_cast<int32_t>(i + 1);
    }
    return 0;
  }

  std::vector<Pointer> elements_;
  // The elements that were added under a key.
  std::unordered_map<std::string, Pointer> index_;
};

}  // namespace zephyr

#endif  // ZEPHYR_RUNTIME_COLLECTION_H_
