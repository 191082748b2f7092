// ItemArena: memory for the items of one load and their sibling lists. A
// load makes items by the million and they are mostly freed together, so
// they are cut from chunks of 2 MB, aligned to their size and backed by huge
// pages where the system offers them, instead of each being allocated on its
// own: far fewer page faults and allocator calls. A chunk goes back to the
// system when the last allocation cut from it is freed, on whichever thread
// that happens.
#ifndef ZEPHYR_RUNTIME_ITEM_ARENA_H_
#define ZEPHYR_RUNTIME_ITEM_ARENA_H_

#include <cstddef>
#include <cstdint>

namespace zephyr {

class ItemArena {
 public:
  // Serves ArenaAllocator and LoadAllocator on this thread until it is
  // destroyed.
  ItemArena();
  ~ItemArena();
  ItemArena(const ItemArena&) = delete;
  ItemArena& operator=(const ItemArena&) = delete;

  // The arena serving this thread, or null.
  static ItemArena* Current();

  // The largest allocation an arena makes.
  static const size_t kLargest;

  void* Allocate(size_t bytes);
  // Frees the `bytes` at `memory` that an arena allocated.
  static void Free(void* memory, size_t bytes);

 private:
  struct Chunk;
  void Retire();

  ItemArena* outer_;
  Chunk* chunk_ = nullptr;
  char* next_ = nullptr;
  char* end_ = nullptr;
  int64_t cut_ = 0;  // allocations from the chunk
};

// An allocator for std::allocate_shared that takes memory from the current
// arena, which must exist while it allocates.
template <typename T>
struct ArenaAllocator {
  using value_type = T;
  ArenaAllocator() = default;
  template <typename U>
  explicit ArenaAllocator(const ArenaAllocator<U>&) {}
  T* allocate(size_t count) {
    return static_cast<T*>(ItemArena::Current()->Allocate(count * sizeof(T)));
  }
  void deallocate(T* memory, size_t count) { ItemArena::Free(memory, count * sizeof(T)); }
  friend bool operator==(const ArenaAllocator&, const ArenaAllocator&) { return true; }
};

}  // namespace zephyr

#endif  // ZEPHYR_RUNTIME_ITEM_ARENA_H_
