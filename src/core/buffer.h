// Owned memory. Images cross the C boundary as malloc blocks, so everything the library allocates
// comes from malloc and is released with free; a failed allocation is a null buffer, never an
// exception.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <type_traits>

namespace ombrilo {

struct FreeDeleter {
  void operator()(void* p) const { std::free(p); }
};

// An owned array of T; null after a failed allocation.
template <class T>
using Buffer = std::unique_ptr<T[], FreeDeleter>;

// `count` elements, all bytes 0. A count of 0 still yields a buffer that is not null.
template <class T>
Buffer<T> NewZeroedBuffer(size_t count) {
  static_assert(std::is_trivially_destructible_v<T>);
  return Buffer<T>(static_cast<T*>(std::calloc(count == 0 ? 1 : count, sizeof(T))));
}

// `count` elements with unspecified contents, for scratch memory that is written before it is read.
// Blocks that a caller gets come from NewBlock, which leaves no byte of them unwritten.
template <class T>
Buffer<T> NewScratchBuffer(size_t count) {
  static_assert(std::is_trivially_destructible_v<T> && std::is_trivially_copyable_v<T>);
  if (count > SIZE_MAX / sizeof(T)) return nullptr;
  return Buffer<T>(static_cast<T*>(std::malloc(count == 0 ? 1 : count * sizeof(T))));
}

// Scratch memory that starts at a cache line: a vector that straddles two lines costs two reads.
class AlignedScratch {
 public:
  explicit AlignedScratch(size_t bytes) : memory_(NewScratchBuffer<uint8_t>(bytes + kLine - 1)) {}
  explicit operator bool() const { return memory_ != nullptr; }
  uint8_t* get() const {
    const size_t past_line = reinterpret_cast<uintptr_t>(memory_.get()) % kLine;
    return memory_.get() + (kLine - past_line) % kLine;
  }

 private:
  static constexpr size_t kLine = 64;
  Buffer<uint8_t> memory_;
};

}  // namespace ombrilo
