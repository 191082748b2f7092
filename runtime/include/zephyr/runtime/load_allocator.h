// LoadAllocator: the allocator of sibling lists. While a popup's items are
// being loaded, the lists made for them take their memory from the same
// arena as the items themselves (large blocks, few page faults); at any other
// time, and for lists too large for the arena, from the heap. Either way
// memory goes back where it came from.
#ifndef ZEPHYR_RUNTIME_LOAD_ALLOCATOR_H_
#define ZEPHYR_RUNTIME_LOAD_ALLOCATOR_H_

#include <cstddef>

namespace zephyr {

void* AllocateInLoad(size_t bytes);
void FreeInLoad(void* memory, size_t bytes);

template <typename T>
struct LoadAllocator {
  using value_type = T;
  LoadAllocator() = default;
  template <typename U>
  explicit LoadAllocator(const LoadAllocator<U>&) {}
  T* allocate(size_t count) { return static_cast<T*>(AllocateInLoad(count * sizeof(T))); }
  void deallocate(T* memory, size_t count) { FreeInLoad(memory, count * sizeof(T)); }
  friend bool operator==(const LoadAllocator&, const LoadAllocator&) { return true; }
};

}  // namespace zephyr

#endif  // ZEPHYR_RUNTIME_LOAD_ALLOCATOR_H_
