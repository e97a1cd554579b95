// omb_newKERNAL, omb_cloneKERNAL, omb_zeroKERNAL, omb_destroyKERNAL, omb_getKERNAL.
#include "morphology/kernal.h"

#include <cstring>

#include "core/buffer.h"

namespace ombrilo {

namespace {

// A record whose arrays have room for `count` entries. Null for a negative count and when memory
// runs out.
KERNAL* NewRecord(const KERNAL& fields, const char* name) {
  if (fields.count < 0) return nullptr;
  if (name == nullptr) name = "";
  const size_t count = static_cast<size_t>(fields.count);
  const size_t name_size = std::strlen(name) + 1;
  Buffer<KERNAL> record = NewScratchBuffer<KERNAL>(1);
  Buffer<int32_t> offsets = NewZeroedBuffer<int32_t>(2 * count);
  Buffer<int32_t> weights = NewZeroedBuffer<int32_t>(count);
  Buffer<char> text = NewScratchBuffer<char>(name_size);
  if (!record || !offsets || !weights || !text) return nullptr;
  std::memcpy(text.get(), name, name_size);
  record[0] = fields;
  record[0].offsets = offsets.release();
  record[0].weights = weights.release();
  record[0].name = text.release();
  return record.release();
}

}  // namespace

}  // namespace ombrilo

KERNAL* omb_newKERNAL(int32_t width, int32_t height, int32_t anchorX, int32_t anchorY,
                      int32_t count, int32_t bias, const char* name) {
  return ombrilo::NewRecord(
      {width, height, anchorX, anchorY, count, bias, nullptr, nullptr, nullptr}, name);
}

KERNAL* omb_cloneKERNAL(const KERNAL* kernel) {
  if (kernel == nullptr) return nullptr;
  KERNAL* copy = ombrilo::NewRecord(*kernel, kernel->name);
  if (copy != nullptr && kernel->count > 0) {
    const size_t count = static_cast<size_t>(kernel->count);
    if (kernel->offsets != nullptr) {
      std::memcpy(copy->offsets, kernel->offsets, 2 * count * sizeof(int32_t));
    }
    if (kernel->weights != nullptr) {
      std::memcpy(copy->weights, kernel->weights, count * sizeof(int32_t));
    }
  }
  return copy;
}

// Prepares a record, releases nothing: the arrays of a record that owned some are lost.
void omb_zeroKERNAL(KERNAL* kernel) {
  if (kernel != nullptr) *kernel = KERNAL{};
}

void omb_destroyKERNAL(KERNAL* kernel) {
  if (kernel == nullptr) return;
  std::free(kernel->offsets);
  std::free(kernel->weights);
  std::free(kernel->name);
  std::free(kernel);
}

const KERNAL* omb_getKERNAL(uint32_t index) {
  return index < ombrilo::kKernalCount ? &ombrilo::kKernals[index] : nullptr;
}
