// malloc and its kin, each block between pages that nobody may touch: the first byte that code
// reads or writes outside a block ends the program. Sanitizers see what the compiler emits for
// memory accesses; gathers and masked moves by intrinsics escape them, but not these pages.
//
// Every other block starts at its fence, the rest end there.
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>

namespace {

struct Mapping {
  void* start;
  size_t length;
  size_t size;  // of the block
};

const size_t page = static_cast<size_t>(sysconf(_SC_PAGESIZE));

// A page with the mapping's description, a fence, the block's pages, a fence.
void* Allocate(size_t size) {
  static unsigned allocations = 0;
  const size_t inner = (std::max<size_t>(size, 1) + page - 1) / page * page;
  const size_t length = inner + 3 * page;
  void* const start =
      mmap(nullptr, length, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (start == MAP_FAILED) return nullptr;
  *static_cast<Mapping*>(start) = {start, length, size};
  uint8_t* const pages = static_cast<uint8_t*>(start) + 2 * page;
  mprotect(pages - page, page, PROT_NONE);
  mprotect(pages + inner, page, PROT_NONE);
  // An array that ends with a page is aligned as well as its type needs.
  return allocations++ % 2 == 0 ? pages + inner - size : pages;
}

Mapping* MappingOf(void* block) {
  const auto at = reinterpret_cast<uintptr_t>(block);
  return reinterpret_cast<Mapping*>(at - at % page - 2 * page);
}

}  // namespace

extern "C" {

void* __wrap_malloc(size_t size) {
  void* block = Allocate(size);
  if (block != nullptr) std::memset(block, 0xB5, std::min<size_t>(size, 1 << 20));
  return block;
}

void* __wrap_calloc(size_t count, size_t size) {
  return size != 0 && count > SIZE_MAX / size ? nullptr : Allocate(count * size);
}

void __wrap_free(void* block) {
  if (block == nullptr) return;
  const Mapping mapping = *MappingOf(block);
  munmap(mapping.start, mapping.length);
}

void* __wrap_realloc(void* block, size_t size) {
  void* moved = Allocate(size);
  if (block == nullptr || moved == nullptr) return moved;
  std::memcpy(moved, block, std::min(size, MappingOf(block)->size));
  __wrap_free(block);
  return moved;
}

}  // extern "C"
