#include "node_index.h"

namespace zephyr::editor {

namespace {

// The dense range may grow to hold this many empty slots beyond the rows.
constexpr size_t kSlack = 1024;

}  // namespace

void NodeIndex::Clear() {
  base_ = -1;
  dense_.clear();
  dense_.shrink_to_fit();
  sparse_.clear();
  size_ = 0;
}

int64_t NodeIndex::Slot(int32_t identity) const {
  if (base_ < 0 || identity < base_) return -1;
  int64_t slot = identity - base_;
  return slot < static_cast<int64_t>(dense_.size()) ? slot : -1;
}

void NodeIndex::Insert(int32_t identity, GridNode* node) {
  if (base_ < 0) base_ = identity;
  if (int64_t slot = Slot(identity); slot >= 0) {
    if (!dense_[static_cast<size_t>(slot)]) ++size_;
    dense_[static_cast<size_t>(slot)] = node;
    return;
  }
  int64_t offset = static_cast<int64_t>(identity) - base_;
  // Grow the array only while it stays mostly full.
  if (offset >= 0 && static_cast<size_t>(offset) < 2 * size_ + kSlack) {
    dense_.resize(static_cast<size_t>(offset) + 1, nullptr);
    dense_[static_cast<size_t>(offset)] = node;
    ++size_;
    return;
  }
  if (sparse_.insert_or_assign(identity, node).second) ++size_;
}

void NodeIndex::Erase(int32_t identity) {
  if (int64_t slot = Slot(identity); slot >= 0) {
    if (dense_[static_cast<size_t>(slot)]) --size_;
    dense_[static_cast<size_t>(slot)] = nullptr;
    return;
  }
  size_ -= sparse_.erase(identity);
}

GridNode* NodeIndex::Find(int32_t identity) const {
  if (int64_t slot = Slot(identity); slot >= 0) return dense_[static_cast<size_t>(slot)];
  auto found = sparse_.find(identity);
  return found == sparse_.end() ? nullptr : found->second;
}

}  // namespace zephyr::editor
