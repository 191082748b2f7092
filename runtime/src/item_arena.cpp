#include "item_arena.h"

#include <sanitizer/asan_interface.h>
#include <sys/mman.h>

#include <atomic>
#include <cstdint>
#include <new>

#include "zephyr/runtime/load_allocator.h"

namespace zephyr {

namespace {

constexpr size_t kChunkBytes = size_t{2} << 20;
// Room for the chunk's header, keeping what follows aligned.
constexpr size_t kHeaderBytes = 64;

// Allocations keep the alignment any object needs.
size_t Rounded(size_t bytes) {
  return (bytes + alignof(std::max_align_t) - 1) & ~(alignof(std::max_align_t) - 1);
}

// A chunk's count of live allocations starts this high while the arena still
// cuts from it, so that frees meanwhile never bring it to zero.
constexpr int64_t kCutting = int64_t{1} << 40;

thread_local ItemArena* g_current = nullptr;

// Memory from AllocateInLoad starts with a tag saying where it came from.
constexpr size_t kTagBytes = alignof(std::max_align_t);
enum Source : char { kHeap, kArena };

}  // namespace

const size_t ItemArena::kLargest = kChunkBytes - kHeaderBytes;

struct ItemArena::Chunk {
  std::atomic<int64_t> live{kCutting};
  static_assert(sizeof(live) <= kHeaderBytes);

  static Chunk* Map() {
    // Twice the size, so that an aligned chunk lies inside; the rest is
    // given back.
    void* mapped = ::mmap(nullptr, 2 * kChunkBytes, PROT_READ | PROT_WRITE,
                          MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (mapped == MAP_FAILED) throw std::bad_alloc();
    auto start = reinterpret_cast<uintptr_t>(mapped);
    uintptr_t aligned = (start + kChunkBytes - 1) & ~(kChunkBytes - 1);
    if (aligned > start) ::munmap(mapped, aligned - start);
    if (aligned + kChunkBytes < start + 2 * kChunkBytes) {
      ::munmap(reinterpret_cast<void*>(aligned + kChunkBytes),
               start + 2 * kChunkBytes - aligned - kChunkBytes);
    }
    ::madvise(reinterpret_cast<void*>(aligned), kChunkBytes, MADV_HUGEPAGE);
    // Under AddressSanitizer, memory not allocated reads as freed.
    ASAN_POISON_MEMORY_REGION(reinterpret_cast<char*>(aligned) + kHeaderBytes,
                              kChunkBytes - kHeaderBytes);
    return new (reinterpret_cast<void*>(aligned)) Chunk();
  }

  static Chunk* Of(void* memory) {
    return reinterpret_cast<Chunk*>(reinterpret_cast<uintptr_t>(memory) & ~(kChunkBytes - 1));
  }

  // Takes `count` from the live allocations; the chunk goes when none are left.
  void Drop(int64_t count) {
    if (live.fetch_sub(count, std::memory_order_acq_rel) == count) {
      this->~Chunk();
      ASAN_UNPOISON_MEMORY_REGION(this, kChunkBytes);
      ::munmap(this, kChunkBytes);
    }
  }
};

ItemArena::ItemArena() : outer_(g_current) {
  g_current = this;
}

ItemArena::~ItemArena() {
  Retire();
  g_current = outer_;
}

ItemArena* ItemArena::Current() {
  return g_current;
}

void* ItemArena::Allocate(size_t bytes) {
  bytes = Rounded(bytes);
  if (!chunk_ || static_cast<size_t>(end_ - next_) < bytes) {
    if (bytes > kLargest) throw std::bad_alloc();
    Retire();
    chunk_ = Chunk::Map();
    next_ = reinterpret_cast<char*>(chunk_) + kHeaderBytes;
    end_ = reinterpret_cast<char*>(chunk_) + kChunkBytes;
  }
  void* memory = next_;
  next_ += bytes;
  ++cut_;
  ASAN_UNPOISON_MEMORY_REGION(memory, bytes);
  return memory;
}

void ItemArena::Free(void* memory, size_t bytes) {
  ASAN_POISON_MEMORY_REGION(memory, Rounded(bytes));
  Chunk::Of(memory)->Drop(1);
}

void ItemArena::Retire() {
  if (!chunk_) return;
  // From now on the count is just the allocations still live.
  chunk_->Drop(kCutting - cut_);
  chunk_ = nullptr;
  cut_ = 0;
}

void* AllocateInLoad(size_t bytes) {
  ItemArena* arena = ItemArena::Current();
  Source source = arena && bytes + kTagBytes <= ItemArena::kLargest ? kArena : kHeap;
  auto* memory = static_cast<char*>(source == kArena ? arena->Allocate(bytes + kTagBytes)
                                                     : ::operator new(bytes + kTagBytes));
  memory[0] = source;
  return memory + kTagBytes;
}

void FreeInLoad(void* memory, size_t bytes) {
  char* start = static_cast<char*>(memory) - kTagBytes;
  if (start[0] == kArena) {
    ItemArena::Free(start, bytes + kTagBytes);
  } else {
    ::operator delete(start);
  }
}

}  // namespace zephyr
