// NodeIndex: the outline's rows by item identity. The items of a popup are
// made together, so their identities mostly form one dense range: those are
// kept in a plain array (8 bytes a row); the rest in a hash map.
#ifndef ZEPHYR_EDITOR_NODE_INDEX_H_
#define ZEPHYR_EDITOR_NODE_INDEX_H_

#include <cstddef>
#include <cstdint>
#include <unordered_map>
#include <vector>

namespace zephyr::editor {

struct GridNode;

class NodeIndex {
 public:
  void Clear();
  void Insert(int32_t identity, GridNode* node);
  void Erase(int32_t identity);
  GridNode* Find(int32_t identity) const;
  size_t Size() const { return size_; }

 private:
  // The slot of an identity in the dense range, or -1.
  int64_t Slot(int32_t identity) const;

  int64_t base_ = -1;
  std::vector<GridNode*> dense_;
  std::unordered_map<int32_t, GridNode*> sparse_;
  size_t size_ = 0;
};

}  // namespace zephyr::editor

#endif  // ZEPHYR_EDITOR_NODE_INDEX_H_
