// CollectionKey: the key of a collection element, or none. Keys as short as
// those of popup items (up to 15 bytes) are held in place, longer ones on the
// heap, so that an element's entry stays small in collections of a million.
#ifndef ZEPHYR_RUNTIME_COLLECTION_KEY_H_
#define ZEPHYR_RUNTIME_COLLECTION_KEY_H_

#include <cstdint>
#include <cstring>
#include <string_view>

namespace zephyr {

class CollectionKey {
 public:
  // No key.
  CollectionKey() { bytes_[kTag] = kNone; }
  explicit CollectionKey(std::string_view text) { Assign(text); }
  CollectionKey(const CollectionKey& other) { Assign(other); }
  CollectionKey(CollectionKey&& other) noexcept { Take(other); }
  CollectionKey& operator=(const CollectionKey& other) {
    if (this != &other) {
      Free();
      Assign(other);
    }
    return *this;
  }
  CollectionKey& operator=(CollectionKey&& other) noexcept {
    if (this != &other) {
      Free();
      Take(other);
    }
    return *this;
  }
  ~CollectionKey() { Free(); }

  bool HasKey() const { return bytes_[kTag] != kNone; }
  // The key's text; "" for no key.
  std::string_view Text() const {
    if (bytes_[kTag] == kHeap) return {HeapData(), HeapSize()};
    if (bytes_[kTag] == kNone) return {};
    return {bytes_, static_cast<size_t>(bytes_[kTag])};
  }

 private:
  // Byte kTag holds the length of a key held in place, or one of:
  static constexpr size_t kTag = 15;
  static constexpr char kHeap = 16;
  static constexpr char kNone = 17;

  void Assign(std::string_view text) {
    if (text.size() < kTag) {
      std::memcpy(bytes_, text.data(), text.size());
      bytes_[kTag] = static_cast<char>(text.size());
      return;
    }
    char* data = new char[text.size()];
    std::memcpy(data, text.data(), text.size());
    auto size = static_cast<uint32_t>(text.size());
    std::memcpy(bytes_, &data, sizeof data);
    std::memcpy(bytes_ + sizeof data, &size, sizeof size);
    bytes_[kTag] = kHeap;
  }
  void Assign(const CollectionKey& other) {
    if (other.HasKey()) {
      Assign(other.Text());
    } else {
      bytes_[kTag] = kNone;
    }
  }
  void Take(CollectionKey& other) {
    std::memcpy(bytes_, other.bytes_, sizeof bytes_);
    other.bytes_[kTag] = kNone;
  }
  void Free() {
    if (bytes_[kTag] == kHeap) delete[] HeapData();
  }
  char* HeapData() const {
    char* data;
    std::memcpy(&data, bytes_, sizeof data);
    return data;
  }
  uint32_t HeapSize() const {
    uint32_t size;
    std::memcpy(&size, bytes_ + sizeof(char*), sizeof size);
    return size;
  }

  char bytes_[16];
};

}  // namespace zephyr

#endif  // ZEPHYR_RUNTIME_COLLECTION_KEY_H_
